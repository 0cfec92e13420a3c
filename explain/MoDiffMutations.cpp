#include "MoDiffMutations.h"

#include "MoDiffBlindSpots.h"
#include "MoDiffContentHash.h"
#include "MoDiffEnginePatterns.h"
#include "MoDiffFileContent.h"
#include "MoDiffOutputFile.h"
#include "MoDiffRun.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <random>
#include <set>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace {

std::size_t const kMostOfScripts = 200; // changes of a format that a script compares: each takes a second or so
std::size_t const kBatchCopies = 512;
std::size_t const kBatchBytes = std::size_t{64} << 20; // of copies that lie on disk at the same time

/// A master whose bytes can be changed.
struct Master {
    MoDiffPairResult const* pair;
    MoDiffEngineSetup const* setup;
    std::string path; ///< absolute
    std::uint64_t length;
};

struct Mutation {
    Master const* master;
    std::size_t index; ///< in the file
    std::uint64_t random;
    char byte = 0;          ///< in the place of the one there; chosen when the file is read
    bool isControl = false; ///< the copy is not changed and must pass
};

/// Below a number, the same on every system.
std::uint64_t below(std::uint64_t limit, std::mt19937_64& random) {
    return random() % limit;
}

char mutated(char byte, std::uint64_t random) {
    auto const other = [random](char value, char first, unsigned count) {
        auto const shift = static_cast<unsigned>(1 + random % (count - 1));
        return static_cast<char>(first + static_cast<char>((static_cast<unsigned>(value - first) + shift) % count));
    };
    if (byte >= '0' && byte <= '9')
        return other(byte, '0', 10);
    if (byte >= 'a' && byte <= 'z')
        return other(byte, 'a', 26);
    if (byte >= 'A' && byte <= 'Z')
        return other(byte, 'A', 26);
    return static_cast<char>(static_cast<unsigned char>(byte) ^ 1U);
}

/// A working directory with the scripts of the one that was current, which is so again afterwards.
class Workshop {
public:
    Workshop() : m_previous(fs::current_path()) {
        std::string name = (fs::temp_directory_path() / "modiff-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::system_error(errno, std::generic_category(), "cannot make " + name);
        m_root = name;
        fs::create_directories(m_root / "server/run");
        fs::path const scripts = m_previous / "../../src";
        if (fs::exists(scripts))
            fs::create_directory_symlink(fs::canonical(scripts), m_root / "src");
        fs::current_path(m_root / "server/run");
    }
    ~Workshop() {
        std::error_code ignored;
        fs::current_path(m_previous, ignored);
        fs::remove_all(m_root, ignored);
    }
    Workshop(Workshop const&) = delete;
    Workshop& operator=(Workshop const&) = delete;

private:
    fs::path m_previous;
    fs::path m_root;
};

/// Keeps which pairs passed.
class Passes : public MoDiffRunEvents {
public:
    void finished(MoDiffPairResult const& result) override {
        if (result.outcome == MoDiffOutcome::ePassed)
            m_ids.insert(result.id);
    }
    bool has(std::string const& id) const { return m_ids.count(id) > 0; }

private:
    std::set<std::string> m_ids;
};

/// Chooses the bytes of one format, in the order of its masters.
std::vector<Mutation> sample(std::vector<Master> const& masters, std::size_t count, std::mt19937_64& random) {
    std::vector<std::uint64_t> ends;
    ends.reserve(masters.size());
    std::uint64_t all = 0;
    for (Master const& master : masters)
        ends.push_back(all += master.length);
    std::vector<Mutation> mutations;
    for (std::size_t made = 0; made < count && all > 0; ++made) {
        std::uint64_t const byte = below(all, random);
        auto const found = static_cast<std::size_t>(std::upper_bound(ends.begin(), ends.end(), byte) - ends.begin());
        Master const& master = masters[found];
        mutations.push_back({&master, static_cast<std::size_t>(byte - (ends[found] - master.length)), random()});
    }
    std::stable_sort(mutations.begin(), mutations.end(), [](Mutation const& left, Mutation const& right) {
        return std::pair(left.master, left.index) < std::pair(right.master, right.index);
    });
    return mutations;
}

/// The content of the master that was asked for last.
class MasterReader {
public:
    /// Null when it is no more what was compared.
    std::string const* read(Master const& master) {
        if (m_master == &master)
            return m_isAsRecorded ? &m_content : nullptr;
        m_master = &master;
        m_source.reset();
        try {
            m_content = MoDiffFileContent::read(master.path);
        } catch (std::system_error const&) { // gone
            m_content.clear();
        }
        m_isAsRecorded = MoDiffContentHash::digitsOf(m_content.data(), m_content.size()) == master.pair->hash.master;
        return m_isAsRecorded ? &m_content : nullptr;
    }

