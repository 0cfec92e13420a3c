#include "MoBenchCatalogue.h"

#include <stdexcept>
#include <utility>

std::vector<MoBenchList> const& MoBenchCatalogue::lists() {
    static std::vector<MoBenchList> const table = {
        {"HTML", MoBenchCorpus::eHtml, {25, 23, 1, 2, 3, 4, 5, 6, 10, 14}},
        {"MHT", MoBenchCorpus::eMht, {26, 25, 23, 24, 1, 16, 7, 4, 5}},
        {"XHTML", MoBenchCorpus::eXhtml, {1, 2, 14}},
        {"DataXml", MoBenchCorpus::eDataXml, {15}},
        {"RawXml", MoBenchCorpus::eRawXml, {14}},
        {"NAO", MoBenchCorpus::eNao, {1, 2, 3, 4, 5, 6, 8, 11, 9, 14}},
        {"XLS", MoBenchCorpus::eXls, {19, 18, 27, 1, 7}},
        {"XLWA", MoBenchCorpus::eXlwa, {25, 19, 18, 27, 1, 7}},
        {"SingleXLS-markup", MoBenchCorpus::eXls, {1, 7, 27}},
        {"SingleXLS-data", MoBenchCorpus::eXls, {18, 19}},
        {"TVD", MoBenchCorpus::eTvd, {20, 19, 21, 13, 17}},
    };
    return table;
}

MoBenchList const& MoBenchCatalogue::listOf(std::string const& name) {
    for (MoBenchList const& list : lists()) {
        if (name == list.name)
            return list;
    }
    throw std::invalid_argument("no such list: " + name);
}

MoBenchTask MoBenchCatalogue::makeTask(std::vector<unsigned> const& numbers, std::string text) {
    MoBenchTask task = {std::move(text), {}, {}};
    for (unsigned const number : numbers) {
        MoCatalogue::Row const& pattern = MoCatalogue::rows()[number - 1];
        task.patterns.push_back(&pattern.getter());
        task.expressions.push_back(pattern.expression);
    }
    return task;
}
