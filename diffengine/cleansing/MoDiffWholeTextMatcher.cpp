#include "MoDiffWholeTextMatcher.h"

#include "KLTAssert.h"
#include "MoUtf8.h"

#include <algorithm>
#include <climits>
#include <unicode/utf16.h>

namespace {

char const kModule[] = "MoDiffNormalizationPattern";

/// How long ICU may look for one match, in steps of about a millisecond. No sound expression comes near it; one that
/// explodes on a text must not hold a night's run.
int const kTimeLimit = 5 * 60 * 1000;

} // namespace

MoDiffWholeTextMatcher::MoDiffWholeTextMatcher(char const* regex) : m_converter("UTF-8") {
    UErrorCode status = U_ZERO_ERROR;
    UParseError parseError;
    m_regEx.adoptInstead(uregex_openC(regex, 0, &parseError, &status));
    KLT_ASSERT_AT(kModule, 42, "KLT_ASSERT_NAMED(m_regEx, \"Regular expression compiled\");", m_regEx.isValid());
    uregex_setTimeLimit(m_regEx.getAlias(), kTimeLimit, &status);
}

void MoDiffWholeTextMatcher::deleteMatches(MoDiffTextProgress& progress, char const* end) const {
    auto const length = static_cast<std::size_t>(end - progress.read);
    KLT_ASSERT_NAMED(length < INT_MAX / sizeof(UChar), "Text fits the converter's capacity");
    std::vector<UChar> units(length + 1);
    int const capacity = static_cast<int>(units.size() * sizeof(UChar));
    m_converter.toUnicode(units.data(), capacity, progress.read, static_cast<int>(length), nullptr);
    std::vector<bool> const isMatched = findMatches(units);

    auto const* const textEnd = reinterpret_cast<unsigned char const*>(end);
    std::size_t unit = 0;
    for (char const* next = progress.read; next < end;) {
        MoUtf8::Character const character = MoUtf8::decode(reinterpret_cast<unsigned char const*>(next), textEnd);
        char const* const behind = next + character.length;
        if (isMatched[unit]) {
            progress.keepUntil(next);
            progress.deleteUntil(behind);
        }
        unit += static_cast<std::size_t>(U16_LENGTH(character.code));
        next = behind;
    }
    progress.keepUntil(end);
}

/// Tells of each unit whether it belongs to a match.
std::vector<bool> MoDiffWholeTextMatcher::findMatches(std::vector<UChar> const& units) const {
    UErrorCode status = U_ZERO_ERROR;
    uregex_setText(m_regEx.getAlias(), units.data(), -1, &status);
    KLT_ASSERT_AT(kModule, 98, "KLT_ASSERT_NAMED(U_SUCCESS (status), \"setText failed in normalization\");",
                  U_SUCCESS(status));
    std::vector<bool> isMatched(units.size());
    while (uregex_findNext(m_regEx.getAlias(), &status)) {
        auto const start = isMatched.begin() + uregex_start(m_regEx.getAlias(), 0, &status);
        std::fill(start, isMatched.begin() + uregex_end(m_regEx.getAlias(), 0, &status), true);
    }
    KLT_ASSERT_AT(kModule, 110,
                  "KLT_ASSERT_NAMED(U_SUCCESS (status), \"Replacement using regular expression failed.\");",
                  U_SUCCESS(status));
    return isMatched;
}
