#include "MoDiffSummaryFile.h"

#include "MoDiffOutputFile.h"
#include "MoDiffResultFailDiff.h"
#include "MoDiffResultFailFileMissing.h"
#include "MoDiffResultPass.h"
#include "MoDiffStreamLog.h"

#include <memory>
#include <sstream>
#include <sys/stat.h>

namespace {

unsigned const kNewFile = 0666;

/// What the library would have delivered for an outcome.
std::unique_ptr<MoDiffResult const> resultFor(MoDiffSummaryFile::Entry const& entry) {
    using Outcome = MoDiffOutcome;
    if (entry.outcome == Outcome::ePassed || entry.outcome == Outcome::eUnexpectedlyPassed)
        return std::make_unique<MoDiffResultPass>(entry.master, entry.actual);
    if (entry.outcome == Outcome::eMissing)
        return std::make_unique<MoDiffResultFailFileMissing>(entry.master, entry.actual, entry.actual);
    return std::make_unique<MoDiffResultFailDiff>(entry.master, entry.actual);
}

/// The permissions that the file has or a new one gets.
unsigned permissionsFor(std::string const& fileName) {
    struct stat status;
    if (stat(fileName.c_str(), &status) == 0)
        return status.st_mode & 07777;
    mode_t const mask = umask(0);
    umask(mask);
    return kNewFile & ~mask;
}

} // namespace

void MoDiffSummaryFile::write(std::string const& fileName,
                              std::function<void(std::function<void(Entry const&)> const&)> const& tellAll) {
    std::ostringstream text;
    MoDiffStreamLog log;
    log.open(&text);
    tellAll([&log](Entry const& entry) { resultFor(entry)->notifyListener(log); });
    log.close();
    MoDiffOutputFile::replace(fileName, text.str(), permissionsFor(fileName));
}
