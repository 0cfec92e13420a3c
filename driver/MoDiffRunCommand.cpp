#include "MoDiffRunCommand.h"

#include "MoDiffAnnotations.h"
#include "MoDiffExpectations.h"
#include "MoDiffGuardedFiles.h"
#include "MoDiffInput.h"
#include "MoDiffInterrupt.h"
#include "MoDiffJunitCommand.h"
#include "MoDiffNewFiles.h"
#include "MoDiffRecordReader.h"
#include "MoDiffRecordText.h"
#include "MoDiffShardVariables.h"
#include "MoDiffShellWord.h"
#include "MoDiffShownText.h"
#include "MoDiffTrouble.h"
#include "MoDiffWholeFile.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <limits>

namespace fs = std::filesystem;

using MoDiffShownText::escaped;

namespace {

char const kFooter[] =
    "FILTER is a part of a pair's id, such as sales/ or html:, or a glob that meets a whole id; `modiff run --list`\n"
    "shows the ids. The record in DIR/run.jsonl tells everything to programs.\n\n"
    "Exit status: 0 all passed; 1 a difference, a missing file, an expected difference that is gone, or new files\n"
    "with --new fail; 2 trouble: a pair without verdict (error, crashed, timeout, memory), a bad option, a record\n"
    "that cannot be written; 3 nothing compared. 2 counts before 1. A signal ends with 128 and its number;\n"
    "Ctrl-C ends --watch with the status of its last comparison.";

int const kSuitableProgress = -1;
std::map<std::string, int> const kProgress = {{"auto", kSuitableProgress},
                                              {"moving", MoDiffStatusLine::eMoving},
                                              {"lines", MoDiffStatusLine::eNowAndThen},
                                              {"none", MoDiffStatusLine::eNone}};

std::map<std::string, int> const kAnnotations = {{"github", 1}};

std::string absolute(std::string const& path) {
    return path.empty() ? path : fs::absolute(path).lexically_normal().string();
}

/// A path as somebody sees it who is where the command was started.
std::string seenFrom(std::string const& directory, std::string const& path) {
    std::string const relative = fs::path(path).lexically_relative(directory).string();
    return relative.empty() || relative.rfind("..", 0) == 0 ? path : relative;
}

std::set<std::string> failuresIn(std::string const& record, std::ostream& notes) {
    std::set<std::string> ids;
    MoDiffRecordReader reader(record);
    for (MoDiffPairResult result; reader.next(result);)
        if (isFailure(result.outcome))
            ids.insert(result.id);
    if (!reader.isComplete())
        notes << "note       " << escaped(reader.describeIncomplete()) << '\n';
    return ids;
}

std::unordered_map<std::string, double> timingsIn(std::string const& record) {
    std::unordered_map<std::string, double> seconds;
    MoDiffRecordReader reader(record);
    for (MoDiffPairResult result; reader.next(result);)
        seconds[result.id] = result.seconds;
    return seconds;
}

/// This command, for a shell, as it takes up the record. What has failed so far would make --fail-fast end it at
/// once.
std::string resumingCommand() {
    std::vector<std::string> const words = MoDiffInput::readNames("/proc/self/cmdline", /*isSeparated=*/true);
    std::string command = MoDiffShellWord::asNeeded(words[0]) + " run --resume";
    for (std::size_t index = 2; index < words.size(); ++index)
        if (words[index] != "--resume" && words[index].rfind("--fail-fast", 0) != 0)
            command += " " + MoDiffShellWord::asNeeded(words[index]);
    return command;
}

std::string jsonList(std::vector<std::string> const& texts) {
    std::string list = "[";
    for (std::string const& text : texts)
        list.append(list.size() > 1 ? "," : "").append(MoDiffRecordText::quoted(text));
    return list + "]";
}

/// What a selection leaves out may have masters elsewhere.
void findNewFiles(MoDiffSuiteConfiguration const& configuration, MoDiffSelection::Choice const& choice,
                  MoDiffPlan& plan) {
    bool const isAll = !choice.isFiltered() && plan.unreadable.empty();
    if (isAll && configuration.newFiles != MoDiffSuiteConfiguration::eNewIgnore)
        MoDiffNewFiles::find(configuration, plan);
}

} // namespace

MoDiffRunCommand::MoDiffRunCommand(CLI::App& parent)
    : MoDiffCommand(parent, "run", "Find all masters and compare each with its actual file", kFooter),
      m_configuration(options()) {
    addSelectionOptions();
    addOutputOptions();
    addShowOptions();
}

