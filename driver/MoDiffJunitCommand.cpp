#include "MoDiffJunitCommand.h"

#include "MoDiffGuardedFiles.h"
#include "MoDiffJunit.h"
#include "MoDiffRecord.h"
#include "MoDiffWholeFile.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

char const kFooter[] =
    "Different, missing and unexpectedly passed pairs are failures, those without a verdict errors, expected ones "
    "are\n"
    "skipped. An incomplete record is an error among them. `modiff run --junit FILE` does the same behind a run.\n\n"
    "Exit status: 0 written, whatever the verdicts; 2 trouble.";

void guardInputs(std::string const& fileName, MoDiffOpenedRecord const& record) {
    MoDiffGuardedFiles files;
    for (MoDiffPairResult const& pair : record.pairs.pairs()) {
        files.protect(pair.master, "a master");
        files.protect(pair.actual, "an actual file");
    }
    files.protect(record.pairs.directory() + "/" + MoDiffRecord::kFileName, "the record");
    if (!record.configuration.file.empty())
        files.protect(record.configuration.file, "the configuration");
    files.protectScripts();
    files.claim(fileName, "the test cases");
}

} // namespace

MoDiffJunitCommand::MoDiffJunitCommand(CLI::App& parent)
    : MoDiffCommand(parent, "junit", "Write the pairs of the last run as test cases for CI servers", kFooter),
      m_record(options()) {
    options()
        .add_option("--out", m_out, "Write to this file; default: standard output")
        ->type_name("FILE")
        ->check(notEmpty());
}

int MoDiffJunitCommand::run() {
    std::string const fileName = m_out.empty() ? "" : fs::absolute(m_out).lexically_normal().string();
    MoDiffOpenedRecord const record = m_record.open(std::cerr);
    if (fileName.empty()) {
        MoDiffPairSetups setups(record.configuration);
        MoDiffJunit::write(record.pairs, setups, {}, std::cout);
    } else {
        guardInputs(fileName, record);
        writeFile(fileName, record.pairs, record.configuration);
    }
    return finishOutput(eExitPassed);
}

void MoDiffJunitCommand::writeFile(std::string const& fileName, MoDiffRecordPairs const& record,
                                   MoDiffSuiteConfiguration const& configuration) {
    MoDiffPairSetups setups(configuration);
    std::ostringstream xml;
    MoDiffJunit::write(record, setups, {}, xml);
    MoDiffWholeFile::write(fileName, xml.str());
}
