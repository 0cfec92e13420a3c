#include "MoDiffAcceptanceJournal.h"

#include "MoDiffDescriptor.h"
#include "MoDiffOutputFile.h"
#include "MoDiffRecordText.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace {

using Step = MoDiffAcceptanceJournal::Step;

char const* const kActions[] = {"replace", "create", "retire"}; // in the order of Action

std::array<std::pair<char const*, std::string Step::*>, 8> const kTexts = {{{"pair", &Step::pair},
                                                                            {"master", &Step::master},
                                                                            {"actual", &Step::actual},
                                                                            {"old_sha256", &Step::oldSum},
                                                                            {"new_sha256", &Step::newSum},
                                                                            {"time", &Step::time},
                                                                            {"user", &Step::user},
                                                                            {"remark", &Step::remark}}};

std::string lineOf(Step const& step) {
    std::string line = std::string("{\"action\":\"") + kActions[step.action] + '"';
    for (auto const& [key, text] : kTexts) {
        line.append(",\"").append(key).append("\":");
        MoDiffRecordText::appendQuoted(line, step.*text);
    }
    return line + "}\n";
}

Step stepOf(std::string const& line) {
    nlohmann::json const object = nlohmann::json::parse(line);
    Step step;
    std::string const action = object.at("action");
    while (action != kActions[step.action]) {
        if (step.action == MoDiffAcceptanceJournal::eRetire)
            throw std::runtime_error("there is no action " + action);
        step.action = static_cast<MoDiffAcceptanceJournal::Action>(step.action + 1);
    }
    for (auto const& [key, text] : kTexts)
        step.*text = MoDiffRecordText::bytesOf(object.at(key).get_ref<std::string const&>());
    return step;
}

[[noreturn]] void fail(std::string const& name) {
    throw std::system_error(errno, std::generic_category(), "cannot write " + name);
}

/// Whether a file has a line; a last line without its end doesn't count.
bool hasLine(std::string const& name, std::string_view wanted) {
    std::ifstream file(name, std::ios::binary);
    for (std::string line; std::getline(file, line) && !file.eof();)
        if (line == wanted)
            return true;
    return false;
}

/// How far a file has whole lines.
off_t lengthOfWholeLines(int descriptor, std::string const& name) {
    off_t end = lseek(descriptor, 0, SEEK_END);
    for (char last = 0; end > 0; --end) {
        if (pread(descriptor, &last, 1, end - 1) != 1)
            fail(name);
        if (last == '\n')
            break;
    }
    return end;
}

} // namespace

MoDiffAcceptanceJournal::MoDiffAcceptanceJournal(std::string const& directory)
    : m_journal(directory + "/accept.journal"), m_accepted(directory + "/accepted.jsonl") {
}

std::vector<Step> MoDiffAcceptanceJournal::read() const {
    std::vector<Step> steps;
    std::ifstream file(m_journal, std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        try {
            steps.push_back(stepOf(line));
        } catch (std::exception const& error) {
            throw std::runtime_error(m_journal + ": line " + std::to_string(steps.size() + 1) + ": " + error.what());
        }
    }
    return steps;
}

void MoDiffAcceptanceJournal::write(std::vector<Step> const& steps) const {
    std::string lines;
    for (Step const& step : steps)
        lines += lineOf(step);
    MoDiffOutputFile::replace(m_journal, lines, 0644);
}

void MoDiffAcceptanceJournal::remove() const {
    if (unlink(m_journal.c_str()) < 0 && errno != ENOENT)
        fail(m_journal);
}

void MoDiffAcceptanceJournal::addAccepted(Step const& step, bool mayBeThere) const {
    std::string const line = lineOf(step);
    if (mayBeThere && hasLine(m_accepted, std::string_view(line).substr(0, line.size() - 1)))
        return;
    MoDiffDescriptor const file(open(m_accepted.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    if (!file)
        fail(m_accepted);
    off_t const end = lengthOfWholeLines(file.get(), m_accepted); // a piece of a line is of a write that failed
    if (ftruncate(file.get(), end) < 0)
        fail(m_accepted);
    ssize_t const written = pwrite(file.get(), line.data(), line.size(), end);
    if (written != static_cast<ssize_t>(line.size()) || fsync(file.get()) < 0) {
        int const error = written < 0 ? errno : ENOSPC;
        static_cast<void>(ftruncate(file.get(), end) < 0);
        errno = error;
        fail(m_accepted);
    }
}
