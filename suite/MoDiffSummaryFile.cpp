#include "MoDiffSummaryFile.h"

#include "MoDiffResultFailDiff.h"
#include "MoDiffResultFailFileMissing.h"
#include "MoDiffResultPass.h"
#include "MoDiffStreamLog.h"
#include "MoDiffWholeFile.h"

#include <memory>
#include <sstream>

namespace {

/// What the library would have delivered for an outcome.
std::unique_ptr<MoDiffResult const> resultFor(MoDiffSummaryFile::Entry const& entry) {
    using Outcome = MoDiffOutcome;
    if (entry.outcome == Outcome::ePassed || entry.outcome == Outcome::eUnexpectedlyPassed)
        return std::make_unique<MoDiffResultPass>(entry.master, entry.actual);
    if (entry.outcome == Outcome::eMissing)
        return std::make_unique<MoDiffResultFailFileMissing>(entry.master, entry.actual, entry.actual);
    return std::make_unique<MoDiffResultFailDiff>(entry.master, entry.actual);
}

} // namespace

void MoDiffSummaryFile::write(std::string const& fileName,
                              std::function<void(std::function<void(Entry const&)> const&)> const& tellAll) {
    std::ostringstream text;
    MoDiffStreamLog log;
    log.open(&text);
    tellAll([&log](Entry const& entry) { resultFor(entry)->notifyListener(log); });
    log.close();
    MoDiffWholeFile::write(fileName, text.str());
}
