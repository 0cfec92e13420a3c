#include "MoDiffTrouble.h"

#include "KLTThrowable.h"
#include "MoDiffShownText.h"

#include <iostream>

using MoDiffShownText::escaped;

void MoDiffTrouble::report(std::string const& text) {
    ++m_count;
    std::cout.flush();
    std::cerr << "modiff: " << escaped(text) << std::endl;
}

void MoDiffTrouble::report(std::string const& subject, std::exception const& error) {
    report(subject + ": " + error.what());
    showWay(error);
}

void MoDiffTrouble::report(std::exception const& error) {
    report(std::string(error.what()));
    showWay(error);
}

void MoDiffTrouble::showWay(std::exception const& error) {
    auto const* const throwable = dynamic_cast<KLTThrowable const*>(&error);
    if (!throwable)
        return;
    for (KLTBackTraceEntry const& entry : throwable->getBackTrace())
        std::cerr << "        " << escaped(entry.tag) << " in " << escaped(entry.location.getFileName()) << ", line "
                  << entry.location.getLine() << (entry.text.empty() ? "" : ": ") << escaped(entry.text) << std::endl;
}
