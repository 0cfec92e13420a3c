// Cleansing by the library, the whole-text way and RE2: each engine's list on ordinary reports, and texts in which a
// match could begin at every character. The names are group/list/text/way.

#include "MoBenchCatalogue.h"

#include <memory>
#include <random>

namespace {

struct Size {
    char const* name;
    std::size_t bytes;
};
Size const kSizes[] = {{"100k", 100000}, {"8M", 8000000}, {"64M", 64000000}};
std::size_t const kDenseSize = 1000000;

struct Way {
    char const* name;
    void (MoBenchTask::*run)(benchmark::State&) const;
};
Way const kWays[] = {
    {"library", &MoBenchTask::runLibrary}, {"wholetext", &MoBenchTask::runWholeText}, {"re2", &MoBenchTask::runRe2}};

/// Pieces by chance, in lines of a few of them.
std::string shuffle(std::vector<std::string> const& pieces, unsigned piecesPerLine) {
    std::mt19937 random(5);
    std::string text;
    for (unsigned count = 1; text.size() < kDenseSize; ++count)
        text += count % piecesPerLine == 0 ? "\n" : pieces[random() % pieces.size()];
    return text;
}

std::vector<std::string> characters(std::string const& all) {
    std::vector<std::string> pieces;
    for (char const character : all)
        pieces.emplace_back(1, character);
    return pieces;
}

MoBenchTask onText(char const* list, std::string text) {
    return MoBenchCatalogue::makeTask(MoBenchCatalogue::listOf(list).patterns, std::move(text));
}

MoBenchTask numberStarts(char const* list) {
    return onText(list, shuffle(characters("0123456789.-+eE\""), 60));
}

MoBenchTask tagStarts(char const* list) {
    return onText(list, shuffle({"<script", "</script>", "<area", ">", " id=\"PRMT_", "name=\"chart", "onload=\"",
                                 " coords=\"", "\"", "<meta name=\"Copyright\"", " ctx=\"", "<img src="},
                                8));
}

MoBenchTask softBreaks(char const* list) {
    return onText(list, shuffle({"n", "a", "m", "e", "=3D", "\"", "chart", "=\n", "name", "=\n=\n"}, 30));
}

/// Expressions that can begin with nearly any character.
MoBenchTask wideExpressions(char const*) {
    static std::vector<std::string> const expressions = {R"([a-z]+[0-9])", R"(\w+@)", R"([^<]q)", R"(.{3}zz)"};
    static std::vector<std::unique_ptr<MoDiffNormalizationPattern>> patterns;
    MoBenchTask task = {MoBenchCorpus::make(MoBenchCorpus::eHtml, kDenseSize), {}, expressions};
    for (std::string const& expression : expressions) {
        patterns.push_back(std::make_unique<MoDiffNormalizationPattern>(expression.c_str()));
        task.patterns.push_back(patterns.back().get());
    }
    return task;
}

struct DenseText {
    char const* list;
    char const* name;
    MoBenchTask (*make)(char const* list);
};
DenseText const kDenseTexts[] = {
    {"TVD", "number-starts", numberStarts}, {"XLS", "number-starts", numberStarts},
    {"HTML", "tag-starts", tagStarts},      {"NAO", "tag-starts", tagStarts},
    {"MHT", "soft-breaks", softBreaks},     {"other", "wide-expressions", wideExpressions}};

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
    for (DenseText const& dense : kDenseTexts)
        registerWays(std::string("dense/") + dense.list + '/' + dense.name,
                     [&dense] { return dense.make(dense.list); });
    return true;
}

bool const isRegistered = registerAll();

} // namespace
