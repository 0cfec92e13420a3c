#ifndef MO_DIFF_WHOLE_TEXT_MATCHER_H
#define MO_DIFF_WHOLE_TEXT_MATCHER_H

#include "I18NConverter.h"
#include "MoDiffTextProgress.h"

#include <cstddef>
#include <unicode/uregex.h>
#include <vector>

/// An expression compiled by ICU, which sees the whole text converted to UTF-16. Serves every expression, at the
/// price of a conversion and more than twice the text's memory.
class MoDiffWholeTextMatcher {
public:
    /// Raises KLTAssertError when the expression does not compile.
    explicit MoDiffWholeTextMatcher(char const* regex);

    /// Deletes every match from a whole text. Raises KLTAssertError, the text being unchanged, when ICU gives up or
    /// when the text is too large to be converted.
    /// @param end where the text ends, behind its begin
    void deleteMatches(MoDiffTextProgress& progress, char const* end) const;

private:
    std::vector<bool> findMatches(std::vector<UChar> const& units) const;

    I18NConverter m_converter;
    icu::LocalURegularExpressionPointer m_regEx;
};

#endif
