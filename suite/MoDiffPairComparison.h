#ifndef MO_DIFF_PAIR_COMPARISON_H
#define MO_DIFF_PAIR_COMPARISON_H

#include "MoDiffCaseTwins.h"
#include "MoDiffComparisonFacts.h"
#include "MoDiffFileState.h"
#include "MoDiffPairResult.h"
#include "MoDiffPlan.h"
#include "MoDiffScriptServer.h"
#include "MoDiffSuiteConfiguration.h"

#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <string>

class MoDiffListener;

/// Compares pairs, each with its format's engine, and tells all that is known of them. While it lives it is the
/// process's comparison observer and script runner; a process has one, and no children but those that it starts.
class MoDiffPairComparison {
public:
    struct Settings {
        MoDiffSuiteConfiguration const* configuration; ///< must outlive the comparison
        /// See MoDiffRunOptions; may be empty.
        std::function<std::string const*(MoDiffPair const&)> expectedReason;
        MoDiffListener* listener = nullptr; ///< is told each result while the texts are at hand; null for none
        std::string outDirectory;           ///< scripts' result files come below it; empty for none
        MoDiffScriptServer::StartWatch watchStart{}; ///< may be empty
    };

    explicit MoDiffPairComparison(Settings settings);
    ~MoDiffPairComparison();

    /// Compares a pair, whose setup must outlive this object. Everything that goes wrong is an outcome; only what is
    /// no std::exception passes through.
    MoDiffPairResult compare(MoDiffPair const& pair);

private:
    class Taker;

    void judge(MoDiffPair const& pair, MoDiffPairResult& result);
    static void nameTroubles(MoDiffPair const& pair, MoDiffFileState const& master, MoDiffFileState const& actual,
                             MoDiffPairResult& result);
    static void nameOpenTrouble(char const* side, std::string const& path, MoDiffFileState const& state,
                                MoDiffPairResult& result);
    void compareFiles(MoDiffPair const& pair, MoDiffPairResult& result);
    MoDiffFileEngine const& engineFor(MoDiffEngineSetup const& setup);
    std::string resultFileFor(MoDiffPair const& pair) const;
    void takeScriptEnd(std::string const& resultFile, MoDiffPairResult& result) const;
    void takeFacts(MoDiffPairResult& result) const;
    void judgeNul(MoDiffPairResult& result) const;
    void addHash(MoDiffPair const& pair, MoDiffFileState const& master, MoDiffFileState const& actual,
                 MoDiffPairResult& result) const;
    static void addSideHash(char const* side, std::string const& path, MoDiffFileState const& state,
                            std::uint64_t& length, std::string& hash, MoDiffPairResult& result);
    void warnOfTexts(MoDiffPairResult& result) const;
    void warnOfHidden(MoDiffPairResult& result) const;
    void warnOfReadFiles(MoDiffPairResult& result) const;
    void warnOfFiles(MoDiffPair const& pair, MoDiffFileState const& master, MoDiffFileState const& actual,
                     MoDiffPairResult& result);
    void warnOfFiles(bool isOneFile, std::int64_t modified, MoDiffBothSides<bool> const& hasChanged,
                     MoDiffPairResult& result) const;
    void expect(MoDiffPair const& pair, MoDiffPairResult& result) const;

    Settings m_settings;
    std::time_t m_start; ///< ages are seen from here
    MoDiffComparisonFacts m_facts;
    MoDiffScriptServer m_scripts;
    MoDiffCaseTwins m_twins;
    std::map<MoDiffEngineSetup const*, std::unique_ptr<MoDiffFileEngine>> m_engines;
};

#endif
