// Single steps of the benchmarks as a process each, so that they can be measured beside other programs.

#include "MoBenchCatalogue.h"
#include "MoDiffFileEngine.h"
#include "MoDiffFloatComparison.h"
#include "MoDiffLib.h"
#include "MoDiffResultFail.h"
#include "MoFileHandle.h"

#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>

namespace {

using Arguments = std::vector<std::string>;

void writeFile(std::string const& name, std::string const& bytes) {
    std::ofstream file(name, std::ios::binary);
    if (!file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush())
        throw std::runtime_error("cannot write " + name);
}

bool hasPassed(MoDiffResult* result) {
    std::unique_ptr<MoDiffResult> const owner(result);
    return !dynamic_cast<MoDiffResultFail*>(result);
}

/// The most memory that the process has held so far, in bytes. getrusage() would count what held the process before
/// it became this program.
long peakMemory() {
    std::ifstream status("/proc/self/status");

    for (std::string word; status >> word;) {
        long kilobytes = 0;
        if (word == "VmHWM:" && status >> kilobytes)
            return kilobytes * 1024;
    }
    throw std::runtime_error("/proc/self/status doesn't tell the peak memory");
}

/// LIST SIZE REPORT EXPRESSIONS CLEANSED: writes a report, the list's expressions (NUL-separated) and what the
/// library makes of the report.
int prepareList(Arguments const& arguments) {
    MoBenchList const& list = MoBenchCatalogue::listOf(arguments.at(0));
    std::string const report = MoBenchCorpus::make(list.corpus, std::stoul(arguments.at(1)));
    MoBenchTask const task = MoBenchCatalogue::makeTask(list.patterns, report);
    std::string expressions;
    for (std::string const& expression : task.expressions)
        expressions.append(expression).append(1, '\0');
    writeFile(arguments.at(2), report);
    writeFile(arguments.at(3), expressions);
    writeFile(arguments.at(4), task.cleansedByLibrary());
    return 0;
}

/// KIND SIZE FILE: writes a text.
int makeCorpus(Arguments const& arguments) {
    writeFile(arguments.at(2),
              MoBenchCorpus::make(MoBenchCorpus::kindOf(arguments.at(0)), std::stoul(arguments.at(1))));
    return 0;
}

/// MASTER ACTUAL: status 1 when the bytes differ.
int compareBytes(Arguments const& arguments) {
    return hasPassed(MoDiffFileEngine::areFilesIdentical(arguments.at(0), arguments.at(1))) ? 0 : 1;
}

std::unique_ptr<char[]> slurp(std::string const& name) {
    MoFileHandle file(name, "r");
    if (!file)
        throw std::runtime_error("cannot read " + name);
    return std::unique_ptr<char[]>(MoDiffLib::slurpFile(file));
}

/// MASTER ACTUAL: status 1 when the numbers differ.
int compareNumbers(Arguments const& arguments) {
    auto const master = slurp(arguments.at(0));
    auto const actual = slurp(arguments.at(1));
    bool const passed = hasPassed(
        MoDiffFloatComparison().performStringDiff(arguments.at(0), arguments.at(1), master.get(), actual.get()));
    return passed ? 0 : 1;
}

/// LIST MASTER ACTUAL: compares as text and prints the memory that took, in bytes; status 1 when the texts differ.
int compareTexts(Arguments const& arguments) {
    MoDiffLib::Patterns patterns;
    for (unsigned const number : MoBenchCatalogue::listOf(arguments.at(0)).patterns)
        patterns.push_back(&MoCatalogue::rows()[number - 1].getter());
    long const before = peakMemory();
    bool const passed =
        hasPassed(MoDiffLib::textFileComparison(arguments.at(1), arguments.at(2), patterns, /*writeCleansed=*/0));
    std::cout << peakMemory() - before << '\n';
    return passed ? 0 : 1;
}

std::map<std::string, std::function<int(Arguments const&)>> const kSteps = {{"prepare", prepareList},
                                                                            {"corpus", makeCorpus},
                                                                            {"identical", compareBytes},
                                                                            {"numbers", compareNumbers},
                                                                            {"texts", compareTexts}};

} // namespace

int main(int count, char** arguments) {
    try {
        Arguments const all(arguments + 1, arguments + count);
        return kSteps.at(all.at(0))(Arguments(all.begin() + 1, all.end()));
    } catch (std::exception const& error) {
        std::cerr << "modiff_bench_tool: " << error.what() << '\n';
        return 2;
    }
}
