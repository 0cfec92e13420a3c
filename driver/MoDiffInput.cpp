#include "MoDiffInput.h"

#include <cerrno>
#include <fcntl.h>
#include <sstream>
#include <system_error>
#include <unistd.h>

namespace {

std::size_t const kBlock = 1 << 16;

std::string readWhole(int descriptor, std::string const& name) {
    std::string text;
    for (;;) {
        std::size_t const length = text.size();
        text.resize(length + kBlock);
        ssize_t const count = ::read(descriptor, text.data() + length, kBlock);
        int const error = errno;
        text.resize(length + static_cast<std::size_t>(count > 0 ? count : 0));
        if (count == 0)
            return text;
        if (count < 0 && error != EINTR)
            throw std::system_error(error, std::generic_category(), "cannot read " + name);
    }
}

/// Closes a descriptor at the end of its scope.
struct Descriptor {
    int number;
    ~Descriptor() { close(number); }
};

} // namespace

std::string MoDiffInput::readWhole(std::string const& name) {
    int const number = open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (number < 0)
        throw std::system_error(errno, std::generic_category(), "cannot read " + name);
    Descriptor const file = {number};
    return ::readWhole(file.number, name);
}

std::vector<std::string> MoDiffInput::readNames(std::string const& name, bool isSeparated) {
    std::istringstream text(name == "-" ? ::readWhole(STDIN_FILENO, "standard input") : readWhole(name));
    std::vector<std::string> names;
    for (std::string line; std::getline(text, line, isSeparated ? '\0' : '\n');)
        if (!line.empty())
            names.push_back(line);
    return names;
}
