#include "MoDiffReportCommand.h"

#include "MoDiffGroupSearch.h"
#include "MoDiffInterrupt.h"
#include "MoDiffReportPages.h"
#include "MoDiffShownText.h"
#include "MoDiffStatusLine.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>

namespace {

char const kFooter[] =
    "The pages open from disk and need nothing else: DIR/index.html with the verdict, groups of pairs that differ\n"
    "alike and every pair, DIR/pairs with a page for each pair that did not pass. A report in DIR is replaced; "
    "other\n"
    "files there stay.\n\n"
    "Exit status: 0 written; 2 trouble.";

} // namespace

MoDiffReportCommand::MoDiffReportCommand(CLI::App& parent)
    : MoDiffCommand(parent, "report", "Write the last run as pages for a browser", kFooter), m_record(options()) {
    options().add_option("--out", m_out, "Directory of the pages")->type_name("DIR")->check(notEmpty())->required();
}

int MoDiffReportCommand::run() {
    std::string const directory = std::filesystem::absolute(m_out).lexically_normal().string();
    std::string const recordWords = m_record.shellWords();
    MoDiffOpenedRecord const record = m_record.open();
    MoDiffReportPages::refuseInside(record.pairs, directory);
    MoDiffPairSetups setups(record.configuration);
    MoDiffGroupSearch const search(record.pairs, setups);
    MoDiffDecisions const decisions(record.pairs.directory());
    MoDiffPageList const list({record.pairs, search.groups(), search.sharedKinds(), decisions, recordWords});
    MoDiffInterrupt const interrupt;
    bool isWhole = false;
    {
        MoDiffStatusLine line(std::cout, MoDiffStatusLine::suitableMode());
        isWhole = MoDiffReportPages::write(
            list, setups, directory, [&line](std::size_t done, std::size_t all, std::string const& id) {
                line.show("writing " + std::to_string(done) + "/" + std::to_string(all) + "  ", id);
                return MoDiffInterrupt::getSignal() == 0;
            });
    }
    if (!isWhole) {
        std::cout << "interrupted; the index page is still that of an earlier report, if there was one\n";
        return finishOutput(128 + MoDiffInterrupt::getSignal());
    }
    std::cout << "pages      " << MoDiffShownText::escaped(directory) << "/index.html, " << list.items().size()
              << (list.items().size() == 1 ? " page of a pair\n" : " pages of pairs\n");
    return finishOutput(eExitPassed);
}
