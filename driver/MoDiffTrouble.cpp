#include "MoDiffTrouble.h"

#include "KLTThrowable.h"
#include "MoDiffShownText.h"

#include <filesystem>
#include <iostream>

using MoDiffShownText::escaped;

namespace {

/// What an error tells; in this program's words where those of the C++ library would show.
std::string wordsOf(std::exception const& error) {
    auto const* const failure = dynamic_cast<std::filesystem::filesystem_error const*>(&error);
    return failure ? failure->path1().string() + ": " + failure->code().message() : error.what();
}

} // namespace

void MoDiffTrouble::report(std::string const& text) {
    ++m_count;
    std::cout.flush();
    std::cerr << "modiff: " << escaped(text) << std::endl;
}

void MoDiffTrouble::report(std::string const& subject, std::exception const& error) {
    report(subject + ": " + wordsOf(error));
    showWay(error);
}

void MoDiffTrouble::report(std::exception const& error) {
    report(wordsOf(error));
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
