#ifndef MO_DIFF_PAGE_H
#define MO_DIFF_PAGE_H

#include <string>

/// A page of HTML that stands on its own: its style and its script are in it, so that it can be mailed, and its
/// policy lets no other script run and nothing be fetched.
struct MoDiffPage {
    std::string title;      ///< words, not HTML
    std::string kind;       ///< for the style: "index", "pair"
    std::string skipTarget; ///< the id of what keyboards may skip to, and its words
    std::string skipWords;
    std::string body; ///< HTML; scripts, styles and handlers in it do nothing
    /// Whether it shows pictures (data) and frames, which are under the page's policy as well: they need their
    /// styles.
    bool hasFrames = false;

    std::string toHtml() const;
};

#endif
