#include "MoDiffNumbers.h"

#include "MoDiffConsole.h"
#include "MoDiffFloatComparison.h"
#include "MoDiffInput.h"

#include <cstring>
#include <stdexcept>
#include <string_view>

namespace {

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
    MoDiffShownText::Excerpt excerpt() const {
        return MoDiffShownText::excerpt(std::string_view(m_text, static_cast<std::size_t>(m_end - m_text)),
                                        static_cast<std::size_t>(m_number - m_text));
    }

private:
    MoDiffFloatComparison m_comparison;
    char* m_text;
    char const* m_end;
    char const* m_number = nullptr;
    char const* m_numberEnd;
};

void showFirstDifference(MoDiffResult const& result, char* master, char* actual, MoDiffConsole& console) {
    Numbers masterNumbers(master);
    Numbers actualNumbers(actual);
    for (unsigned long pair = 1;; ++pair) {
        bool const inMaster = masterNumbers.next();
        bool const inActual = actualNumbers.next();
        if (inMaster && inActual && MoDiffFloatComparison().compare(masterNumbers.value(), actualNumbers.value()))
            continue;
        std::string const place = "at number " + std::to_string(pair) + ": " +
                                  (inMaster ? masterNumbers.shown() : "none") + " and " +
                                  (inActual ? actualNumbers.shown() : "none");
        console.showDifference(result, place, masterNumbers.excerpt(), actualNumbers.excerpt());
        return;
    }
}

} // namespace

bool MoDiffNumbers::compare(std::string const& masterName, std::string const& actualName, MoDiffConsole& console) {
    std::string master = readText(masterName);
    std::string actual = readText(actualName);
    std::unique_ptr<MoDiffResult const> const result(
        MoDiffFloatComparison().performStringDiff(masterName, actualName, master.data(), actual.data()));
    if (result->isPassed())
        result->notifyListener(console);
    else
        showFirstDifference(*result, master.data(), actual.data(), console);
    return result->isPassed();
}
