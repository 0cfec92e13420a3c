#ifndef MO_DIFF_PATH_GLOB_H
#define MO_DIFF_PATH_GLOB_H

#include <string>
#include <string_view>

/// A pattern for paths and ids: "*" stands for any run of bytes without "/", "**" for any run at all, "?" for one
/// character but "/". A "**" between two "/" may also stand for no directory. Everything else stands for itself.
class MoDiffPathGlob {
public:
    explicit MoDiffPathGlob(std::string pattern) : m_pattern(std::move(pattern)) {}

    std::string const& getPattern() const { return m_pattern; }
    /// What every path begins with that the pattern meets.
    std::string literalStart() const { return m_pattern.substr(0, m_pattern.find_first_of("*?")); }
    /// Whether the pattern meets the whole text, or is the same text.
    bool matches(std::string_view text) const;

private:
    std::string m_pattern;
};

#endif
