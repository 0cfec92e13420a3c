#include "MoDiffPlan.h"

#include "MoDiffDiscovery.h"
#include "MoDiffIdleRules.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <numeric>
#include <unordered_map>
#include <xxhash.h>

namespace {

/// Gathers texts, each with its length, so that no two lists of texts have the same digest by chance of their joints.
class Digest {
public:
    Digest() : m_state(XXH3_createState(), XXH3_freeState) {
        if (!m_state || XXH3_128bits_reset(m_state.get()) != XXH_OK)
            throw std::bad_alloc();
    }

    void add(std::string_view text) {
        std::string const length = std::to_string(text.size()) + ":";
        XXH3_128bits_update(m_state.get(), length.data(), length.size());
        XXH3_128bits_update(m_state.get(), text.data(), text.size());
    }

    /// 32 hex digits.
    std::string text() const {
        XXH128_canonical_t bytes;
        XXH128_canonicalFromHash(&bytes, XXH3_128bits_digest(m_state.get()));
        std::string digits;
        for (unsigned char const byte : bytes.digest)
            for (int const shift : {4, 0})
                digits += "0123456789abcdef"[(byte >> shift) & 15];
        return digits;
    }

private:
    std::unique_ptr<XXH3_state_t, XXH_errorcode (*)(XXH3_state_t*)> m_state;
};

/// Everything by which two shards of one run could come to different verdicts for the same files.
std::string planDigest(MoDiffSuiteConfiguration const& configuration, MoDiffPlan const& plan) {
    Digest digest;
    for (MoDiffPair const& pair : plan.pairs) {
        digest.add(pair.id);
        digest.add(pair.actual);
    }
    digest.add(std::to_string(configuration.nul));
    for (std::string const& kind : configuration.ignore)
        digest.add(kind);
    for (MoDiffExpectedDifference const& rule : configuration.expected)
        for (std::string const* const text : {&rule.pair, &rule.reason, &rule.until})
            digest.add(*text);
    return digest.text();
}

/// The pairs that have an actual file.
struct Claim {
    MoDiffPair const* first = nullptr;
    MoDiffPair const* second = nullptr;
    std::size_t count = 0;
};

/// Whether any output directory has a sub-directory.
bool isInOutput(std::string const& name) {
    std::error_code ignored;
    std::filesystem::directory_iterator const outputs("../webcontent", ignored);
    return std::any_of(begin(outputs), end(outputs), [&](std::filesystem::directory_entry const& output) {
        return std::filesystem::is_directory(output.path() / name, ignored);
    });
}

/// Raises MoDiffConfigurationError when a sub-directory that the configuration names lies neither in a folder of
/// masters nor in an output directory: a misspelt language would drop out in silence.
void requireNamed(MoDiffSuiteConfiguration const& configuration, MoDiffPlan const& plan) {
    if (!configuration.subDirectories)
        return;
    for (std::string const& name : *configuration.subDirectories) {
        auto const isOfName = [&name](MoDiffEngineSetup const& setup) { return setup.settings.subDirectory == name; };
        bool const isThere = name.empty() || std::any_of(plan.setups.begin(), plan.setups.end(), isOfName);
        if (!isThere && !isInOutput(name))
            throw MoDiffConfigurationError(configuration.origins.at("sub-directories") +
                                           ": neither masters nor output have a sub-directory " + name);
    }
}

} // namespace

MoDiffPlan MoDiffPlan::make(MoDiffSuiteConfiguration const& configuration, Progress const& progress) {
    MoDiffPlan plan;
    MoDiffDiscovery::Found const found = MoDiffDiscovery::find(configuration, plan, progress);
    if (!found.badRoots.empty())
        throw MoDiffConfigurationError(configuration.origins.at("roots") + ": " + *found.badRoots.begin());
    if (found.unreadable.empty())
        requireNamed(configuration, plan);
    std::vector<std::string> const idle = MoDiffIdleRules::find(found, plan);
    if (!idle.empty())
        throw MoDiffConfigurationError(idle.front());
    plan.masterFolders = found.masterFolders;
    plan.unreadable.assign(found.unreadable.begin(), found.unreadable.end());
    plan.complete(configuration);
    return plan;
}

void MoDiffPlan::complete(MoDiffSuiteConfiguration const& configuration) {
    auto const isBefore = [](MoDiffPair const& left, MoDiffPair const& right) { return left.id < right.id; };
    if (!std::is_sorted(pairs.begin(), pairs.end(), isBefore))
        std::sort(pairs.begin(), pairs.end(), isBefore);
    warnOfSharedActuals();
    selected.resize(pairs.size());
    std::iota(selected.begin(), selected.end(), std::size_t{0});
    digest = planDigest(configuration, *this);
}

void MoDiffPlan::warnOfSharedActuals() {
    std::unordered_map<std::string_view, Claim> claims; // by actual file
    claims.reserve(pairs.size());
    for (MoDiffPair const& pair : pairs) {
        Claim& claim = claims[pair.actual];
        if (claim.count < 2)
            (claim.count == 0 ? claim.first : claim.second) = &pair;
        ++claim.count;
    }
    if (claims.size() == pairs.size())
        return;
    for (MoDiffPair& pair : pairs) {
        Claim const& claim = claims[pair.actual];
        if (claim.count < 2)
            continue;
        MoDiffPair const& other = &pair == claim.first ? *claim.second : *claim.first;
        std::string const more = claim.count > 2 ? " and " + std::to_string(claim.count - 2) + " more" : "";
        pair.warnings.push_back("its actual file is also that of " + other.id + more);
    }
}

std::string MoDiffPlan::digestOf(std::vector<std::string_view> const& ids) {
    Digest digest;
    for (std::string_view const id : ids)
        digest.add(id);
    return digest.text();
}

std::string MoDiffPlan::idOf(MoDiffFormatRow const& format, std::string const& master) {
    std::size_t const begin = master.rfind("./", 0) == 0 ? 2 : 0;
    std::string id;
    id.reserve(std::char_traits<char>::length(format.word) + 1 + master.size() - begin);
    return id.append(format.word).append(":").append(master, begin);
}
