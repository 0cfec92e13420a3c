#include "MoBenchDenseTexts.h"

#include "MoBenchCatalogue.h"

#include <memory>
#include <random>

namespace {

std::size_t const kDenseSize = 1000000;

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

} // namespace

std::vector<MoBenchDenseTexts::Row> const& MoBenchDenseTexts::all() {
    static std::vector<Row> const table = {
        {"TVD", "number-starts", numberStarts}, {"XLS", "number-starts", numberStarts},
        {"HTML", "tag-starts", tagStarts},      {"NAO", "tag-starts", tagStarts},
        {"MHT", "soft-breaks", softBreaks},     {"other", "wide-expressions", wideExpressions}};
    return table;
}
