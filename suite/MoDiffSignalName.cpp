#include "MoDiffSignalName.h"

#include <cstring>

std::string MoDiffSignalName::of(int signal) {
    char const* const name = sigabbrev_np(signal);
    return name ? std::string("SIG").append(name) : "signal " + std::to_string(signal);
}