    /// What hides a change of it.
    std::string hiderOf(Mutation const& mutation) {
        MoDiffFormatRow const& format = *mutation.master->setup->format;
        bool const isText =
            format.comparison == MoDiffFormatRow::eCleansedText || format.comparison == MoDiffFormatRow::eText;
        std::string const* const content = read(*mutation.master);
        if (!isText || !content)
            return MoDiffMutations::kEqual;
        MoDiffLib::Patterns const patterns = MoDiffEnginePatterns::of(format, mutation.master->setup->settings);
        if (!m_source)
            m_source.emplace(*content, patterns);
        std::string hider = MoDiffBlindSpots::hiderOf(*m_source, mutation.index);
        if (hider.empty()) { // the change itself may have made a match
            std::string copy = *content;
            copy[mutation.index] = mutation.byte;
            hider = MoDiffBlindSpots::hiderOf(MoDiffSourceText(std::move(copy), patterns), mutation.index);
        }
        return hider.empty() ? MoDiffMutations::kEqual : hider;
    }

private:
    Master const* m_master = nullptr;
    std::string m_content;
    bool m_isAsRecorded = false;
    std::optional<MoDiffSourceText> m_source;
};

/// Compares the changes of one format.
class Trial {
public:
    Trial(MoDiffSuiteConfiguration const& configuration, std::atomic<int> const* signal,
          std::vector<std::string>& changed)
        : m_configuration(configuration), m_changed(changed) {
        m_options.signal = signal;
    }

    MoDiffMutations::Outcome perform(std::vector<Mutation> const& mutations) {
        Master const* last = nullptr;
        for (Mutation mutation : mutations) {
            std::string const* const content = m_reader.read(*mutation.master);
            bool const isFirst = mutation.master != last;
            last = mutation.master;
            if (!content && isFirst)
                m_changed.push_back(last->pair->id);
            if (!content)
                continue;
            mutation.byte = mutated((*content)[mutation.index], mutation.random);
            if (isFirst)
                add({last, mutation.index, 0, (*content)[mutation.index], /*isControl=*/true}, *content);
            add(mutation, *content);
        }
        compare();
        return m_outcome;
    }

private:
    void add(Mutation const& mutation, std::string const& content) {
        if (m_options.signal && *m_options.signal != 0)
            return;
        m_batch.push_back(mutation);
        layOut(mutation, content);
        m_bytes += content.size();
        if (m_batch.size() == kBatchCopies || m_bytes > kBatchBytes)
            compare();
    }

    /// The master as a link, and the changed copy where the engine looks for the actual file.
    void layOut(Mutation const& mutation, std::string content) {
        Master const& master = *mutation.master;
        MoDiffPair pair;
        pair.id = std::to_string(m_batch.size() - 1);
        pair.setup = master.setup;
        pair.master = pair.id + fs::path(master.path).extension().string();
        pair.actual = master.setup->format->makeEngine(master.setup->settings)->getActualFile(pair.master);
        fs::create_directories(fs::path(pair.actual).parent_path());
        fs::create_symlink(master.path, pair.master);
        content[mutation.index] = mutation.byte;
        MoDiffOutputFile(pair.actual).write(content);
        m_plan.pairs.push_back(pair);
    }

    void compare() {
        if (m_batch.empty())
            return;
        m_plan.complete(m_configuration);
        Passes passes;
        MoDiffRun::perform(m_plan, m_configuration, m_options, passes);
        for (MoDiffPair const& pair : m_plan.pairs) {
            fs::remove(pair.master);
            fs::remove(pair.actual);
        }
        for (std::size_t index = 0; index < m_batch.size(); ++index)
            take(m_batch[index], passes.has(std::to_string(index)));
        m_plan = MoDiffPlan();
        m_batch.clear();
        m_bytes = 0;
    }

    void take(Mutation const& mutation, bool hasPassed) {
        if (mutation.isControl && !hasPassed)
            m_unusable.insert(mutation.master);
        if (mutation.isControl)
            return;
        ++m_outcome.made;
        if (m_unusable.count(mutation.master) > 0)
            ++m_outcome.unmeasured;
        else if (!hasPassed)
            ++m_outcome.noticed;
        else
            ++m_outcome.unnoticed[m_hiders.hiderOf(mutation)];
    }

    MoDiffSuiteConfiguration const& m_configuration;
    std::vector<std::string>& m_changed;
    MoDiffRunOptions m_options;
    MoDiffMutations::Outcome m_outcome;
    MasterReader m_reader;
    MasterReader m_hiders; ///< behind the other one: batches are judged when they are full
    std::vector<Mutation> m_batch;
    std::set<Master const*> m_unusable;
    MoDiffPlan m_plan;
    std::size_t m_bytes = 0;
};

} // namespace

char const MoDiffMutations::kEqual[] = "nothing hidden";

MoDiffMutations::Outcomes MoDiffMutations::perform(std::vector<MoDiffPairResult const*> const& pairs,
                                                   MoDiffPairSetups& setups,
                                                   MoDiffSuiteConfiguration const& configuration,
                                                   Options const& options, std::vector<std::string>& changed) {
    std::map<std::string, std::vector<Master>> masters; // by format
    for (MoDiffPairResult const* const pair : pairs) {
        MoDiffEngineSetup const* const setup = setups.find(*pair);
        if (setup && pair->bytes && pair->bytes->master > 0 && !pair->hash.master.empty())
            masters[pair->format].push_back(
                {pair, setup, fs::absolute(pair->master).lexically_normal().string(), pair->bytes->master});
    }
    Outcomes outcomes;
    std::mt19937_64 random(options.seed);
    Workshop const workshop;
    std::size_t index = 0;
    for (auto const& [format, itsMasters] : masters) {
        std::size_t const begin = options.count * index / masters.size();
        std::size_t const share = options.count * ++index / masters.size() - begin;
        bool const isScripts = itsMasters.front().setup->format->comparison == MoDiffFormatRow::eScript;
        std::size_t const count = isScripts ? std::min(share, kMostOfScripts) : share;
        outcomes[format] = Trial(configuration, options.signal, changed).perform(sample(itsMasters, count, random));
    }
    return outcomes;
}
