#include "MoBenchRe2.h"

#include <re2/re2.h>
#include <stdexcept>

MoBenchRe2::MoBenchRe2(std::vector<std::string> const& expressions) {
    for (std::string const& expression : expressions) {
        m_expressions.push_back(std::make_unique<re2::RE2>(expression));
        if (!m_expressions.back()->ok())
            throw std::runtime_error("RE2: " + m_expressions.back()->error());
    }
}

MoBenchRe2::~MoBenchRe2() = default;

void MoBenchRe2::cleanse(std::string& text) const {
    for (auto const& expression : m_expressions)
        re2::RE2::GlobalReplace(&text, *expression, "");
}
