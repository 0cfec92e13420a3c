#include "MoDiffPageList.h"

#include "MoDiffShellWord.h"
#include "MoDiffShownText.h"
#include "MoDiffSignature.h"

MoDiffPageList::MoDiffPageList(Sources sources) : m_sources(std::move(sources)) {
    for (std::size_t index = 0; index < groups().size(); ++index)
        for (std::string const& id : groups()[index].pairs)
            if (MoDiffPairResult const* const pair = record().find(id))
                add(*pair, index + 1);
    for (MoDiffPairResult const& pair : record().pairs())
        if (pair.outcome != MoDiffOutcome::ePassed)
            add(pair, 0);
}

/// Does nothing for a pair that is there.
void MoDiffPageList::add(MoDiffPairResult const& pair, std::size_t group) {
    if (m_indexes.emplace(&pair, m_items.size()).second)
        m_items.push_back({&pair, group, "pairs/" + MoDiffSignature::ofBytes(pair.id) + ".html",
                           MoDiffRecordPairs::isDealtWith(pair)});
}

MoDiffPageList::Item const* MoDiffPageList::find(MoDiffPairResult const& pair) const {
    auto const found = m_indexes.find(&pair);
    return found == m_indexes.end() ? nullptr : &m_items[found->second];
}

MoDiffPageList::Deed MoDiffPageList::deedFor(MoDiffPairResult const& pair) const {
    // An id is taken as it is shown, too, so that a name that no shell could be given can be typed.
    std::string const word = " " + MoDiffShellWord::quoted(MoDiffShownText::escaped(pair.id));
    switch (pair.outcome) {
    case MoDiffOutcome::eDifferent:
    case MoDiffOutcome::eMissing:
    case MoDiffOutcome::eExpected:
        return pair.hash.actual.empty() ? Deed{"Give up the master of this pair", command("retire") + word}
                                        : Deed{"Accept this pair", command("accept") + word};
    case MoDiffOutcome::ePassed:
        return {};
    case MoDiffOutcome::eUnexpectedlyPassed:
        return {"It passed, so the rule that expects a difference can leave the configuration.", ""};
    default:
        return {"There is no verdict to accept. Compare again", "modiff run" + word};
    }
}

std::string MoDiffPageList::groupCommand(std::size_t group) const {
    return command("accept") + " --group " + std::to_string(group);
}
