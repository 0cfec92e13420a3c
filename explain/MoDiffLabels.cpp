#include "MoDiffLabels.h"

#include "MoDiffFloatComparison.h"
#include "MoDiffMarkupSplitter.h"
#include "MoDiffTextEncoding.h"
#include "MoUtf8.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <unicode/uchar.h>
#include <xxhash.h>

namespace {

using Sides = MoDiffBothSides<MoDiffSourceText>;
using Changes = std::vector<MoDiffPlacedChange>;
using Texts = MoDiffBothSides<std::string_view>;

bool isBlank(char byte) {
    return byte == ' ' || byte == '\n' || byte == '\r' || byte == '\t' || byte == '\f' || byte == '\v';
}

std::size_t skipBlanks(std::string_view text, std::size_t at) {
    while (at < text.size() && isBlank(text[at]))
        ++at;
    return at;
}

bool differInBlanksOnly(Texts const& texts) {
    std::size_t master = skipBlanks(texts.master, 0);
    std::size_t actual = skipBlanks(texts.actual, 0);
    while (master < texts.master.size() && actual < texts.actual.size()) {
        if (texts.master[master] != texts.actual[actual])
            return false;
        master = skipBlanks(texts.master, master + 1);
        actual = skipBlanks(texts.actual, actual + 1);
    }
    return master == texts.master.size() && actual == texts.actual.size();
}

/// The next character without its case; its bytes are taken from the text.
UChar32 nextFolded(std::string_view& text) {
    auto const* const begin = reinterpret_cast<unsigned char const*>(text.data());
    MoUtf8::Character const character = MoUtf8::decode(begin, begin + text.size());
    text.remove_prefix(character.length);
    return MoUtf8::isInvalidByte(character.code)
               ? static_cast<UChar32>(character.code)
               : u_foldCase(static_cast<UChar32>(character.code), U_FOLD_CASE_DEFAULT);
}

bool differInCaseOnly(Texts texts) {
    while (!texts.master.empty() && !texts.actual.empty())
        if (nextFolded(texts.master) != nextFolded(texts.actual))
            return false;
    return texts.master.empty() && texts.actual.empty();
}

/// A number as people write it: the last of its points and commas parts the decimals, unless it stands several times
/// or, a comma, before three digits.
double valueOf(std::string_view number) {
    std::string digits;
    std::size_t const last = number.find_last_of(".,");
    bool const isDecimal =
        last != std::string_view::npos && std::count(number.begin(), number.end(), number[last]) == 1 &&
        !(number[last] == ',' && number.find('.') == std::string_view::npos &&
          number.find_first_not_of("0123456789", last + 1) == std::string_view::npos && number.size() - last == 4);
    for (std::size_t at = 0; at < number.size(); ++at) {
        if (at == last && isDecimal)
            digits += '.';
        else if (number[at] != '.' && number[at] != ',' && number[at] != '\'')
            digits += number[at];
    }
    char* const begin = digits.data();
    return MoDiffFloatComparison().extractNumber(begin, begin + digits.size());
}

/// Whether two numbers are the same but for the characters that part their digits.
bool differInSeparatorsOnly(std::string_view master, std::string_view actual) {
    auto const isSeparator = [](char byte) { return byte == '.' || byte == ',' || byte == '\''; };
    return std::equal(master.begin(), master.end(), actual.begin(), actual.end(), [&](char left, char right) {
        return left == right || (isSeparator(left) && isSeparator(right));
    });
}

std::string readingOf(std::string_view number) {
    char value[32];
    std::snprintf(value, sizeof value, "%.15g", valueOf(number));
    return "`" + std::string(number) + "` read as " + value;
}

struct NumberDifference {
    double largest = 0; ///< relative to the larger magnitude of both
    bool isTolerated = true;
    std::string readings; ///< of the first two that differ by their separators alone, which could be read otherwise

    void add(std::string_view masterWords, std::string_view actualWords) {
        double const master = valueOf(masterWords);
        double const actual = valueOf(actualWords);
        double const scale = std::max(std::fabs(master), std::fabs(actual));
        if (scale > 0 && std::isfinite(scale))
            largest = std::max(largest, std::fabs(master - actual) / scale);
        bool const isSame = MoDiffFloatComparison().compare(master, actual);
        isTolerated = isTolerated && isSame;
        if (!isSame && readings.empty() && differInSeparatorsOnly(masterWords, actualWords))
            readings = "; separators differ: " + readingOf(masterWords) + ", " + readingOf(actualWords);
    }
};

/// None when something else than numbers differs.
std::optional<NumberDifference> numberDifference(Texts const& texts) {
    MoDiffMarkupSplitter const splitter;
    NumberDifference difference;
    std::size_t master = 0;
    std::size_t actual = 0;
    while (master < texts.master.size() && actual < texts.actual.size()) {
        std::size_t const masterEnd = splitter.unitEnd(texts.master, master, MoDiffGrain::eWords);
        std::size_t const actualEnd = splitter.unitEnd(texts.actual, actual, MoDiffGrain::eWords);
        std::string_view const inMaster = texts.master.substr(master, masterEnd - master);
        std::string_view const inActual = texts.actual.substr(actual, actualEnd - actual);
        if (inMaster != inActual) {
            if (MoDiffMarkupSplitter::numberEnd(texts.master, master) != masterEnd ||
                MoDiffMarkupSplitter::numberEnd(texts.actual, actual) != actualEnd)
                return std::nullopt;
            difference.add(inMaster, inActual);
        }
        master = masterEnd;
        actual = actualEnd;
    }
    if (master != texts.master.size() || actual != texts.actual.size())
        return std::nullopt;
    return difference;
}

std::string wordsFor(NumberDifference const& difference) {
    char share[32];
    std::snprintf(share, sizeof share, "%.3g", difference.largest * 100);
    return std::string("only numbers differ, by up to ") + share +
           (difference.isTolerated ? " %, within the numeric tolerance" : " %, beyond the numeric tolerance") +
           difference.readings;
}

/// What the lines of a file show of its text, in any order: how many show something, and the sum of their hashes.
class LineSum {
public:
    explicit LineSum(MoDiffSourceText const& source) {
        std::string_view const file = source.file();
        std::size_t at = 0;
        XXH3_128bits_reset(&m_state);
        for (MoDiffSourceText::Stretch const& stretch : source.hidden()) {
            addShown(file.substr(at, stretch.begin - at));
            at = stretch.end();
            if (file.substr(stretch.begin, stretch.length).find('\n') != std::string_view::npos)
                endLine();
        }
        addShown(file.substr(at));
        endLine();
    }

