#ifndef MO_DIFF_TEXT_ENCODING_H
#define MO_DIFF_TEXT_ENCODING_H

#include <string>
#include <string_view>

/// How the characters of a file are written.
namespace MoDiffTextEncoding {

/// For people: "UTF-8 with byte-order mark", "UTF-16, little end first", "ISO 8859-1 or a relative" for a text that
/// is not UTF-8.
char const* nameOf(std::string_view file);

/// A file without its byte-order mark, in UTF-8: its beginning, and how long all of it is. Bytes of a text that is
/// not UTF-8 count as ISO 8859-1.
class Beginning {
public:
    /// @param file tells the encoding
    /// @param room in bytes, which a last character may exceed
    Beginning(std::string_view file, std::size_t room);

    /// Adds parts of the file, as a whole one after another, and what stands between them.
    void append(std::string_view part);

    std::string const& text() const { return m_text; }
    std::size_t size() const { return m_size; } ///< of all that was added

private:
    int m_encoding;
    std::size_t m_room;
    std::size_t m_skip; ///< bytes of a byte-order mark that is still to come
    std::string m_text;
    std::size_t m_size = 0;
};

/// Whether the characters of two files are the same, byte-order marks left out.
bool haveSameCharacters(std::string_view first, std::string_view second);

} // namespace MoDiffTextEncoding

#endif
