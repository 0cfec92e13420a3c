#ifndef MO_DIFF_RENDERED_LOOK_H
#define MO_DIFF_RENDERED_LOOK_H

#include "MoDiffPairExplanation.h"

#include <string>

/// How both files of a pair look to those who get them: texts of HTML in frames in which nothing runs and nothing can
/// be fetched, pages of documents as pictures.
class MoDiffRenderedLook {
public:
    /// @param pair, explanation must outlive the object; the files must be those that were compared
    /// @param room bytes for both sides together
    MoDiffRenderedLook(MoDiffPairResult const& pair, MoDiffPairExplanation const& explanation, std::size_t room)
        : m_pair(pair), m_explanation(explanation), m_room(room) {}

    /// "" for formats that have no look, and where no program can draw it.
    std::string toHtml() const;

private:
    std::string frames(bool isArchive) const;
    std::string pictures() const;

    MoDiffPairResult const& m_pair;
    MoDiffPairExplanation const& m_explanation;
    std::size_t m_room;
};

#endif
