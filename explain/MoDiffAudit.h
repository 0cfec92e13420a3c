#ifndef MO_DIFF_AUDIT_H
#define MO_DIFF_AUDIT_H

#include "MoDiffBlindSpots.h"
#include "MoDiffPairSetups.h"
#include "MoDiffShownText.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// How much of the compared files nobody compares. Sums come from the record, places from the files; those that are
/// no more what was compared are named and not used.
class MoDiffAudit {
public:
    /// Of both files of some pairs.
    struct Amount {
        std::size_t pairs = 0;
        std::uint64_t bytes = 0;
        std::uint64_t hidden = 0;  ///< bytes that cleansing deleted
        std::size_t differing = 0; ///< pairs that passed although what is hidden differs
    };
    using Amounts = std::map<std::string, Amount>;

    /// A place where hidden bytes differ.
    struct Place {
        MoDiffBothSides<MoDiffPlace> first; ///< where they begin to differ
        MoDiffBothSides<std::size_t> bytes; ///< lengths of the gap
        MoDiffShownText::Excerpts excerpts; ///< from there on
        std::string patterns;               ///< separated by ", "
    };
    /// A pair that passed although what is hidden differs.
    struct Difference {
        std::string id;
        MoDiffBothSides<std::string> files;
        std::size_t gaps = 0;      ///< those that differ in more than carriage returns
        std::size_t returns = 0;   ///< those that differ in carriage returns only
        std::size_t bytes = 0;     ///< of both, the longer side of each
        std::vector<Place> places; ///< the longest gaps, in the order of the files
    };
    /// A gap that takes a whole rest of a file.
    struct Rest {
        std::string id;
        std::string file;
        MoDiffPlace place;
        std::size_t bytes = 0;
        std::size_t fileBytes = 0;
        bool isAtEnd = false;
        std::string pattern;
    };
    /// A pair whose places are not known, and why.
    struct Omission {
        std::string id;
        std::string reason;
    };

    /// Looks at pairs, one after the other. The current directory must be the working directory.
    /// @param pairs      of a record, with their outcomes
    /// @param mostPlaces of a pair
    MoDiffAudit(std::vector<MoDiffPairResult const*> const& pairs, MoDiffPairSetups& setups, std::size_t mostPlaces);

    Amounts const& formats() const { return m_formats; }
    /// By the folder of the report, in which "Masters" lies.
    Amounts const& folders() const { return m_folders; }
    /// Bytes are those of the files in which the pattern deleted something.
    Amounts const& patterns() const { return m_patterns; }
    /// Most hidden bytes first.
    std::vector<Difference> const& differences() const { return m_differences; }
    std::vector<Rest> const& rests() const { return m_rests; }
    std::vector<Omission> const& omissions() const { return m_omissions; }

private:
    void addAmounts(MoDiffPairResult const& pair);
    void look(MoDiffPairResult const& pair, MoDiffPairSetups& setups);
    void addDifference(MoDiffPairResult const& pair, MoDiffBothSides<MoDiffSourceText> const& sources);
    std::vector<Place> placesOf(std::vector<MoDiffBlindSpots::Difference> gaps,
                                MoDiffBothSides<MoDiffSourceText> const& sources) const;
    void addRests(MoDiffPairResult const& pair, std::string const& file, MoDiffSourceText const& source);

    std::size_t m_mostPlaces;
    Amounts m_formats;
    Amounts m_folders;
    Amounts m_patterns;
    std::vector<Difference> m_differences;
    std::vector<Rest> m_rests;
    std::vector<Omission> m_omissions;
};

#endif
