#ifndef MO_DIFF_SOURCE_TEXT_H
#define MO_DIFF_SOURCE_TEXT_H

#include "MoDiffChange.h"
#include "MoDiffHiddenStretches.h"
#include "MoDiffLib.h"

#include <string>
#include <string_view>
#include <vector>

/// A file of a pair and what of it a comparison sees: its text, which is the file itself or what cleansing leaves.
/// Views and iterators stay valid as long as the object stays where it is.
class MoDiffSourceText {
public:
    using Stretch = MoDiffHiddenStretches::Stretch;

    /// Nothing is hidden.
    explicit MoDiffSourceText(std::string file = {}) : m_file(std::move(file)) {}
    /// @param names of what deleted the stretches, by step
    MoDiffSourceText(std::string file, MoDiffHiddenStretches hidden, std::vector<char const*> names)
        : m_file(std::move(file)), m_hidden(std::move(hidden)), m_names(std::move(names)) {}
    /// Finds out what is hidden. Cleansed as the library compares; what follows a NUL is dropped. Raises what
    /// MoDiffCleansingMap raises.
    MoDiffSourceText(std::string file, MoDiffLib::Patterns const& patterns);

    std::string_view file() const { return m_file; }
    /// The text, made from the file each time.
    std::string text() const;
    std::size_t textSize() const { return m_file.size() - m_hidden.bytes(); }

    /// The byte of the file that is a byte of the text; the file's length for the text's.
    std::size_t toFile(std::size_t index) const { return m_hidden.toFile(index); }
    /// The first byte of the text at or behind a byte of the file.
    std::size_t toText(std::size_t fileIndex) const { return m_hidden.toText(fileIndex); }

    /// What cleansing deleted from the file, in order.
    MoDiffHiddenStretches const& hidden() const { return m_hidden; }
    /// What deleted a stretch, as records name it: "CarriageReturn", "Script".
    char const* nameOf(Stretch const& stretch) const { return m_names[stretch.step]; }

private:
    std::string m_file;
    MoDiffHiddenStretches m_hidden;
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
