#ifndef MO_DIFF_SHA256_H
#define MO_DIFF_SHA256_H

#include <cstddef>
#include <memory>
#include <string>

/// SHA-256 over bytes that come in pieces; as 64 hex digits, like the program sha256sum writes it.
class MoDiffSha256 {
public:
    MoDiffSha256();
    ~MoDiffSha256();

    void add(char const* bytes, std::size_t count);
    /// Ends the sum; nothing may be added after that.
    std::string getDigits();

    /// Of a file, read to its end. Raises std::system_error when that fails.
    static std::string ofFile(std::string const& path);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

#endif
