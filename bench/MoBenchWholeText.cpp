#include "MoBenchWholeText.h"

#include <cstring>
#include <memory>
#include <stdexcept>
#include <unicode/ustring.h>

namespace {

void check(UErrorCode status) {
    if (U_FAILURE(status))
        throw std::runtime_error(std::string("ICU: ") + u_errorName(status));
}

void deleteMatches(URegularExpression* expression, char* text) {
    std::size_t const length = std::strlen(text);
    if (length == 0)
        return;
    auto const bytes = static_cast<int>(length);
    std::unique_ptr<UChar[]> const input(new UChar[length + 1]());
    std::unique_ptr<UChar[]> const output(new UChar[length + 1]());
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(input.get(), bytes + 1, nullptr, text, bytes, &status);
    uregex_setText(expression, input.get(), -1, &status);
    UChar const nothing[] = {0};
    uregex_replaceAll(expression, nothing, 0, output.get(), bytes + 1, &status);
    check(status);
    std::memset(text, 0, length);
    u_strToUTF8(text, bytes + 1, nullptr, output.get(), -1, &status);
    check(status);
}

} // namespace

MoBenchWholeText::MoBenchWholeText(std::vector<std::string> const& expressions) {
    for (std::string const& expression : expressions) {
        UErrorCode status = U_ZERO_ERROR;
        m_expressions.emplace_back(uregex_openC(expression.c_str(), 0, nullptr, &status));
        check(status);
    }
}

void MoBenchWholeText::cleanse(char* text) const {
    for (icu::LocalURegularExpressionPointer const& expression : m_expressions)
        deleteMatches(expression.getAlias(), text);
}