void MoDiffRunCommand::addSelectionOptions() {
    options()
        .add_option("FILTER", m_filters, "Compare only pairs that one of these meets")
        ->type_name("")
        ->transform(asGiven())
        ->check(notEmpty());
    options()
        .add_option("--format", m_formats, "Compare only this format; repeatable")
        ->type_name("WORD")
        ->allow_extra_args(false);
    options()
        .add_option("--failed", m_failed,
                    "Compare only what did not pass in the record of DIR; default: the last one")
        ->type_name("[DIR]")
        ->expected(0, 1);
    options()
        .add_option("--shard", m_shard, "Compare only part I of N; default: what the variables of test runners say")
        ->type_name("I/N")
        ->check(notEmpty());
    options()
        .add_option("--timings", m_timings, "Balance shards by the times in the record of DIR, the same for all")
        ->type_name("DIR")
        ->check(notEmpty());
    options().add_flag("--list", m_isListing, "Show the ids of the pairs and compare nothing");
    options().add_flag("--print-config", m_isPrintingConfig, "Show every value and where it comes from");
}

void MoDiffRunCommand::addOutputOptions() {
    options()
        .add_option("--out", m_out, "Directory of the record; default: modiff-run beside the configuration file")
        ->type_name("DIR")
        ->check(notEmpty());
    options().add_flag("--resume", m_isResuming, "Take up the incomplete record there and compare the rest");
    options()
        .add_option("--summary", m_summary, "Write an XML test summary to this file")
        ->type_name("FILE")
        ->check(notEmpty());
    options()
        .add_option("--junit", m_junit, "Write all pairs as test cases for CI servers to this file")
        ->type_name("FILE")
        ->check(notEmpty());
    options()
        .add_option("--annotations", m_annotations,
                    "github: print what did not pass as its workflow commands, which mark lines of masters")
        ->type_name("SERVER")
        ->transform(oneOf(kAnnotations));
    options()
        .add_flag("--fail-fast{1}", m_failFast, "Stop after the first failure, or after N with --fail-fast=N")
        ->check(CLI::Range(1, std::numeric_limits<int>::max()));
    options().add_flag("--watch", m_isWatching, "Go on, and compare again what changes, until Ctrl-C");
}

void MoDiffRunCommand::addShowOptions() {
    options()
        .add_option("--progress", m_progress, "auto (default), moving, lines (one now and then) or none")
        ->type_name("HOW")
        ->transform(oneOf(kProgress))
        ->default_val("auto");
    options().add_flag("-v,--verbose", m_isVerbose, "Show pairs that passed, too, as they come");
}

/// Paths are seen from where the command was started, which the run leaves.
void MoDiffRunCommand::readPaths(MoDiffSuiteConfiguration const& configuration) {
    m_out = isGiven("--out") ? absolute(m_out) : MoDiffConfigurationOptions::defaultOutDirectory(configuration);
    m_failed = m_failed.empty() ? m_out : absolute(m_failed);
    m_timings = absolute(m_timings);
    m_summary = absolute(m_summary);
    m_junit = absolute(m_junit);
}

/// A list is for programs, and holds nothing but ids.
std::ostream& MoDiffRunCommand::notes() const {
    return m_isListing ? std::cerr : std::cout;
}

MoDiffSelection::Choice MoDiffRunCommand::choice() const {
    MoDiffSelection::Choice choice;
    choice.filters = m_filters;
    choice.formats = m_formats;
    if (isGiven("--failed"))
        choice.ids = failuresIn(m_failed, notes());
    if (isGiven("--timings"))
        choice.timings = timingsIn(m_timings);
    auto const shard = isGiven("--shard") ? MoDiffShardVariables::parse(m_shard, "--shard")
                                          : MoDiffShardVariables::read().value_or(MoDiffAskedShard());
    choice.shardIndex = shard.index;
    choice.shardCount = shard.count;
    if (!shard.origin.empty())
        notes() << "shard      " << shard.index << " of " << shard.count << " as " << shard.origin << " says\n";
    return choice;
}

std::string MoDiffRunCommand::selectionJson(MoDiffSelection::Choice const& choice) const {
    std::string json = "{\"filters\":" + jsonList(choice.filters) + ",\"formats\":" + jsonList(choice.formats);
    if (choice.ids)
        json += ",\"failed\":" + MoDiffRecordText::quoted(m_failed);
    return json + "}";
}

MoDiffPlan MoDiffRunCommand::plan(MoDiffSuiteConfiguration const& configuration,
                                  MoDiffSelection::Choice const& choice, MoDiffRunConsole& console) const {
    MoDiffPlan plan = MoDiffPlan::make(configuration, [&](std::size_t directories, std::size_t masters) {
        console.discovering(directories, masters);
    });
    console.discovered();
    for (std::string const& gone : MoDiffSelection::apply(choice, plan))
        notes() << "note       " << escaped(gone) << "  is no master any more\n";
    findNewFiles(configuration, choice, plan);
    for (std::string const& sentence : plan.unreadable)
        MoDiffTrouble().report(sentence);
    return plan;
}

