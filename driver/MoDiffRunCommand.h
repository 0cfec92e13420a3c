#ifndef MO_DIFF_RUN_COMMAND_H
#define MO_DIFF_RUN_COMMAND_H

#include "MoDiffCommand.h"
#include "MoDiffConfigurationOptions.h"
#include "MoDiffRecordPairs.h"
#include "MoDiffRun.h"
#include "MoDiffRunConsole.h"
#include "MoDiffSelection.h"
#include "MoDiffWatch.h"
#include "MoDiffWorkflowPause.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

/// `modiff run`: finds every master below the working directory and compares each with its actual file.
class MoDiffRunCommand : public MoDiffCommand {
public:
    explicit MoDiffRunCommand(CLI::App& parent);

    int run() override;
    bool takesFiles() const override { return false; }

private:
    void addSelectionOptions();
    void addOutputOptions();
    void addShowOptions();

    void readPaths(MoDiffSuiteConfiguration const& configuration);
    MoDiffStatusLine::Mode progress() const;
    std::ostream& notes() const;
    MoDiffSelection::Choice choice() const;
    std::string selectionJson(MoDiffSelection::Choice const& choice) const;
    MoDiffPlan plan(MoDiffSuiteConfiguration const& configuration, MoDiffSelection::Choice const& choice,
                    MoDiffRunConsole& console) const;
    std::string whyNothing(MoDiffPlan const& plan) const;
    int list(MoDiffPlan const& plan) const;
    void guardFiles(MoDiffPlan const& plan, MoDiffSuiteConfiguration const& configuration) const;
    MoDiffRunReport perform(MoDiffWatch::Scene const& scene, MoDiffSelection::Choice const& choice,
                            MoDiffWatch::IsStale const& isStale, MoDiffRunEvents& events) const;
    void showEnd(MoDiffWatch::Scene const& scene, MoDiffRunReport const& report, std::string const& start,
                 MoDiffRunConsole& console) const;
    void requireWatchable(MoDiffSelection::Choice const& choice) const;
    MoDiffWatch::Scene look(std::string const& start, MoDiffSelection::Choice const& choice) const;
    int compare(MoDiffWatch::Scene scene, std::string const& start, MoDiffSelection::Choice const& choice,
                MoDiffRunConsole& console);
    int watch(MoDiffWatch::Scene scene, std::string const& start, MoDiffSelection::Choice const& choice,
              MoDiffRunConsole& console) const;
    static void annotate(MoDiffRecordPairs const& record, MoDiffSuiteConfiguration const& configuration);
    void showNext(MoDiffRunReport const& report, bool isScriptInTrouble) const;

    MoDiffConfigurationOptions m_configuration;
    std::vector<std::string> m_filters;
    std::vector<std::string> m_formats;
    std::string m_failed; ///< the record whose failures are selected; empty for that of the last run
    std::string m_shard;
    std::string m_timings;
    std::string m_out;
    std::string m_summary;
    std::string m_junit;
    std::string m_configurationFile; ///< absolute; empty without one
    std::size_t m_failFast = 0;
    int m_progress = 0;
    int m_annotations = 0;
    bool m_isListing = false;
    bool m_isPrintingConfig = false;
    bool m_isResuming = false;
    bool m_isVerbose = false;
    bool m_isWatching = false;
    std::optional<MoDiffWorkflowPause> m_pause; ///< while texts of reports are shown to GitHub
};

#endif
