// How long it takes to find masters, beside `find` on the same tree: both run in turns, and the best of each counts.
// The tree is cached, so that the processor's time is all there is; it also holds on a busy machine. Prints one line;
// the status is 1 when discovery takes more than twice the time of `find`.
//
//     modiff_bench_discovery [MASTERS]

#include "MoDiffConfigurationReader.h"
#include "MoDiffPlan.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

int constexpr kRounds = 15;
std::size_t constexpr kMastersEachFolder = 34;
double constexpr kMostTimesFind = 2;

/// A tree of empty masters below a fresh directory, which is the current one as long as the tree lives.
class Tree {
public:
    explicit Tree(std::size_t masters) {
        if (!mkdtemp(m_root.data()))
            throw std::runtime_error("cannot make " + m_root);
        fs::current_path(m_root);
        char const* const subDirectories[] = {"", "/en-us", "/de-de"};
        std::string folder;
        for (std::size_t number = 0; number < masters; ++number) {
            std::size_t const group = number / kMastersEachFolder;
            std::string const report = std::to_string(group / 3);
            if (number % kMastersEachFolder == 0) {
                folder = "reports/g" + std::to_string(group / 150) + "/r" + report + "/Masters" +
                         subDirectories[group % 3];
                fs::create_directories(folder);
            }
            std::ofstream(folder + "/Report_" + report + "_" + std::to_string(number) + ".html");
        }
    }
    ~Tree() {
        std::error_code ignored;
        fs::current_path("/", ignored);
        fs::remove_all(m_root, ignored);
    }
    Tree(Tree const&) = delete;
    Tree& operator=(Tree const&) = delete;

private:
    std::string m_root = (fs::temp_directory_path() / "modiff-discovery-XXXXXX").string();
};

/// The processor's time that a task takes, in this process or in those that it starts.
double secondsOf(__rusage_who who, std::function<void()> const& task) {
    auto const now = [who] {
        struct rusage usage;
        getrusage(who, &usage);
        auto const seconds = [](timeval const& time) {
            return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
        };
        return seconds(usage.ru_utime) + seconds(usage.ru_stime);
    };
    double const start = now();
    task();
    return now() - start;
}

/// Counts what `find` lists.
std::size_t findMasters() {
    FILE* const pipe = popen("find . -name '*.html'", "re");
    if (!pipe)
        throw std::runtime_error("cannot start find");
    std::size_t lines = 0;
    char block[1 << 16];
    for (std::size_t count; (count = std::fread(block, 1, sizeof block, pipe)) > 0;)
        lines += static_cast<std::size_t>(std::count(block, block + count, '\n'));
    pclose(pipe);
    return lines;
}

long peakMebibytes() {
    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

int compareTimes(std::size_t masters) {
    Tree const tree(masters);
    MoDiffSuiteConfiguration configuration = MoDiffConfigurationReader::read("");
    MoDiffConfigurationReader::resolve(configuration);
    double best = 1e9;
    double bestOfFind = 1e9;
    for (int round = 0; round < kRounds; ++round) {
        MoDiffPlan plan; // not taken apart as long as time counts
        best = std::min(best, secondsOf(RUSAGE_SELF, [&] { plan = MoDiffPlan::make(configuration); }));
        if (plan.pairs.size() != masters)
            throw std::runtime_error("the plan holds " + std::to_string(plan.pairs.size()) + " masters");
        std::size_t found = 0;
        bestOfFind = std::min(bestOfFind, secondsOf(RUSAGE_CHILDREN, [&] { found = findMasters(); }));
        if (found != masters)
            throw std::runtime_error("find found " + std::to_string(found) + " masters");
    }
    std::cout << masters << " masters: plan " << best << " s, find " << bestOfFind << " s, ratio "
              << best / bestOfFind << ", peak memory " << peakMebibytes() << " MiB\n";
    return best > kMostTimesFind * bestOfFind ? 1 : 0;
}

} // namespace

int main(int count, char** arguments) {
    try {
        return compareTimes(count > 1 ? std::stoul(arguments[1]) : 100'000);
    } catch (std::exception const& error) {
        std::cerr << "modiff_bench_discovery: " << error.what() << '\n';
        return 2;
    }
}
