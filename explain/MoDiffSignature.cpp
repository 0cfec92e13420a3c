#include "MoDiffSignature.h"

#include "MoDiffShownText.h"
#include "MoUtf8.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <xxhash.h>

namespace {

std::size_t const kMostKinds = 1000;
std::size_t const kAround = 24;    // bytes of a title on either side of the change
std::size_t const kLongest = 48;   // bytes of a title's change
char const kEnds[] = "<>\n\r\t\""; // what a title does not reach beyond

/// The same bytes on every machine.
using Hash = std::array<unsigned char, sizeof(XXH128_canonical_t)>;

Hash canonical(XXH128_hash_t const& hash) {
    XXH128_canonical_t bytes;
    XXH128_canonicalFromHash(&bytes, hash);
    Hash result{};
    std::copy(std::begin(bytes.digest), std::end(bytes.digest), result.begin());
    return result;
}

/// The hash of one side seeds the other one's, so that bytes cannot move from one to the other.
Hash hashOf(std::string_view removed, std::string_view added) {
    return canonical(XXH3_128bits_withSeed(added.data(), added.size(), XXH3_64bits(removed.data(), removed.size())));
}

std::string hexOf(Hash const& hash) {
    std::string hex;
    for (unsigned char const byte : hash) {
        hex += "0123456789abcdef"[byte >> 4];
        hex += "0123456789abcdef"[byte & 15];
    }
    return hex;
}

bool cutsCharacter(std::string_view text, std::size_t at) {
    return at < text.size() && MoUtf8::isContinuation(static_cast<unsigned char>(text[at]));
}

/// The words around a change in its own text, which are the same on both sides.
MoDiffRange surroundings(std::string_view text, MoDiffRange change) {
    std::size_t begin = change.begin - std::min(change.begin, kAround);
    std::size_t const stop = text.substr(begin, change.begin - begin).find_last_of(kEnds);
    if (stop != std::string_view::npos)
        begin += stop + 1;
    std::size_t end = change.end + std::min(text.size() - change.end, kAround);
    end = std::min(end, text.find_first_of(kEnds, change.end));
    while (begin < change.begin && cutsCharacter(text, begin))
        ++begin;
    while (end > change.end && cutsCharacter(text, end))
        --end;
    return {begin, end};
}

std::string quoted(std::string_view text, MoDiffRange change, MoDiffRange around) {
    std::string_view const changed = change.of(text);
    std::size_t cut = std::min(changed.size(), kLongest);
    while (cut > 0 && cutsCharacter(changed, cut))
        --cut;
    return "`" + MoDiffShownText::escaped(text.substr(around.begin, change.begin - around.begin)) +
           MoDiffShownText::escaped(changed.substr(0, cut)) + (cut < changed.size() ? "..." : "") +
           MoDiffShownText::escaped(text.substr(change.end, around.end - change.end)) + "`";
}

std::string titleOf(MoDiffBothSides<std::string_view> const& texts, MoDiffBothSides<MoDiffRange> const& change) {
    return quoted(texts.master, change.master, surroundings(texts.master, change.master)) + " -> " +
           quoted(texts.actual, change.actual, surroundings(texts.actual, change.actual));
}

} // namespace

std::string MoDiffSignature::ofBytes(std::string_view bytes) {
    return hexOf(canonical(XXH3_128bits(bytes.data(), bytes.size())));
}

MoDiffSignature::Difference MoDiffSignature::of(MoDiffBothSides<std::string_view> const& texts,
                                                std::vector<MoDiffChange> const& changes) {
    Difference difference;
    std::map<Hash, std::size_t> indexes; // its order makes the signature independent of places
    for (MoDiffChange const& change : changes) {
        Hash const hash = hashOf(change.ranges.master.of(texts.master), change.ranges.actual.of(texts.actual));
        auto const [known, isNew] = indexes.emplace(hash, indexes.size());
        if (isNew && difference.kinds.size() < kMostKinds)
            difference.kinds.push_back({hexOf(hash), titleOf(texts, change.ranges), 0});
        if (known->second < kMostKinds)
            ++difference.kinds[known->second].places;
    }
    std::vector<Hash> all;
    all.reserve(indexes.size());
    for (auto const& [hash, index] : indexes)
        all.push_back(hash);
    difference.signature = ofBytes({reinterpret_cast<char const*>(all.data()), all.size() * sizeof(Hash)});
    return difference;
}
