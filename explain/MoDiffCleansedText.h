#ifndef MO_DIFF_CLEANSED_TEXT_H
#define MO_DIFF_CLEANSED_TEXT_H

#include "MoDiffLib.h"
#include "MoDiffSourceText.h"

#include <cstdint>
#include <string>
#include <string_view>

/// What cleansing leaves of a file, in the file's place: a large file and its cleansed text are not held at once.
/// Once the text has served, the file is read again.
class MoDiffCleansedText {
public:
    /// Nothing is hidden.
    explicit MoDiffCleansedText(std::string file) : m_text(std::move(file)), m_isWhole(true) {}
    /// Cleansed as the library compares; what follows a NUL is dropped. Raises what MoDiffCleansingMap raises.
    MoDiffCleansedText(std::string file, MoDiffLib::Patterns const& patterns);

    std::string_view text() const { return m_text; }

    /// The file, read again, for the text, which is given up. Raises std::exception naming the file when it cannot be
    /// read or is another one by now.
    MoDiffSourceText takeFile(std::string const& name);
    /// The same with the file that was cleansed.
    MoDiffSourceText takeBack(std::string file);

private:
    MoDiffSourceText sourceOf(std::string file);

    std::string m_text;
    bool m_isWhole; ///< whether the text is the file
    std::uint64_t m_fileHash = 0;
    MoDiffHiddenStretches m_hidden;
    std::vector<char const*> m_names;
};

#endif
