#include "MoRecordingListener.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

/// Overrides the notifications named by letters: R result, P pass, F fail, D diff, N normalized diff, M missing.
class Choosy : public MoDiffListener {
public:
    explicit Choosy(char const* overrides) : m_overrides(overrides) {}
    void comparisonNotification(MoDiffResult const& result) override { take('R', result); }
    void comparisonNotification(MoDiffResultPass const& result) override { take('P', result); }
    void comparisonNotification(MoDiffResultFail const& result) override { take('F', result); }
    void comparisonNotification(MoDiffResultFailDiff const& result) override { take('D', result); }
    void comparisonNotification(MoDiffResultFailDiffNormalized const& result) override { take('N', result); }
    void comparisonNotification(MoDiffResultFailFileMissing const& result) override { take('M', result); }

    std::string taken;

private:
    template<typename Result>
    void take(char letter, Result const& result) {
        EXPECT_EQ("./m//r ../a\n", result.getMasterName() + " " + result.getActualName());
        if (std::strchr(m_overrides, letter))
            taken += letter;
        else
            MoDiffListener::comparisonNotification(result);
    }

    char const* m_overrides;
};

TEST(MoDiffResult, climbs_the_class_tree_to_the_first_override) {
    std::string const m = "./m//r", a = "../a\n";
    MoDiffResultPass const pass(m, a);
    MoDiffResultFail const fail(m, a);
    MoDiffResultFailDiff const diff(m, a);
    MoDiffResultFailDiffNormalized const normalized(m, a, nullptr, nullptr, 0);
    MoDiffResultFailFileMissing const missing(m, a, a);
    // clang-format off
    char const* const rows[][2] = { // overrides, what each of the results reaches
        {"", "....."}, {"R", "RRRRR"}, {"P", "P...."}, {"F", ".FFFF"}, {"D", "..DD."}, {"N", "...N."}, {"M", "....M"},
        {"FD", ".FDDF"}, {"RD", "RRDDR"}, {"PF", "PFFFF"}, {"RNM", "RRRNM"}, {"PDM", "P.DDM"}, {"RPFDNM", "PFDNM"}};
    MoDiffResult const* const results[] = {&pass, &fail, &diff, &normalized, &missing};
    // clang-format on
    for (auto const& [overrides, expected] : rows) {
        std::string reached;
        for (MoDiffResult const* result : results) {
            Choosy listener(overrides);
            result->notifyListener(listener);
            reached += listener.taken.empty() ? "." : listener.taken;
            EXPECT_EQ(result == &pass, result->isPassed());
        }
        EXPECT_EQ(expected, reached) << overrides;
    }
}

} // namespace
