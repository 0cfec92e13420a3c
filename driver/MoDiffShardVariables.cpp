#include "MoDiffShardVariables.h"

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace {

struct Variables {
    char const* total;
    char const* index;
    unsigned first;         ///< the index of the first shard
    char const* statusFile; ///< null when the runner asks for none
};

Variables const kRunners[] = {
    {"GTEST_TOTAL_SHARDS", "GTEST_SHARD_INDEX", 0, "GTEST_SHARD_STATUS_FILE"},
    {"TEST_TOTAL_SHARDS", "TEST_SHARD_INDEX", 0, "TEST_SHARD_STATUS_FILE"},
    {"CI_NODE_TOTAL", "CI_NODE_INDEX", 1, nullptr},
};

std::string valueOf(char const* variable) {
    char const* const value = variable ? std::getenv(variable) : nullptr;
    return value ? value : "";
}

unsigned numberOf(std::string const& text, std::string const& origin) {
    unsigned number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        throw std::invalid_argument(origin + ": " + (text.empty() ? "nothing" : text) + " is no number");
    return number;
}

/// @param first the index of the first shard where the shard was asked for
MoDiffAskedShard checked(MoDiffAskedShard const& shard, unsigned first) {
    if (shard.index < 1 || shard.index > shard.count)
        throw std::invalid_argument(shard.origin + ": there is no shard " + std::to_string(shard.index - 1 + first) +
                                    " of " + std::to_string(shard.count) + "; they are counted from " +
                                    std::to_string(first));
    return shard;
}

void touch(std::string const& name) {
    int const descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category(), "cannot write " + name);
    close(descriptor);
}

} // namespace

MoDiffAskedShard MoDiffShardVariables::parse(std::string const& text, std::string const& origin) {
    std::size_t const slash = text.find('/');
    if (slash == std::string::npos)
        throw std::invalid_argument(origin + ": " + text + " is no shard, such as 2/5");
    return checked({numberOf(text.substr(0, slash), origin), numberOf(text.substr(slash + 1), origin), origin},
                   /*first=*/1);
}

std::optional<MoDiffAskedShard> MoDiffShardVariables::read() {
    for (Variables const& runner : kRunners) {
        std::string const total = valueOf(runner.total);
        std::string const index = valueOf(runner.index);
        std::string const file = valueOf(runner.statusFile);
        if (total.empty() || (index.empty() && total == "1"))
            continue;
        unsigned const number = numberOf(index, runner.index);
        MoDiffAskedShard const shard =
            checked({number + 1 - runner.first, numberOf(total, runner.total), runner.index}, runner.first);
        if (!file.empty())
            touch(file);
        return shard;
    }
    return std::nullopt;
}
