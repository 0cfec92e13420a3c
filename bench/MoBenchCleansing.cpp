// Cleansing by the library, the whole-text way and RE2: each engine's list on ordinary reports, and texts in which a
// match could begin at every character. The names are group/list/text/way.

#include "MoBenchCatalogue.h"
#include "MoBenchDenseTexts.h"

namespace {

struct Size {
    char const* name;
    std::size_t bytes;
};
Size const kSizes[] = {{"100k", 100000}, {"8M", 8000000}, {"64M", 64000000}};

struct Way {
    char const* name;
    void (MoBenchTask::*run)(benchmark::State&) const;
};
Way const kWays[] = {
    {"library", &MoBenchTask::runLibrary}, {"wholetext", &MoBenchTask::runWholeText}, {"re2", &MoBenchTask::runRe2}};

/// Registers the ways for one task, which is made when it is first asked for and kept until another one is.
template<typename Make>
void registerWays(std::string const& name, Make make) {
    static std::string lastName;
    static MoBenchTask lastTask;
    for (Way const& way : kWays) {
        auto const body = [name, make, &way](benchmark::State& state) {
            if (lastName != name)
                lastTask = make();
            lastName = name;
            (lastTask.*way.run)(state);
        };
        benchmark::RegisterBenchmark((name + '/' + way.name).c_str(), body)->Unit(benchmark::kMillisecond);
    }
}

bool registerAll() {
    for (MoBenchList const& list : MoBenchCatalogue::lists()) {
        for (Size const& size : kSizes)
            registerWays(std::string("list/") + list.name + '/' + size.name, [&list, &size] {
                return MoBenchCatalogue::makeTask(list.patterns, MoBenchCorpus::make(list.corpus, size.bytes));
            });
    }
    for (MoBenchDenseTexts::Row const& dense : MoBenchDenseTexts::all())
        registerWays(std::string("dense/") + dense.list + '/' + dense.name,
                     [&dense] { return dense.make(dense.list); });
    return true;
}

bool const isRegistered = registerAll();

} // namespace
