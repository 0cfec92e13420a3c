#include "MoDiffNumbers.h"

#include "MoDiffConsole.h"
#include "MoDiffFloatComparison.h"
#include "MoDiffInput.h"
#include "MoDiffResult.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace {

std::ptrdiff_t const kSurroundings = 256; // more than an excerpt shows

std::string readText(std::string const& name) {
    std::string text = MoDiffInput::readWhole(name);
    if (text.find('\0') != std::string::npos)
        throw std::runtime_error(name + " holds a NUL byte, so it is not a text");
    return text;
}

/// Walks through the numbers of a text.
class Numbers {
public:
    explicit Numbers(char* text) : m_text(text), m_end(text + std::strlen(text)), m_numberEnd(text) {}

    /// Goes on to the next number; false when there is none.
    bool next() {
        char const* end = nullptr;
        bool const found = m_comparison.findNumber(m_numberEnd, m_end, m_number, end);
        if (found)
            m_numberEnd = end;
        else
            m_number = m_numberEnd = m_end;
        return found;
    }

    double value() {
        return m_comparison.extractNumber(m_text + (m_number - m_text), m_text + (m_numberEnd - m_text));
    }
    /// The number as it stands, or the beginning of one that is very long.
    std::string shown() const {
        std::string const number(m_number, m_numberEnd);
        return number.size() <= 40 ? number : number.substr(0, 40) + "...";
    }
    std::string before() const {
        return {m_number - std::min<std::ptrdiff_t>(kSurroundings, m_number - m_text), m_number};
    }
    std::string after() const {
        return {m_number, m_number + std::min<std::ptrdiff_t>(kSurroundings, m_end - m_number)};
    }

private:
    MoDiffFloatComparison m_comparison;
    char* m_text;
    char const* m_end;
    char const* m_number = nullptr;
    char const* m_numberEnd;
};

/// Where the texts part: at the first pair of numbers that disagree.
void findFirstDifference(char* master, char* actual, MoDiffPairResult& result) {
    Numbers masterNumbers(master);
    Numbers actualNumbers(actual);
    bool inMaster = false;
    bool inActual = false;
    unsigned long pair = 0;
    do {
        inMaster = masterNumbers.next();
        inActual = actualNumbers.next();
        ++pair;
    } while (inMaster && inActual && MoDiffFloatComparison().compare(masterNumbers.value(), actualNumbers.value()));
    result.detail = "at number " + std::to_string(pair) + ": " + (inMaster ? masterNumbers.shown() : "none") +
                    " and " + (inActual ? actualNumbers.shown() : "none");
    result.difference.emplace();
    result.difference->before = {masterNumbers.before(), actualNumbers.before()};
    result.difference->after = {masterNumbers.after(), actualNumbers.after()};
}

} // namespace

bool MoDiffNumbers::compare(std::string const& masterName, std::string const& actualName, MoDiffConsole& console) {
    std::string master = readText(masterName);
    std::string actual = readText(actualName);
    std::unique_ptr<MoDiffResult const> const verdict(
        MoDiffFloatComparison().performStringDiff(masterName, actualName, master.data(), actual.data()));
    MoDiffPairResult result;
    result.master = masterName;
    result.actual = actualName;
    result.outcome = verdict->isPassed() ? MoDiffOutcome::ePassed : MoDiffOutcome::eDifferent;
    if (!verdict->isPassed())
        findFirstDifference(master.data(), actual.data(), result);
    console.show(result);
    return verdict->isPassed();
}
