#include "MoDiffWholeTextMatcher.h"

#include "KLTAssert.h"

#include <climits>
#include <cstring>
#include <vector>

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

void MoDiffWholeTextMatcher::deleteMatches(char* text, std::size_t length) const {
    KLT_ASSERT_NAMED(length < INT_MAX / sizeof(UChar), "Text fits the converter's capacity");
    std::size_t const units = length + 1;
    int const capacity = static_cast<int>(units * sizeof(UChar));
    std::vector<UChar> input(units);
    std::vector<UChar> output(units);
    m_converter.toUnicode(input.data(), capacity, text, static_cast<int>(length), nullptr);

    UErrorCode status = U_ZERO_ERROR;
    uregex_setText(m_regEx.getAlias(), input.data(), -1, &status);
    KLT_ASSERT_AT(kModule, 98, "KLT_ASSERT_NAMED(U_SUCCESS (status), \"setText failed in normalization\");",
                  U_SUCCESS(status));
    UChar const nothing[] = {0};
    uregex_replaceAll(m_regEx.getAlias(), nothing, 0, output.data(), static_cast<int>(units), &status);
    KLT_ASSERT_AT(kModule, 110,
                  "KLT_ASSERT_NAMED(U_SUCCESS (status), \"Replacement using regular expression failed.\");",
                  U_SUCCESS(status));

    std::memset(text, 0, length);
    m_converter.fromUnicode(text, static_cast<int>(units), output.data(), nullptr);
}
