#ifndef MO_DIFF_CONTENT_HASH_H
#define MO_DIFF_CONTENT_HASH_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

/// XXH3 of 128 bits over bytes that come in pieces; as 32 hex digits, like the program xxh128sum writes it.
class MoDiffContentHash {
public:
    MoDiffContentHash();
    ~MoDiffContentHash();

    /// Forgets what was added.
    void reset();
    void add(char const* bytes, std::size_t count);
    /// How many bytes were added.
    std::uint64_t getLength() const { return m_length; }
    std::string getDigits() const;

    /// Of bytes that are all at hand.
    static std::string digitsOf(char const* bytes, std::size_t count);

    struct File {
        std::uint64_t length;
        std::string digits;
    };
    /// Of a file; none when it cannot be read to its end.
    static std::optional<File> ofFile(std::string const& path);

private:
    struct State;
    std::unique_ptr<State> m_state;
    std::uint64_t m_length = 0;
};

#endif