    std::size_t lines() const { return m_lines; }
    bool operator==(LineSum const& other) const {
        return m_lines == other.m_lines && m_low == other.m_low && m_high == other.m_high;
    }

private:
    void addShown(std::string_view bytes) {
        while (!bytes.empty()) {
            std::size_t const end = MoDiffLines::end(bytes, 0);
            XXH3_128bits_update(&m_state, bytes.data(), end);
            m_isEmpty = false;
            if (bytes[end - 1] == '\n')
                endLine();
            bytes.remove_prefix(end);
        }
    }
    void endLine() {
        if (m_isEmpty)
            return;
        XXH128_hash_t const hash = XXH3_128bits_digest(&m_state);
        m_low += hash.low64;
        m_high += hash.high64;
        ++m_lines;
        XXH3_128bits_reset(&m_state);
        m_isEmpty = true;
    }

    XXH3_state_t m_state;
    bool m_isEmpty = true;
    std::size_t m_lines = 0;
    std::uint64_t m_low = 0;
    std::uint64_t m_high = 0;
};

bool differInOrderOnly(Sides const& sources) {
    if (sources.master.textSize() != sources.actual.textSize())
        return false;
    LineSum const master(sources.master);
    return master.lines() > 1 && master == LineSum(sources.actual);
}

void addEncoding(Texts const& texts, std::vector<MoDiffLabel>& labels) {
    std::string const master = MoDiffTextEncoding::nameOf(texts.master);
    std::string const actual = MoDiffTextEncoding::nameOf(texts.actual);
    if (master != actual && MoDiffTextEncoding::haveSameCharacters(texts.master, texts.actual))
        labels.push_back({MoDiffLabel::eEncoding, "only the encoding differs: " + master + " became " + actual});
}

std::string sizeOf(MoDiffSourceText const& source, MoDiffRange range, MoDiffRange inFile) {
    std::size_t const lines = MoDiffLines::count(source.file(), inFile);
    return lines > 1 ? std::to_string(lines) + " lines"
                     : std::to_string(range.size()) + (range.size() == 1 ? " byte" : " bytes");
}

/// A text that breaks off may do so inside a word, which then counts as changed; so the texts decide.
void addBeginning(Texts const& texts, std::vector<MoDiffLabel>& labels) {
    bool const isMore = texts.master.size() < texts.actual.size();
    std::string_view const whole = isMore ? texts.actual : texts.master;
    std::string_view const part = isMore ? texts.master : texts.actual;
    if (whole.substr(0, part.size()) == part)
        labels.push_back({MoDiffLabel::eBeginning, std::string("the ") + (isMore ? "master" : "actual") +
                                                       " is the beginning of the " + (isMore ? "actual" : "master")});
}

/// One change that only adds or only takes away.
void addBlock(Sides const& sources, Changes const& changes, std::vector<MoDiffLabel>& labels) {
    if (changes.size() != 1)
        return;
    MoDiffPlacedChange const& placed = changes.front();
    auto const& ranges = placed.change.ranges;
    if (ranges.master.isEmpty() == ranges.actual.isEmpty())
        return;
    bool const isMore = ranges.master.isEmpty();
    std::string const size = isMore ? sizeOf(sources.actual, ranges.actual, placed.file.actual)
                                    : sizeOf(sources.master, ranges.master, placed.file.master);
    labels.push_back(isMore ? MoDiffLabel{MoDiffLabel::eMore, size + " more"}
                            : MoDiffLabel{MoDiffLabel::eLess, size + " less"});
}

} // namespace

std::vector<MoDiffLabel> MoDiffLabels::ofTexts(Texts const& texts) {
    std::vector<MoDiffLabel> labels;
    std::optional<NumberDifference> const numbers = numberDifference(texts);
    if (numbers)
        labels.push_back({MoDiffLabel::eNumbers, wordsFor(*numbers)});
    if (differInBlanksOnly(texts))
        labels.push_back({MoDiffLabel::eBlanks, "only blanks and line ends differ"});
    if (differInCaseOnly(texts))
        labels.push_back({MoDiffLabel::eCase, "only upper and lower case differ"});
    addEncoding(texts, labels);
    if (!numbers)
        addBeginning(texts, labels);
    return labels;
}

void MoDiffLabels::addOfFiles(Sides const& sources, Changes const& changes, std::vector<MoDiffLabel>& labels) {
    if (differInOrderOnly(sources))
        labels.push_back({MoDiffLabel::eOrder, "only the order of lines differs"});
    addBlock(sources, changes, labels);
    std::stable_sort(labels.begin(), labels.end(),
                     [](MoDiffLabel const& left, MoDiffLabel const& right) { return left.kind < right.kind; });
}
