#ifndef MO_BENCH_WHOLE_TEXT_H
#define MO_BENCH_WHOLE_TEXT_H

#include <string>
#include <unicode/uregex.h>
#include <vector>

/// The plain way of cleansing, kept as the yardstick: for each expression the whole text is converted to UTF-16, ICU
/// replaces all matches, and the result is converted back. Shares no code with the library.
class MoBenchWholeText {
public:
    /// Raises std::runtime_error when an expression does not compile.
    explicit MoBenchWholeText(std::vector<std::string> const& expressions);

    /// Deletes the matches from a NUL-terminated text of valid UTF-8, in place. Raises std::runtime_error when ICU
    /// gives up.
    void cleanse(char* text) const;

private:
    std::vector<icu::LocalURegularExpressionPointer> m_expressions;
};

#endif
