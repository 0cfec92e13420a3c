#include "MoDiffPathGlob.h"

#include <cstddef>

namespace {

std::size_t constexpr kNone = std::string_view::npos;

/// One attempt to match. A wildcard first stands for nothing; when what follows it does not fit, it takes a piece
/// more and the rest is tried again. Only the latest "*" and the latest "**" are ever moved, since an earlier one can
/// leave the text to them: "*" never leaves its path component, whose ends the "/" around it fix. So the cost is
/// bounded by the product of the lengths.
class Match {
public:
    Match(std::string_view pattern, std::string_view text) : m_pattern(pattern), m_text(text) {}

    bool run() {
        while (!isDone())
            if (!takeWildcard() && !takeCharacter() && !takeMore())
                return false;
        return true;
    }

private:
    /// A wildcard that was met: where the pattern goes on behind it, and where the text does.
    struct Wildcard {
        std::size_t pattern = kNone;
        std::size_t text = 0;
        bool takesDirectories = false; ///< "**/": what it stands for is empty or ends with "/"
    };

    bool isDone() const { return m_at == m_pattern.size() && m_place == m_text.size(); }
    bool patternHas(std::string_view piece) const { return m_pattern.substr(m_at, piece.size()) == piece; }

    bool takeWildcard() {
        if (!patternHas("*"))
            return false;
        bool const isDeep = patternHas("**");
        bool const startsComponent = m_at == 0 || m_pattern[m_at - 1] == '/';
        bool const takesDirectories = startsComponent && patternHas("**/");
        m_at += takesDirectories ? 3 : isDeep ? 2 : 1;
        if (isDeep)
            m_deep = {m_at, m_place, takesDirectories};
        m_shallow = isDeep ? Wildcard() : Wildcard{m_at, m_place, false};
        return true;
    }

    bool takeCharacter() {
        if (m_at == m_pattern.size() || m_place == m_text.size())
            return false;
        bool const isAny = m_pattern[m_at] == '?' && m_text[m_place] != '/';
        if (!isAny && m_pattern[m_at] != m_text[m_place])
            return false;
        ++m_at;
        ++m_place;
        while (isAny && m_place < m_text.size() && (m_text[m_place] & 0xC0) == 0x80) // the rest of a UTF-8 character
            ++m_place;
        return true;
    }

    bool takeMore() {
        if (m_shallow.pattern != kNone && m_shallow.text < m_text.size() && m_text[m_shallow.text] != '/')
            return resume(m_shallow, m_shallow.text + 1);
        m_shallow = Wildcard();
        if (m_deep.pattern == kNone || m_deep.text == m_text.size())
            return false;
        std::size_t const last = m_deep.takesDirectories ? m_text.find('/', m_deep.text) : m_deep.text;
        return last != kNone && resume(m_deep, last + 1);
    }

    bool resume(Wildcard& wildcard, std::size_t text) {
        wildcard.text = text;
        m_place = text;
        m_at = wildcard.pattern;
        return true;
    }

    std::string_view m_pattern;
    std::string_view m_text;
    std::size_t m_at = 0;    ///< in the pattern
    std::size_t m_place = 0; ///< in the text
    Wildcard m_shallow;
    Wildcard m_deep;
};

} // namespace

bool MoDiffPathGlob::matches(std::string_view text) const {
    return text == m_pattern || Match(m_pattern, text).run();
}
