#include "MoDiffComparisonFacts.h"

#include "MoDiffNormalizationPatterns.h"
#include "MoDiffTextPasses.h"
#include "MoUtf8.h"

#include <algorithm>
#include <string_view>

namespace {

std::string_view const kByteOrderMark = "\xef\xbb\xbf";

/// Finds the first NUL and the first byte that is not UTF-8.
void lookAtBytes(std::string_view text, MoDiffComparisonFacts::Text& facts) {
    auto const* const bytes = reinterpret_cast<unsigned char const*>(text.data());
    MoDiffTextPasses const& passes = MoDiffTextPasses::best();
    std::size_t at = 0;
    while ((at = passes.findUnusual(text.data(), text.size(), at)) < text.size()) {
        do { // what is beyond ASCII rarely stands alone
            MoUtf8::Character const character = MoUtf8::decode(bytes + at, bytes + text.size());
            if (character.code == 0 && !facts.nul)
                facts.nul = at;
            if (MoUtf8::isInvalidByte(character.code) && !facts.invalid)
                facts.invalid = at;
            at += character.length;
        } while (at < text.size() && bytes[at] >= 0x80);
    }
}

MoDiffComparisonFacts::Text look(std::string_view text) {
    MoDiffComparisonFacts::Text facts;
    facts.length = text.size();
    facts.hash = MoDiffContentHash::digitsOf(text.data(), text.size());
    facts.hasByteOrderMark = text.substr(0, kByteOrderMark.size()) == kByteOrderMark;
    lookAtBytes(text, facts);
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
    m_texts.master.file = file(eMaster);
    m_texts.actual.file = file(eActual);
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
