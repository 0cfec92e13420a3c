#ifndef MO_DIFF_WHOLE_TEXT_MATCHER_H
#define MO_DIFF_WHOLE_TEXT_MATCHER_H

#include "I18NConverter.h"

#include <cstddef>
#include <unicode/uregex.h>

/// An expression compiled by ICU, which sees the whole text converted to UTF-16. Serves every expression, at the
/// price of two conversions and four times the text's memory.
class MoDiffWholeTextMatcher {
public:
    /// Raises KLTAssertError when the expression does not compile.
    explicit MoDiffWholeTextMatcher(char const* regex);

    /// Deletes every match from a NUL-terminated text of the given length in bytes, more than 0, and fills the freed
    /// end with zeros. Raises KLTAssertError, the text being unchanged, when ICU gives up or when the text is too
    /// large to be converted.
    void deleteMatches(char* text, std::size_t length) const;

private:
    I18NConverter m_converter;
    icu::LocalURegularExpressionPointer m_regEx;
};

#endif
