#ifndef MO_DIFF_PAIR_PAGE_H
#define MO_DIFF_PAIR_PAGE_H

#include "MoDiffPageList.h"
#include "MoDiffPairExplanation.h"
#include "MoDiffPairSetups.h"

#include <optional>
#include <string>

/// The page of a pair that did not pass: what differs, how both files look, what can be done about it.
class MoDiffPairPage {
public:
    /// How large a page may become, in bytes.
    struct Room {
        std::size_t differences;
        std::size_t look;
    };

    /// @param list, setups must outlive the object
    /// @param index of the pair in the list
    MoDiffPairPage(MoDiffPageList const& list, MoDiffPairSetups& setups, std::size_t index, Room room);

    /// The whole page. Reads both files. Uses the library's patterns, so one at a time in a process.
    std::string toHtml();
    /// What of it was used, once the page is made.
    Room size() const { return m_size; }

private:
    std::string navigation() const;
    std::string heading() const;
    std::string deeds() const;
    std::string differences();
    std::string explained(MoDiffPairExplanation const& explanation);
    std::string recorded() const;
    std::string look() const;
    std::string facts() const;
    std::string findStaleness() const;
    std::string link(std::size_t index, char const* relation, char const* text) const;

    MoDiffPageList const& m_list;
    MoDiffPairSetups& m_setups;
    std::size_t m_index;
    MoDiffPairResult const& m_pair;
    std::size_t m_group;
    Room m_room;
    Room m_size{};
    std::optional<MoDiffPairExplanation> m_explanation; ///< none when there is nothing to compare
    std::string m_trouble;                              ///< why the files cannot be shown
};

#endif