std::string MoDiffRunCommand::whyNothing(MoDiffPlan const& plan) const {
    if (!plan.unreadable.empty())
        return "masters may lie where nothing can be read";
    if (plan.masterFolders == 0)
        return "no folder is named Masters below " + fs::current_path().string();
    if (plan.pairs.empty())
        return "the folders named Masters below " + fs::current_path().string() + " hold no file of the formats";
    if (isGiven("--failed"))
        return "nothing failed in the record of " + m_failed;
    return "no pair is left by the selection";
}

int MoDiffRunCommand::list(MoDiffPlan const& plan) const {
    for (std::size_t const index : plan.selected)
        std::cout << escaped(plan.pairs[index].id) << '\n';
    return finishOutput(plan.unreadable.empty() ? eExitPassed : eExitTrouble);
}

void MoDiffRunCommand::guardFiles(MoDiffPlan const& plan, MoDiffSuiteConfiguration const& configuration) const {
    MoDiffGuardedFiles files;
    files.protectTree(configuration);
    files.requireOutside(m_out, "the record");
    if (m_summary.empty() && m_junit.empty())
        return;
    for (MoDiffPair const& pair : plan.pairs) {
        files.protect(pair.master, "a master");
        files.protect(pair.actual, "an actual file");
    }
    files.protect(m_out + "/" + MoDiffRecord::kFileName, "the record");
    if (!m_configurationFile.empty())
        files.protect(m_configurationFile, "the configuration");
    files.protectScripts();
    if (!m_summary.empty())
        files.claim(m_summary, "the summary");
    if (!m_junit.empty())
        files.claim(m_junit, "the test cases");
    for (std::string const& output : {m_summary, m_junit})
        if (!output.empty())
            MoDiffWholeFile::prepare(output);
}

MoDiffRunReport MoDiffRunCommand::perform(MoDiffWatch::Scene const& scene, MoDiffSelection::Choice const& choice,
                                          MoDiffWatch::IsStale const& isStale, MoDiffRunEvents& events) const {
    MoDiffExpectations const expectations(scene.configuration, scene.plan);
    MoDiffRunOptions options;
    options.outDirectory = m_out;
    options.summaryFile = m_summary;
    options.resume = m_isResuming;
    options.isStale = isStale;
    options.failFast = m_failFast;
    options.header.config = scene.configuration.toJson();
    options.header.selection = selectionJson(choice);
    options.header.shardIndex = choice.shardIndex;
    options.header.shardCount = choice.shardCount;
    options.expectedReason = [&](MoDiffPair const& pair) { return expectations.reasonFor(pair); };
    options.signal = &MoDiffInterrupt::getSignal();
    return MoDiffRun::perform(scene.plan, scene.configuration, options, events);
}

/// The variable is GitHub's.
void MoDiffRunCommand::annotate(MoDiffRecordPairs const& record, MoDiffSuiteConfiguration const& configuration) {
    char const* const workspace = std::getenv("GITHUB_WORKSPACE");
    MoDiffPairSetups setups(configuration);
    MoDiffAnnotations::writeForGitHub(record, setups, workspace ? workspace : "", std::cout);
}

void MoDiffRunCommand::showNext(MoDiffRunReport const& report, bool isScriptInTrouble) const {
    std::string const shownOut = escaped(MoDiffShellWord::asNeeded(m_out));
    if (isScriptInTrouble)
        std::cout << "next       modiff doctor  tells what the scripts lack\n";
    if (!report.complete)
        std::cout << "next       " << escaped(resumingCommand()) << "  compares the rest\n";
    else if (report.totals.getFailures() > 0)
        std::cout << "next       modiff show --groups" << (isGiven("--out") ? " --record " + shownOut : "")
                  << "  tells which pairs differ in the same way\n"
                  << "           modiff run --failed" << (isGiven("--out") ? "=" + shownOut : "")
                  << "  compares again what did not pass\n";
}

void MoDiffRunCommand::showEnd(MoDiffWatch::Scene const& scene, MoDiffRunReport const& report,
                               std::string const& start, MoDiffRunConsole& console) const {
    console.showEnd(report.complete ? scene.plan.newFiles : std::vector<std::string>(), scene.plan.unreadable);
    std::cout << "record     " << escaped(seenFrom(start, report.recordFile)) << '\n';
}

/// A watch has no end that such results could be written at, and its record holds the whole selection.
void MoDiffRunCommand::requireWatchable(MoDiffSelection::Choice const& choice) const {
    for (char const* const option : {"--list", "--print-config", "--resume", "--fail-fast", "--shard", "--timings",
                                     "--summary", "--junit", "--annotations"})
        if (isGiven(option))
            throw std::runtime_error("--watch goes on and on, so it does not go together with " +
                                     std::string(option));
    if (choice.shardCount > 1)
        throw std::runtime_error("--watch compares no shards, but the variables of a test runner ask for one");
}

