#include "MoDiffAcceptance.h"

#include "MoDiffContentHash.h"
#include "MoDiffInputFile.h"
#include "MoDiffMasterFile.h"
#include "MoDiffSha256.h"

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <pwd.h>
#include <stdexcept>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>

namespace {

using Journal = MoDiffAcceptanceJournal;

/// Why a request is refused; anything else that is raised is trouble.
struct Refusal : std::runtime_error {
    using std::runtime_error::runtime_error;
};
/// Nothing needs to be done.
struct Done {};

struct Sums {
    std::string xxh3; ///< as a record has it
    std::string sha256;
};

Sums sumsOf(std::string const& path) {
    MoDiffContentHash hash;
    MoDiffSha256 sum;
    MoDiffInputFile(path).readAll([&](char const* bytes, std::size_t count) {
        hash.add(bytes, count);
        sum.add(bytes, count);
    });
    return {hash.getDigits(), sum.getDigits()};
}

bool isThere(std::string const& path) {
    return access(path.c_str(), F_OK) == 0;
}

std::string userName() {
    passwd const* const entry = getpwuid(geteuid());
    return entry ? entry->pw_name : std::to_string(geteuid());
}

std::string timeNow() {
    std::time_t const now = std::time(nullptr);
    std::tm parts = {};
    char text[32];
    gmtime_r(&now, &parts);
    return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

MoDiffDescriptor lockDirectory(std::string const& directory) {
    MoDiffDescriptor lock(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    int result = lock ? flock(lock.get(), LOCK_EX) : -1;
    while (lock && result < 0 && errno == EINTR)
        result = flock(lock.get(), LOCK_EX);
    if (result < 0)
        throw std::system_error(errno, std::generic_category(), "cannot work on the record in " + directory);
    return lock;
}

} // namespace

MoDiffAcceptance::MoDiffAcceptance(std::string const& recordDirectory)
    : m_lock(lockDirectory(recordDirectory)), m_journal(recordDirectory) {
}

std::vector<MoDiffAcceptance::Answer> MoDiffAcceptance::finishInterrupted() {
    std::vector<Answer> answers;
    std::vector<Step> const steps = m_journal.read();
    answers.reserve(steps.size());
    for (Step const& step : steps)
        answers.push_back(carryOut(step, true));
    m_journal.remove();
    return answers;
}

std::vector<MoDiffAcceptance::Answer> MoDiffAcceptance::perform(std::vector<Request> const& requests,
                                                                Options const& options) {
    std::vector<Answer> answers;
    std::vector<Step> steps;
    std::vector<std::size_t> places; // of the steps' answers
    for (Request const& request : requests) {
        Step step;
        answers.push_back(prepare(request, options, step));
        if (answers.back().state != eAccepted)
            continue;
        places.push_back(answers.size() - 1);
        steps.push_back(step);
    }
    if (options.dryRun || steps.empty())
        return answers;
    m_journal.write(steps);
    for (std::size_t index = 0; index < steps.size(); ++index)
        answers[places[index]] = carryOut(steps[index], false);
    m_journal.remove();
    return answers;
}

MoDiffAcceptance::Answer MoDiffAcceptance::prepare(Request const& request, Options const& options, Step& step) {
    step.action = request.action;
    step.pair = request.pair.id;
    step.time = timeNow();
    step.user = userName();
    step.remark = options.remark;
    try {
        step.master = MoDiffMasterFile::resolve(request.pair.master);
        step.actual = MoDiffMasterFile::resolve(request.pair.actual);
        if (request.action != Journal::eRetire) {
            Sums const sums = sumsOf(step.actual);
            if (!request.pair.hash.actual.empty() && request.pair.hash.actual != sums.xxh3)
                throw Refusal("the actual file has changed since the run");
            step.newSum = sums.sha256;
        } else if (isThere(step.actual)) {
            throw Refusal("there is an actual file now");
        }
        if (request.action == Journal::eCreate && !isThere(step.master))
            MoDiffMasterFile::checkPlace(step.master);
        else
            checkReplaced(request, options, step);
        return {step.pair, eAccepted, ""};
    } catch (Done const&) {
        return {step.pair, eAlready, ""};
    } catch (Refusal const& refusal) {
        return {step.pair, eRefused, refusal.what()};
    } catch (MoDiffMasterFile::Protected const& refusal) {
        return {step.pair, eRefused, refusal.what()};
    } catch (std::exception const& error) {
        return {step.pair, eTrouble, error.what()};
    }
}

/// Checks a master that is to be replaced or to go.
void MoDiffAcceptance::checkReplaced(Request const& request, Options const& options, Step& step) {
    if (!isThere(step.master)) {
        if (request.action == Journal::eRetire)
            throw Done();
        throw Refusal("the master is gone");
    }
    Sums const sums = sumsOf(step.master);
    if (request.action != Journal::eRetire && sums.sha256 == step.newSum)
        throw Done();
    if (request.action == Journal::eCreate)
        throw Refusal("there is a master " + step.master + " with other contents");
    if (request.pair.hash.master.empty() && request.action == Journal::eReplace)
        throw Refusal("the record does not tell what the master was");
    if (!request.pair.hash.master.empty() && request.pair.hash.master != sums.xxh3)
        throw Refusal("the master has changed since the run");
    step.oldSum = sums.sha256;
    MoDiffMasterFile::checkReplaceable(step.master);
    if (!options.force && m_git.hasUncommittedChanges(step.master))
        throw Refusal("the master has changes that are not committed; commit them first, or use --force");
}

MoDiffAcceptance::Answer MoDiffAcceptance::carryOut(Step const& step, bool wasInterrupted) {
    try {
        MoDiffMasterFile::removeTemporary(step.master);
        std::string const now = isThere(step.master) ? MoDiffSha256::ofFile(step.master) : "";
        if (now != step.newSum) {
            if (now != step.oldSum)
                return {step.pair, eRefused, "the master has changed meanwhile"};
            if (step.action == Journal::eRetire)
                MoDiffMasterFile::remove(step.master);
            else if (!MoDiffMasterFile::replace(step.master, step.actual, step.newSum))
                return {step.pair, eRefused, "the actual file has changed meanwhile"};
        }
        m_journal.addAccepted(step, wasInterrupted);
        return {step.pair, eAccepted, ""};
    } catch (std::exception const& error) {
        return {step.pair, eTrouble, error.what()};
    }
}
