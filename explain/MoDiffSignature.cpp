#include "MoDiffSignature.h"

#include "MoDiffShownText.h"
#include "MoUtf8.h"

#include <algorithm>
#include <unordered_map>
#include <xxhash.h>

namespace {

std::size_t const kAround = 24;    // bytes of a title on either side of the change
std::size_t const kLongest = 48;   // bytes of a title's change
char const kEnds[] = "<>\n\r\t\""; // what a title does not reach beyond

std::string hexOf(XXH128_hash_t const& hash) {
    XXH128_canonical_t bytes;
    XXH128_canonicalFromHash(&bytes, hash);
    std::string hex;
    for (unsigned char const byte : bytes.digest) {
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

/// An insertion is shown as what is new, everything else with the words around it.
std::string titleOf(MoDiffBothSides<std::string_view> const& texts, MoDiffBothSides<MoDiffRange> const& change) {
    return quoted(texts.master, change.master, surroundings(texts.master, change.master)) + " -> " +
           quoted(texts.actual, change.actual, surroundings(texts.actual, change.actual));
}

} // namespace

std::string MoDiffSignature::ofBytes(std::string_view bytes) {
    return hexOf(XXH3_128bits(bytes.data(), bytes.size()));
}

std::vector<MoDiffChangeKind> MoDiffSignature::kindsOf(MoDiffBothSides<std::string_view> const& texts,
                                                       std::vector<MoDiffChange> const& changes) {
    std::vector<MoDiffChangeKind> kinds;
    std::unordered_map<std::string, std::size_t> indexes;
    for (MoDiffChange const& change : changes) {
        std::string_view const removed = change.ranges.master.of(texts.master);
        std::string_view const added = change.ranges.actual.of(texts.actual);
        // The hash of one side seeds the other one's, so that bytes cannot move from one to the other.
        std::string const signature =
            hexOf(XXH3_128bits_withSeed(added.data(), added.size(), XXH3_64bits(removed.data(), removed.size())));
        auto const [known, isNew] = indexes.emplace(signature, kinds.size());
        if (isNew)
            kinds.push_back({signature, titleOf(texts, change.ranges), 0});
        ++kinds[known->second].places;
    }
    return kinds;
}

std::string MoDiffSignature::of(std::vector<MoDiffChangeKind> const& kinds) {
    std::vector<std::string> signatures;
    signatures.reserve(kinds.size());
    for (MoDiffChangeKind const& kind : kinds)
        signatures.push_back(kind.signature);
    std::sort(signatures.begin(), signatures.end());
    std::string all;
    for (std::string const& signature : signatures)
        all += signature;
    return ofBytes(all);
}