/// Everything as it is now; what keeps a run from beginning keeps a watch waiting.
MoDiffWatch::Scene MoDiffRunCommand::look(std::string const& start, MoDiffSelection::Choice const& choice) const {
    fs::current_path(start);
    MoDiffWatch::Scene scene{m_configuration.read(), {}};
    MoDiffConfigurationOptions::enterWorkingDirectory(scene.configuration);
    scene.plan = MoDiffPlan::make(scene.configuration);
    MoDiffSelection::apply(choice, scene.plan);
    findNewFiles(scene.configuration, choice, scene.plan);
    guardFiles(scene.plan, scene.configuration);
    MoDiffExpectations const ruled(scene.configuration, scene.plan);
    if (scene.plan.chosen == 0)
        throw std::runtime_error("nothing to compare: " + whyNothing(scene.plan));
    return scene;
}

int MoDiffRunCommand::watch(MoDiffWatch::Scene scene, std::string const& start, MoDiffSelection::Choice const& choice,
                            MoDiffRunConsole& console) const {
    MoDiffPairStates states(scene.plan);
    MoDiffRunReport const report = perform(scene, choice, {}, console);
    showEnd(scene, report, start, console);
    if (report.signal)
        return report.exitStatus;
    MoDiffWatchConsole changes(std::cout, {progress(), MoDiffConsole::isColourful(), m_isVerbose});
    MoDiffWatch watch({[&] { return look(start, choice); },
                       [&](MoDiffWatch::Scene const& now, MoDiffWatch::IsStale const& isStale,
                           MoDiffRunEvents& events) { return perform(now, choice, isStale, events); }},
                      m_out, start, changes);
    return watch.run(std::move(scene), std::move(states), report);
}

MoDiffStatusLine::Mode MoDiffRunCommand::progress() const {
    return m_progress == kSuitableProgress ? MoDiffStatusLine::suitableMode() : MoDiffStatusLine::Mode(m_progress);
}

int MoDiffRunCommand::run() {
    MoDiffWatch::Scene scene{m_configuration.read(), {}};
    MoDiffSuiteConfiguration const& configuration = scene.configuration;
    if (m_isPrintingConfig && !m_isWatching) {
        for (std::string const& line : configuration.describe())
            std::cout << escaped(line) << '\n';
        return finishOutput(eExitPassed);
    }
    if (isGiven("--annotations") && !m_isListing)
        m_pause.emplace(std::cout);
    readPaths(configuration);
    m_configurationFile = configuration.file.empty() ? "" : absolute(configuration.file);
    MoDiffSelection::Choice const chosen = choice();
    if (m_isWatching)
        requireWatchable(chosen);
    std::string const start = fs::current_path().string();
    MoDiffConfigurationOptions::enterWorkingDirectory(configuration);
    MoDiffRunConsole console(std::cout, {progress(), MoDiffConsole::isColourful(),
                                         m_isVerbose ? MoDiffRunConsole::eAll : MoDiffRunConsole::eFailures});
    scene.plan = plan(configuration, chosen, console);
    if (!m_isListing)
        guardFiles(scene.plan, configuration);
    if (scene.plan.chosen == 0) {
        MoDiffTrouble().report("nothing to compare: " + whyNothing(scene.plan));
        return finishOutput(scene.plan.unreadable.empty() ? eExitNothingCompared : eExitTrouble);
    }
    if (m_isListing) {
        MoDiffExpectations const ruled(configuration, scene.plan); // rules that meet nothing are told here, too
        return list(scene.plan);
    }
    return compare(std::move(scene), start, chosen, console);
}

int MoDiffRunCommand::compare(MoDiffWatch::Scene scene, std::string const& start,
                              MoDiffSelection::Choice const& choice, MoDiffRunConsole& console) {
    if (m_isWatching) {
        MoDiffInterrupt const interrupt;
        return finishOutput(watch(std::move(scene), start, choice, console));
    }
    if (m_isResuming && !fs::exists(m_out + "/" + MoDiffRecord::kFileName))
        throw std::runtime_error("there is no record in " + m_out + " to be taken up");
    MoDiffRunReport report;
    {
        MoDiffInterrupt const interrupt;
        report = perform(scene, choice, {}, console);
    }
    showEnd(scene, report, start, console);
    if (!m_junit.empty())
        MoDiffJunitCommand::writeFile(m_junit, MoDiffRecordPairs(m_out), scene.configuration);
    m_pause.reset();
    if (isGiven("--annotations"))
        annotate(MoDiffRecordPairs(m_out), scene.configuration);
    showNext(report, console.isScriptInTrouble());
    return finishOutput(report.exitStatus);
}
