#include "MoDiffSourceText.h"

#include "MoDiffCleansedText.h"
#include "MoUtf8.h"

#include <algorithm>

MoDiffSourceText::MoDiffSourceText(std::string file, MoDiffLib::Patterns const& patterns)
    : MoDiffSourceText(MoDiffCleansedText(file, patterns).takeBack(std::move(file))) {
}

std::string MoDiffSourceText::text() const {
    std::string text;
    text.reserve(textSize());
    std::size_t at = 0;
    for (Stretch const& stretch : m_hidden) {
        text.append(m_file, at, stretch.begin - at);
        at = stretch.end();
    }
    return text.append(m_file, at);
}

MoDiffPlace MoDiffPlaceCounter::at(std::size_t index) {
    auto const feeds = std::count(m_text.begin() + static_cast<std::ptrdiff_t>(m_index),
                                  m_text.begin() + static_cast<std::ptrdiff_t>(index), '\n');
    if (feeds != 0) {
        m_place = {m_place.line + static_cast<std::size_t>(feeds), 1};
        m_index = m_text.rfind('\n', index - 1) + 1;
    }
    auto const* const bytes = reinterpret_cast<unsigned char const*>(m_text.data());
    while (m_index < index) {
        std::size_t const next = m_index + MoUtf8::decode(bytes + m_index, bytes + m_text.size()).length;
        if (next > index)
            break; // inside a character, which has the place
        m_index = next;
        ++m_place.column;
    }
    return m_place;
}

std::size_t MoDiffLines::begin(std::string_view text, std::size_t index) {
    return index == 0 ? 0 : text.rfind('\n', index - 1) + 1; // npos + 1 is 0
}

std::size_t MoDiffLines::end(std::string_view text, std::size_t index) {
    std::size_t const feed = text.find('\n', index);
    return feed == std::string_view::npos ? text.size() : feed + 1;
}

std::size_t MoDiffLines::count(std::string_view text, MoDiffRange range) {
    if (range.isEmpty())
        return 0;
    std::string_view const bytes = range.of(text);
    return static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), '\n')) + (bytes.back() != '\n');
}
