#ifndef MO_FUZZ_H
#define MO_FUZZ_H

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <stdlib.h>
#include <string>
#include <unistd.h>
#include <utility>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

/// Ends the run, which saves the input, when a property does not hold.
#define MO_FUZZ_REQUIRE(condition)                                                                                   \
    do {                                                                                                             \
        if (!(condition)) {                                                                                          \
            std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition);                             \
            std::abort();                                                                                            \
        }                                                                                                            \
    } while (false)

/// Takes an input apart from its front. Where it has ended, bytes are 0 and texts empty.
class MoFuzzInput {
public:
    MoFuzzInput(std::uint8_t const* data, std::size_t size) : m_rest(data, data + size) {}

    unsigned byte() {
        std::string const taken = take(1);
        return taken.empty() ? 0 : static_cast<unsigned char>(taken[0]);
    }
    /// A number of two bytes, reduced to at most the bound.
    std::size_t number(std::size_t bound) {
        unsigned const high = byte();
        return (high << 8 | byte()) % (bound + 1);
    }
    std::string take(std::size_t count) {
        std::string const taken = m_rest.substr(0, count);
        m_rest.erase(0, count);
        return taken;
    }
    /// The bytes up to the next separator, which is dropped.
    std::string until(char separator) {
        std::string const taken = take(std::min(m_rest.find(separator), m_rest.size()));
        m_rest.erase(0, 1);
        return taken;
    }
    std::string rest() { return take(m_rest.size()); }
    bool isAtEnd() const { return m_rest.empty(); }

    /// Two texts: by the first byte either unrelated or one with a few bytes of the other one replaced.
    std::pair<std::string, std::string> twoTexts() {
        bool const alike = byte() % 2 == 1;
        std::size_t const where = number(0xFFFE);
        std::size_t const count = byte() % 8;
        if (!alike) {
            std::string const first = take(where % (m_rest.size() + 1));
            return {first, rest()};
        }
        std::string const inserted = take(byte() % 16);
        std::string const first = rest();
        std::string second = first;
        second.replace(where % (first.size() + 1), count, inserted);
        return {first, second};
    }

private:
    std::string m_rest;
};

/// A copy of a text and its terminator in a buffer of exactly that length, so that a sanitizer sees the byte behind.
inline std::unique_ptr<char[]> moFuzzBuffer(std::string const& text) {
    std::unique_ptr<char[]> buffer(new char[text.size() + 1]);
    std::memcpy(buffer.get(), text.c_str(), text.size() + 1);
    return buffer;
}

/// A directory for as long as it lives; what was made in it must be gone by then.
class MoFuzzDirectory {
public:
    MoFuzzDirectory() {
        char const* const base = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp"; // memory, where there is some
        m_path = std::string(base) + "/modiff-fuzz-XXXXXX";
        if (!mkdtemp(m_path.data()))
            throw std::runtime_error("cannot make " + m_path);
    }
    ~MoFuzzDirectory() { rmdir(m_path.c_str()); }
    MoFuzzDirectory(MoFuzzDirectory const&) = delete;
    MoFuzzDirectory& operator=(MoFuzzDirectory const&) = delete;

    std::string const& path() const { return m_path; }

private:
    std::string m_path;
};

#endif
