#ifndef MO_DIFF_SCRIPT_OUTPUT_H
#define MO_DIFF_SCRIPT_OUTPUT_H

#include <cstdint>
#include <string>
#include <string_view>

/// Keeps the beginning and the end of what a script prints, in bounded memory.
class MoDiffScriptOutput {
public:
    void clear();
    void add(std::string_view text);

    bool isEmpty() const { return m_head.empty(); }
    /// All of it, or its two ends with a line between them that tells how much is left out.
    std::string getText() const;
    /// The last line that is not empty.
    std::string getLastLine() const;

private:
    std::string m_head;
    std::string m_tail; ///< what follows the head; its beginning may have been dropped
    std::uint64_t m_dropped = 0;
};

#endif
