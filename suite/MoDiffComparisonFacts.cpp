#include "MoDiffComparisonFacts.h"

#include "MoDiffNormalizationPatterns.h"
#include "MoUtf8.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace {

std::string_view const kByteOrderMark = "\xef\xbb\xbf";

/// The first byte beyond ASCII from a place on, or the text's length.
std::size_t findBeyondAscii(std::string_view text, std::size_t at) {
    std::uint64_t const highBits = 0x8080808080808080;
    for (std::array<std::uint64_t, 4> words; text.size() - at >= sizeof words; at += sizeof words) {
        std::memcpy(words.data(), text.data() + at, sizeof words);
        if ((words[0] | words[1] | words[2] | words[3]) & highBits)
            break;
    }
    for (std::uint64_t word; text.size() - at >= sizeof word; at += sizeof word) {
        std::memcpy(&word, text.data() + at, sizeof word);
        if (word & highBits)
            break;
    }
    while (at < text.size() && static_cast<unsigned char>(text[at]) < 0x80)
        ++at;
    return at;
}

std::optional<std::size_t> findInvalid(std::string_view text) {
    auto const* const begin = reinterpret_cast<unsigned char const*>(text.data());
    for (std::size_t at = findBeyondAscii(text, 0); at < text.size(); at = findBeyondAscii(text, at)) {
        MoUtf8::Character const character = MoUtf8::decode(begin + at, begin + text.size());
        if (MoUtf8::isInvalidByte(character.code))
            return at;
        at += character.length;
    }
    return std::nullopt;
}

MoDiffComparisonFacts::Text look(std::string_view text) {
    MoDiffComparisonFacts::Text facts;
    facts.length = text.size();
    facts.hash = MoDiffContentHash::digitsOf(text.data(), text.size());
    facts.hasByteOrderMark = text.substr(0, kByteOrderMark.size()) == kByteOrderMark;
    std::size_t const nul = text.find('\0');
    if (nul != std::string_view::npos)
        facts.nul = nul;
    facts.invalid = findInvalid(text);
    return facts;
}

} // namespace

MoDiffComparisonFacts::MoDiffComparisonFacts() : m_previous(MoDiffComparisonObserver::set(this)) {
}

MoDiffComparisonFacts::~MoDiffComparisonFacts() {
    MoDiffComparisonObserver::set(m_previous);
}

void MoDiffComparisonFacts::reset() {
    m_hasTexts = false;
    m_texts = {};
    m_patterns.clear();
    m_hidden.reset();
    m_blocks.master.reset();
    m_blocks.actual.reset();
}

std::optional<std::size_t> MoDiffComparisonFacts::getNul() const {
    std::optional<std::size_t> const& master = m_texts.master.nul;
    std::optional<std::size_t> const& actual = m_texts.actual.nul;
    if (m_areTextsSame || !(master && actual))
        return m_areTextsSame ? std::nullopt : master ? master : actual;
    return std::min(*master, *actual);
}

void MoDiffComparisonFacts::textsRead(char const* master, std::size_t masterLength, char const* actual,
                                      std::size_t actualLength) {
    std::string_view const masterText(master, masterLength);
    std::string_view const actualText(actual, actualLength);
    m_hasTexts = true;
    m_areTextsSame = masterText == actualText;
    m_texts.master = look(masterText);
    m_texts.actual = m_areTextsSame ? m_texts.master : look(actualText);
}

void MoDiffComparisonFacts::blockRead(Side side, char const* bytes, std::size_t count) {
    (side == eMaster ? m_blocks.master : m_blocks.actual).add(bytes, count);
}

void MoDiffComparisonFacts::textsCleansed(MoDiffNormalizationPattern const* pattern, std::size_t masterDeleted,
                                          std::size_t actualDeleted) {
    if (!m_hidden)
        m_hidden.emplace();
    m_hidden->master += masterDeleted;
    m_hidden->actual += actualDeleted;
    if (masterDeleted + actualDeleted == 0)
        return;
    char const* const name = pattern ? MoDiffNormalizationPatterns::nameOf(pattern) : "CarriageReturn";
    m_patterns.push_back({name, {masterDeleted, actualDeleted}});
}
