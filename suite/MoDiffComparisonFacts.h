#ifndef MO_DIFF_COMPARISON_FACTS_H
#define MO_DIFF_COMPARISON_FACTS_H

#include "MoDiffComparisonObserver.h"
#include "MoDiffContentHash.h"
#include "MoDiffPairResult.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// Gathers what one comparison shows of its files, while it reads them. Watches all comparisons of the process for as
/// long as it lives; one at a time.
class MoDiffComparisonFacts : public MoDiffComparisonObserver {
public:
    MoDiffComparisonFacts();
    ~MoDiffComparisonFacts() override;
    MoDiffComparisonFacts(MoDiffComparisonFacts const&) = delete;
    MoDiffComparisonFacts& operator=(MoDiffComparisonFacts const&) = delete;

    /// What a text shows before it is cleansed.
    struct Text {
        std::size_t length = 0;
        std::string hash;
        bool hasByteOrderMark = false;
        std::optional<std::size_t> nul;     ///< where the first one stands
        std::optional<std::size_t> invalid; ///< where the first byte stands that is not UTF-8
        File file = {};                     ///< where it was read from
    };

    /// Forgets the comparison before.
    void reset();

    /// Whether two texts were read.
    bool hasTexts() const { return m_hasTexts; }
    MoDiffBothSides<Text> const& getTexts() const { return m_texts; }
    /// Where the first NUL of either text stands; none when the texts are the same bytes.
    std::optional<std::size_t> getNul() const;
    /// What each step of cleansing deleted, steps that deleted nothing left out.
    std::vector<MoDiffPatternCount> const& getPatterns() const { return m_patterns; }
    /// All that cleansing deleted; none when nothing was cleansed.
    std::optional<MoDiffBothSides<std::uint64_t>> const& getHidden() const { return m_hidden; }
    /// Hash and length of what was compared byte for byte.
    MoDiffBothSides<MoDiffContentHash> const& getBlocks() const { return m_blocks; }

    void textsRead(char const* master, std::size_t masterLength, char const* actual,
                   std::size_t actualLength) override;
    void blockRead(Side side, char const* bytes, std::size_t count) override;
    void textsCleansed(MoDiffNormalizationPattern const* pattern, std::size_t masterDeleted,
                       std::size_t actualDeleted) override;

private:
    MoDiffComparisonObserver* m_previous;
    bool m_hasTexts = false;
    bool m_areTextsSame = false;
    MoDiffBothSides<Text> m_texts;
    std::vector<MoDiffPatternCount> m_patterns;
    std::optional<MoDiffBothSides<std::uint64_t>> m_hidden;
    MoDiffBothSides<MoDiffContentHash> m_blocks;
};

#endif
