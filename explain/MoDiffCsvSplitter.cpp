#include "MoDiffCsvSplitter.h"

#include <algorithm>

namespace {

char const kSeparators[] = {',', ';', '\t', '|'};

/// The length of the line end at an index, 0 when there is none.
std::size_t lineEndLength(std::string_view text, std::size_t at) {
    if (text[at] == '\n')
        return 1;
    return text.substr(at, 2) == "\r\n" ? 2 : 0;
}

std::size_t unquotedEnd(std::string_view text, std::size_t from, char separator) {
    std::size_t at = from;
    while (at < text.size() && text[at] != separator && lineEndLength(text, at) == 0)
        ++at;
    return at;
}

/// Behind the closing quote, or the text's end without one.
std::size_t quotedEnd(std::string_view text, std::size_t from) {
    for (std::size_t quote = text.find('"', from + 1); quote != std::string_view::npos;
         quote = text.find('"', quote + 2))
        if (text.substr(quote + 1, 1) != "\"")
            return quote + 1;
    return text.size();
}

} // namespace

char MoDiffCsvSplitter::separatorOf(std::string_view text) {
    char best = kSeparators[0];
    std::size_t most = 0;
    for (char const separator : kSeparators) {
        MoDiffCsvSplitter const splitter(separator);
        std::size_t count = 0;
        for (std::size_t at = 0; at < text.size() && lineEndLength(text, at) == 0; at = splitter.tokenEnd(text, at))
            count += text[at] == separator;
        if (count > most) {
            most = count;
            best = separator;
        }
    }
    return best;
}

std::size_t MoDiffCsvSplitter::wordEnd(std::string_view text, std::size_t from) const {
    return text[from] == m_separator ? from + 1 : m_words.unitEnd(text, from, MoDiffGrain::eWords);
}

std::size_t MoDiffCsvSplitter::tokenEnd(std::string_view text, std::size_t from) const {
    if (text[from] == m_separator)
        return from + 1;
    if (std::size_t const length = lineEndLength(text, from))
        return from + length;
    return unquotedEnd(text, text[from] == '"' ? quotedEnd(text, from) : from, m_separator);
}

std::size_t MoDiffCsvSplitter::lineEnd(std::string_view text, std::size_t from) const {
    while (from < text.size()) {
        bool const ends = lineEndLength(text, from) != 0;
        from = tokenEnd(text, from);
        if (ends)
            break;
    }
    return from;
}

MoDiffCsvPlaces::Place MoDiffCsvPlaces::at(std::size_t index) {
    while (m_token < m_text.size()) {
        std::size_t const end = m_splitter.unitEnd(m_text, m_token, MoDiffGrain::eTokens);
        if (index < end)
            break;
        if (m_text[m_token] == m_splitter.getSeparator())
            ++m_place.field;
        else if (lineEndLength(m_text, m_token) != 0)
            m_place = {m_place.record + 1, 1};
        m_token = end;
    }
    return m_place;
}
