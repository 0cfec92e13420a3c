// modiff_bench_compare OLD.so NEW.so [PART-OF-NAME]: cleanses with two builds of the library by turns, in one
// process, so that what else the machine does meets both. A figure is the least CPU time of all rounds. The bytes are
// compared, too. Status 1 when the new one needs over 5 % more for a text, or deletes something else.

#include "MoBenchCatalogue.h"
#include "MoBenchDenseTexts.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <dlfcn.h>
#include <functional>
#include <iomanip>
#include <iostream>
#include <list>
#include <memory>
#include <stdexcept>

namespace {

using Patterns = std::list<MoDiffNormalizationPattern const*>;

double const kMostMore = 0.05;
double const kSecondsPerText = 1;

double cpuSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// A build of the library in a namespace of its own, so that it finds its own functions.
class Build {
public:
    explicit Build(char const* file) : m_handle(dlmopen(LM_ID_NEWLM, file, RTLD_NOW)) {
        if (!m_handle)
            throw std::runtime_error(dlerror());
        m_construct = find<void(void*, char const*)>("_ZN26MoDiffNormalizationPatternC1EPKc");
        m_cleanse = find<void(char*, char*, Patterns const&)>(
            "_ZN9MoDiffLib7cleanseEPcS0_RKNSt7__cxx114listIPK26MoDiffNormalizationPatternSaIS5_EEE");
    }

    /// The patterns live as long as the process.
    Patterns compile(std::vector<std::string> const& expressions) const {
        Patterns patterns;
        for (std::string const& expression : expressions) {
            auto* const pattern = new std::array<std::max_align_t, 8>;
            m_construct(pattern, expression.c_str());
            patterns.push_back(reinterpret_cast<MoDiffNormalizationPattern const*>(pattern));
        }
        return patterns;
    }

    void cleanse(std::string& text, Patterns const& patterns) const {
        char nothing[] = "";
        m_cleanse(text.data(), nothing, patterns);
    }

private:
    template<typename Function>
    Function* find(char const* name) const {
        void* const address = dlsym(m_handle, name);
        if (!address)
            throw std::runtime_error(dlerror());
        return reinterpret_cast<Function*>(address);
    }

    void* m_handle;
    void (*m_construct)(void*, char const*);
    void (*m_cleanse)(char*, char*, Patterns const&);
};

double lowerQuartile(std::vector<double>& times) {
    auto const quartile = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 4);
    std::nth_element(times.begin(), quartile, times.end());
    return *quartile;
}

/// Returns whether the new build is as good as the old one.
bool compare(std::array<Build, 2> const& builds, std::string const& name, MoBenchTask const& task) {
    std::array<Patterns, 2> const patterns = {builds[0].compile(task.expressions),
                                              builds[1].compile(task.expressions)};
    std::array<std::vector<double>, 2> times;
    std::array<std::string, 2> work;
    double const end = cpuSeconds() + kSecondsPerText;
    for (std::size_t round = 0; round < 6 || cpuSeconds() < end; ++round) {
        std::size_t const side = (round + round / 2) % 2; // 0 1 1 0
        work[side] = task.text;
        double const start = cpuSeconds();
        builds[side].cleanse(work[side], patterns[side]);
        times[side].push_back(cpuSeconds() - start);
    }
    bool const isSame = std::string(work[0].c_str()) == work[1].c_str();
    double const old = lowerQuartile(times[0]);
    double const more = lowerQuartile(times[1]) / old - 1;
    std::cout << std::left << std::setw(32) << name << std::right << std::fixed << std::setprecision(4)
              << std::setw(10) << 1e3 * old << " ms " << std::setw(10) << 1e3 * old * (1 + more) << " ms "
              << std::setprecision(1) << std::showpos << std::setw(7) << 100 * more << " %" << std::noshowpos
              << (isSame ? "" : "  OTHER BYTES") << std::endl;
    return isSame && more <= kMostMore;
}

bool compareAll(std::array<Build, 2> const& builds, std::string const& part) {
    bool isGood = true;
    auto const run = [&](std::string const& name, std::function<MoBenchTask()> const& make) {
        if (name.find(part) != std::string::npos)
            isGood = compare(builds, name, make()) && isGood;
    };
    for (MoBenchList const& list : MoBenchCatalogue::lists()) {
        for (std::size_t const size : {100000U, 4000000U})
            run(list.name + ('/' + std::to_string(size)), [&list, size] {
                return MoBenchCatalogue::makeTask(list.patterns, MoBenchCorpus::make(list.corpus, size));
            });
    }
    for (MoBenchDenseTexts::Row const& dense : MoBenchDenseTexts::all())
        run(dense.list + (std::string("/") + dense.name), [&dense] { return dense.make(dense.list); });
    return isGood;
}

} // namespace

int main(int count, char** arguments) {
    try {
        std::vector<std::string> const all(arguments + 1, arguments + count);
        std::array<Build, 2> const builds = {Build(all.at(0).c_str()), Build(all.at(1).c_str())};
        return compareAll(builds, all.size() > 2 ? all[2] : "") ? 0 : 1;
    } catch (std::exception const& error) {
        std::cerr << "modiff_bench_compare: " << error.what() << '\n';
        return 2;
    }
}
