#include "MoDiffMachineCheck.h"

#include "MoDiffFormatTable.h"
#include "MoDiffToolCheck.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdint>
#include <filesystem>
#include <langinfo.h>
#include <sys/resource.h>
#include <sys/statvfs.h>
#include <system_error>
#include <unicode/uclean.h>
#include <unicode/uversion.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::uint64_t constexpr kMebi = std::uint64_t{1} << 20;

/// A record takes about half a kilobyte a pair, results of scripts come on top.
std::uint64_t constexpr kLeastSpace = 64 * kMebi;

/// Pipes to all workers and a good reserve for what each opens.
std::uint64_t constexpr kDescriptors = 64;
std::uint64_t constexpr kDescriptorsEachJob = 8;
/// A worker, its server of scripts, a script and a program of poppler, with one to spare.
std::uint64_t constexpr kProcessesEachJob = 5;

/// Gathers the findings of one examination.
class Examination {
public:
    Examination(MoDiffSuiteConfiguration const& configuration, std::string const& outDirectory)
        : m_configuration(configuration), m_outDirectory(outDirectory) {}

    std::vector<MoDiffFinding> run() {
        checkTools();
        checkIcu();
        checkLocale();
        checkLimits();
        checkMemory();
        checkDisk();
        return std::move(m_findings);
    }

private:
    void checkTools();
    void checkIcu();
    void checkLocale();
    void checkLimits();
    void checkLimit(int resource, std::uint64_t least, std::string const& what, std::string const& remedy);
    void checkMemory();
    void checkDisk();

    void tell(MoDiffFinding::Severity severity, char const* area, std::string const& text,
              std::string const& remedy = "") {
        m_findings.push_back({severity, area, text, remedy});
    }

    MoDiffSuiteConfiguration const& m_configuration;
    std::string const& m_outDirectory;
    std::vector<MoDiffFinding> m_findings;
};

void Examination::checkTools() {
    bool isNeeded = false;
    for (std::string const& format : m_configuration.formats) {
        MoDiffTool const* const tool = MoDiffFormatTable::find(format)->tool;
        if (!tool)
            continue;
        isNeeded = true;
        std::vector<MoDiffToolCheck::Lack> const lacks = MoDiffToolCheck::findLacks(*tool);
        for (MoDiffToolCheck::Lack const& lack : lacks)
            tell(MoDiffFinding::eTrouble, "tools", format + ": " + lack.text, lack.remedy);
        if (lacks.empty())
            tell(MoDiffFinding::eFine, "tools", format + ": the script " + tool->script + " has all that it needs");
    }
    std::string const interpreter = isNeeded ? MoDiffToolCheck::describeInterpreter() : "";
    if (!interpreter.empty())
        tell(MoDiffFinding::eFine, "tools", "python is " + interpreter);
}

void Examination::checkIcu() {
    UErrorCode error = U_ZERO_ERROR;
    u_init(&error);
    if (U_FAILURE(error))
        tell(MoDiffFinding::eTrouble, "system", std::string("ICU cannot load its data: ") + u_errorName(error),
             "unset ICU_DATA, or reinstall the package of libicu");
    else
        tell(MoDiffFinding::eFine, "system", "ICU has version " U_ICU_VERSION);
}

void Examination::checkLocale() {
    locale_t const locale = newlocale(LC_ALL_MASK, "", nullptr);
    if (!locale) {
        tell(MoDiffFinding::eAdvice, "system", "the environment names a locale that is not installed",
             "set LC_ALL=C.UTF-8, or make the locale with dpkg-reconfigure locales");
        return;
    }
    std::string const encoding = nl_langinfo_l(CODESET, locale);
    freelocale(locale);
    if (encoding == "UTF-8")
        tell(MoDiffFinding::eFine, "system", "the locale's encoding is UTF-8");
    else
        tell(MoDiffFinding::eAdvice, "system",
             "the locale's encoding is " + encoding + ", so scripts escape what it lacks", "set LC_ALL=C.UTF-8");
}

void Examination::checkLimit(int resource, std::uint64_t least, std::string const& what, std::string const& remedy) {
    struct rlimit limit;
    if (getrlimit(static_cast<__rlimit_resource_t>(resource), &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return;
    if (limit.rlim_cur < least)
        tell(MoDiffFinding::eTrouble, "system",
             what + " are limited to " + std::to_string(limit.rlim_cur) + ", a run wants " + std::to_string(least),
             remedy);
}

void Examination::checkLimits() {
    std::uint64_t const jobs = m_configuration.jobs;
    checkLimit(RLIMIT_NOFILE, kDescriptors + jobs * kDescriptorsEachJob, "open files",
               "raise the limit with ulimit -n, or lower jobs");
    checkLimit(RLIMIT_NPROC, jobs * kProcessesEachJob, "processes", "raise the limit with ulimit -u, or lower jobs");
    checkLimit(RLIMIT_AS, m_configuration.memoryLimit, "bytes of memory for a process",
               "raise the limit with ulimit -v, or lower memory-limit");
    checkLimit(RLIMIT_FSIZE, kLeastSpace, "bytes of a file", "raise the limit with ulimit -f");
}

void Examination::checkMemory() {
    auto const pages = static_cast<std::uint64_t>(std::max(0L, sysconf(_SC_PHYS_PAGES)));
    auto const pageSize = static_cast<std::uint64_t>(std::max(0L, sysconf(_SC_PAGESIZE)));
    std::uint64_t const memory = pages * pageSize / kMebi;
    std::uint64_t const wanted = m_configuration.memoryLimit / kMebi * m_configuration.jobs;
    if (wanted > memory)
        tell(MoDiffFinding::eAdvice, "system",
             std::to_string(m_configuration.jobs) + " jobs may take " + std::to_string(wanted) +
                 " MiB together, of " + std::to_string(memory) + " MiB that the machine has",
             "lower jobs or memory-limit if there are large workbooks");
    else
        tell(MoDiffFinding::eFine, "system", "the machine has " + std::to_string(memory) + " MiB of memory");
}

void Examination::checkDisk() {
    std::error_code ignored;
    fs::path place = fs::absolute(m_outDirectory, ignored).lexically_normal();
    while (!fs::exists(place, ignored) && place != place.root_path())
        place = place.parent_path();
    if (!fs::is_directory(place, ignored)) {
        tell(MoDiffFinding::eTrouble, "system", place.string() + " is no directory, so nothing can be written there",
             "name another directory with --out");
        return;
    }
    struct statvfs status;
    bool const isWritable = access(place.c_str(), W_OK | X_OK) == 0 && statvfs(place.c_str(), &status) == 0;
    if (!isWritable) {
        tell(MoDiffFinding::eTrouble, "system",
             "nothing can be written below " + place.string() + ": " + std::generic_category().message(errno),
             "name another directory with --out");
        return;
    }
    std::uint64_t const space = std::uint64_t{status.f_bavail} * status.f_frsize;
    bool const isFull = space < kLeastSpace || (status.f_files > 0 && status.f_favail == 0);
    tell(isFull ? MoDiffFinding::eTrouble : MoDiffFinding::eFine, "system",
         std::to_string(space / kMebi) + " MiB are free below " + place.string() +
             (status.f_files > 0 && status.f_favail == 0 ? ", but no file may be added" : ""),
         isFull ? "make room, or name another directory with --out" : "");
}

} // namespace

std::vector<MoDiffFinding> MoDiffMachineCheck::examine(MoDiffSuiteConfiguration const& configuration,
                                                       std::string const& outDirectory) {
    return Examination(configuration, outDirectory).run();
}
