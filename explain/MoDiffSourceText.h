#ifndef MO_DIFF_SOURCE_TEXT_H
#define MO_DIFF_SOURCE_TEXT_H

#include "MoDiffChange.h"
#include "MoDiffCleansingMap.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A file of a pair and what of it a comparison sees: its text, which is the file itself or what cleansing leaves.
/// Views and references stay valid as long as the object stays where it is.
class MoDiffSourceText {
public:
    using Stretch = MoDiffCleansingMap::Stretch;

    /// Nothing is hidden.
    explicit MoDiffSourceText(std::string file);
    /// Cleansed as the library compares; what follows a NUL is dropped. Raises what MoDiffCleansingMap raises.
    MoDiffSourceText(std::string file, MoDiffLib::Patterns const& patterns);

    std::string_view file() const { return m_file; }
    std::string_view text() const { return m_map ? std::string_view(m_map->cleansedText()) : file(); }

    /// The byte of the file that is a byte of the text; the file's length for the text's.
    std::size_t toFile(std::size_t index) const { return m_map ? m_map->toFile(index) : index; }

    /// What cleansing deleted from the file, in order.
    std::vector<Stretch> const& hidden() const;
    /// The first of these that ends behind a byte of the file.
    std::vector<Stretch>::const_iterator firstHidden(std::size_t fileIndex) const;
    /// What deleted a stretch, as records name it: "CarriageReturn", "Script".
    char const* nameOf(Stretch const& stretch) const;

private:
    std::string m_file;
    std::optional<MoDiffCleansingMap> m_map;
    std::vector<char const*> m_names; ///< by step
};

/// Where something stands in a file.
struct MoDiffPlace {
    std::size_t line;   ///< from 1
    std::size_t column; ///< in characters, from 1; a byte that is not UTF-8 counts as one
};

/// Counts lines and columns through a text, which must outlive the counter.
class MoDiffPlaceCounter {
public:
    explicit MoDiffPlaceCounter(std::string_view text) : m_text(text) {}

    /// The place of a byte, or of the text's end. Indexes must not decrease from call to call.
    MoDiffPlace at(std::size_t index);

private:
    std::string_view m_text;
    std::size_t m_index = 0;
    MoDiffPlace m_place{1, 1};
};

/// Lines of a text; a line ends behind its line feed.
namespace MoDiffLines {

/// Where the line begins that holds a byte; for the text's end the line that it ends.
std::size_t begin(std::string_view text, std::size_t index);
/// Behind the line that holds a byte.
std::size_t end(std::string_view text, std::size_t index);
/// How many lines a range touches.
std::size_t count(std::string_view text, MoDiffRange range);

} // namespace MoDiffLines

#endif
