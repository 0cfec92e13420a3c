// Names in a directory against a wildcard pattern, and taking paths apart and together. Input: the pattern, then the
// names, all separated by "/"; the first byte of a name tells what it names.

#include "KLTFmDir.h"
#include "MoFuzz.h"
#include "MoGlob.h"
#include "MoHelper.h"

#include <fcntl.h>
#include <list>
#include <set>
#include <sys/stat.h>
#include <vector>

namespace {

std::size_t const kLongest = 600; // bytes of all; a name ends after 255
std::size_t const kMostNames = 6; // each costs two calls of the system

/// Keeps for each beginning of the name whether the pattern up to here matches it.
bool matches(std::string const& pattern, std::string const& name) {
    std::vector<bool> reached(name.size() + 1, false);
    reached[0] = true;
    for (char const c : pattern) {
        for (std::size_t i = 1; c == '*' && i < reached.size(); ++i)
            reached[i] = reached[i] || reached[i - 1];
        if (c == '*')
            continue;
        for (std::size_t i = name.size(); i > 0; --i)
            reached[i] = reached[i - 1] && name[i - 1] == c;
        reached[0] = false;
    }
    return reached.back();
}

/// Makes a file, a link to nowhere or a directory; true when the name is to be found.
bool make(std::string const& path, unsigned kind) {
    if (kind % 4 == 1)
        return symlink("nowhere/at/all", path.c_str()) == 0;
    if (kind % 4 == 2) {
        mkdir(path.c_str(), 0700);
        return false;
    }
    int const descriptor = open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY, 0600);
    return descriptor >= 0 && close(descriptor) == 0;
}

void checkGlob(std::string const& pattern, MoFuzzInput input) {
    static MoFuzzDirectory const directory;
    std::string const start = directory.path() + "/";
    std::set<std::string> made;
    std::set<std::string> expected; // in the order of bytes, as std::string compares
    for (std::size_t i = 0; i < kMostNames && !input.isAtEnd(); ++i) {
        unsigned const kind = input.byte();
        std::string const name = input.until('/').c_str();
        if (name.empty() || name == "." || name == ".." || !made.insert(start + name).second)
            continue;
        if (make(start + name, kind) && matches(pattern, name))
            expected.insert(start + name);
    }
    std::list<std::string> found = {"before"};
    int const count = MoGlob::globFiles((start + pattern).c_str(), found);
    for (std::string const& path : made)
        remove(path.c_str());
    MO_FUZZ_REQUIRE(found.front() == "before");
    found.pop_front();
    MO_FUZZ_REQUIRE(static_cast<std::size_t>(count) == found.size());
    MO_FUZZ_REQUIRE(std::equal(found.begin(), found.end(), expected.begin(), expected.end()));
}

void checkPath(std::string const& path) {
    std::string directory;
    std::string file;
    KLTFmDir::splitPath(path.c_str(), &directory, &file);
    MO_FUZZ_REQUIRE(!directory.empty());
    bool const isRoot = directory == "/";
    MO_FUZZ_REQUIRE(isRoot || directory.back() != '/');
    MO_FUZZ_REQUIRE(file.find('/') == std::string::npos);
    std::string joined = directory;
    KLTFmDir::joinPath(joined, file.c_str());
    MO_FUZZ_REQUIRE(joined == directory + (isRoot ? "" : "/") + file);
    std::string again;
    KLTFmDir::splitPath(joined.c_str(), &again, nullptr);
    MO_FUZZ_REQUIRE(again == directory);
}

void checkName(std::string const& name) {
    std::string base;
    std::string extension;
    MoHelper::fileBasename(name, base, extension);
    MO_FUZZ_REQUIRE(extension.find('.') == std::string::npos);
    MO_FUZZ_REQUIRE(name == base + (name.find('.') == std::string::npos ? "" : ".") + extension);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    if (size > kLongest)
        return 0;
    MoFuzzInput input(data, size);
    checkPath(MoFuzzInput(input).until('\0'));
    checkName(MoFuzzInput(input).rest());
    std::string const pattern = input.until('/').c_str();
    checkGlob(pattern, input);
    return 0;
}
