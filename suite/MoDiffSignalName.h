#ifndef MO_DIFF_SIGNAL_NAME_H
#define MO_DIFF_SIGNAL_NAME_H

#include <string>

namespace MoDiffSignalName {

/// A signal as people know it: "SIGSEGV".
std::string of(int signal);

} // namespace MoDiffSignalName

#endif
