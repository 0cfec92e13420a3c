#include "MoDiffContentHash.h"

#include "MoDiffDescriptor.h"
#include "MoDiffTextPasses.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <xxhash.h>

namespace {

std::size_t const kBlock = 1 << 16;

std::string hexDigits(unsigned char const* digest) {
    std::string digits(2 * MoDiffTextPasses::kHashLength, '0');
    for (std::size_t i = 0; i < digits.size(); ++i)
        digits[i] = "0123456789abcdef"[i % 2 == 0 ? digest[i / 2] >> 4 : digest[i / 2] & 15];
    return digits;
}

} // namespace

struct MoDiffContentHash::State {
    XXH3_state_t hash;
};

MoDiffContentHash::MoDiffContentHash() : m_state(new State) {
    reset();
}

MoDiffContentHash::~MoDiffContentHash() = default;

void MoDiffContentHash::reset() {
    XXH3_128bits_reset(&m_state->hash);
    m_length = 0;
}

void MoDiffContentHash::add(char const* bytes, std::size_t count) {
    XXH3_128bits_update(&m_state->hash, bytes, count);
    m_length += count;
}

std::string MoDiffContentHash::getDigits() const {
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(&m_state->hash));
    return hexDigits(canonical.digest);
}

std::string MoDiffContentHash::digitsOf(char const* bytes, std::size_t count) {
    std::array<unsigned char, MoDiffTextPasses::kHashLength> digest;
    MoDiffTextPasses::best().hash(bytes, count, digest.data());
    return hexDigits(digest.data());
}

std::optional<MoDiffContentHash::File> MoDiffContentHash::ofFile(std::string const& path) {
    MoDiffDescriptor const file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    if (!file)
        return std::nullopt;
    MoDiffContentHash hash;
    std::array<char, kBlock> block;
    for (;;) {
        ssize_t const count = read(file.get(), block.data(), block.size());
        if (count == 0)
            return File{hash.getLength(), hash.getDigits()};
        if (count < 0 && errno != EINTR)
            return std::nullopt;
        if (count > 0)
            hash.add(block.data(), static_cast<std::size_t>(count));
    }
}
