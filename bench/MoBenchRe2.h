#ifndef MO_BENCH_RE2_H
#define MO_BENCH_RE2_H

#include <memory>
#include <string>
#include <vector>

namespace re2 {
class RE2;
}

/// The same cleansing with RE2: one GlobalReplace an expression. Agrees with ICU where word boundaries stand between
/// ASCII characters and lines end in line feeds.
class MoBenchRe2 {
public:
    /// Raises std::runtime_error when an expression does not compile.
    explicit MoBenchRe2(std::vector<std::string> const& expressions);
    ~MoBenchRe2();
    MoBenchRe2(MoBenchRe2 const&) = delete;
    MoBenchRe2& operator=(MoBenchRe2 const&) = delete;

    void cleanse(std::string& text) const;

private:
    std::vector<std::unique_ptr<re2::RE2>> m_expressions;
};

#endif
