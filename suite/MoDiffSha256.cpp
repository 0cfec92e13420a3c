#include "MoDiffSha256.h"

#include "MoDiffInputFile.h"

#include <sha2.h>

struct MoDiffSha256::State {
    SHA2_CTX context;
};

MoDiffSha256::MoDiffSha256() : m_state(std::make_unique<State>()) {
    SHA256Init(&m_state->context);
}

MoDiffSha256::~MoDiffSha256() = default;

void MoDiffSha256::add(char const* bytes, std::size_t count) {
    SHA256Update(&m_state->context, reinterpret_cast<std::uint8_t const*>(bytes), count);
}

std::string MoDiffSha256::getDigits() {
    char digits[SHA256_DIGEST_STRING_LENGTH];
    return SHA256End(&m_state->context, digits);
}

std::string MoDiffSha256::ofFile(std::string const& path) {
    MoDiffSha256 sum;
    MoDiffInputFile(path).readAll([&sum](char const* bytes, std::size_t count) { sum.add(bytes, count); });
    return sum.getDigits();
}
