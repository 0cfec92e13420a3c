#include "MoDirectoryListing.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <dirent.h>
#include <iterator>
#include <list>
#include <mutex>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace {

using Names = MoDirectoryListing::Names;

/// What identifies a state of a directory.
struct State {
    dev_t device;
    ino_t inode;
    timespec modified;
    timespec changed;
};

bool isSameTime(timespec const& a, timespec const& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

bool operator==(State const& a, State const& b) {
    return a.device == b.device && a.inode == b.inode && isSameTime(a.modified, b.modified) &&
           isSameTime(a.changed, b.changed);
}

bool readState(int descriptor, State& state) {
    struct stat status;
    if (fstat(descriptor, &status) != 0)
        return false;
    state = {status.st_dev, status.st_ino, status.st_mtim, status.st_ctim};
    return true;
}

/// File systems that this machine's kernel changes and stamps alone, with its own clock.
bool isOnLocalFileSystem(int descriptor) {
    unsigned long const kLocalTypes[] = {0xEF53 /* ext2 to 4 */, 0x58465342 /* xfs */, 0x9123683E /* btrfs */,
                                         0x01021994 /* tmpfs */, 0x794C7630 /* overlay */};
    struct statfs status;
    if (fstatfs(descriptor, &status) != 0)
        return false;
    auto const type = static_cast<unsigned long>(status.f_type) & 0xFFFFFFFFUL;
    return std::find(std::begin(kLocalTypes), std::end(kLocalTypes), type) != std::end(kLocalTypes);
}

/// A change made right after the directory was read may carry the same time stamp as the one before, for stamps
/// advance by the kernel's tick (at most 10 ms). Only a directory that has been quiet for longer is remembered; and
/// not one from a file system that stamps whole seconds.
bool hasBeenQuiet(State const& state) {
    long long const kQuietNanoseconds = 100000000;
    timespec now = {};
    if (state.changed.tv_nsec == 0 || clock_gettime(CLOCK_REALTIME, &now) != 0)
        return false;
    long long const age = (static_cast<long long>(now.tv_sec) - state.changed.tv_sec) * 1000000000LL + now.tv_nsec -
                          state.changed.tv_nsec;
    return age > kQuietNanoseconds;
}

struct DirectoryCloser {
    void operator()(DIR* directory) const { closedir(directory); }
};
using DirectoryHandle = std::unique_ptr<DIR, DirectoryCloser>;

/// Appends the names; false when the directory could not be read to its end.
bool readNames(DIR* directory, Names& names) {
    errno = 0;
    while (dirent const* entry = readdir(directory)) {
        if (entry->d_type != DT_DIR)
            names.emplace_back(entry->d_name);
        errno = 0;
    }
    return errno == 0;
}

/// The listings used last, latest first.
class Memory {
public:
    std::shared_ptr<Names const> find(std::string const& directory, State const& state) {
        std::lock_guard<std::mutex> const guard(m_mutex);
        for (auto entry = m_entries.begin(); entry != m_entries.end(); ++entry) {
            if (entry->directory != directory || !(entry->state == state))
                continue;
            m_entries.splice(m_entries.begin(), m_entries, entry);
            return entry->names;
        }
        return nullptr;
    }

    void keep(std::string const& directory, State const& state, std::shared_ptr<Names const> const& names) {
        std::lock_guard<std::mutex> const guard(m_mutex);
        m_entries.remove_if([&](Entry const& entry) { return entry.directory == directory; });
        m_entries.push_front(Entry{directory, state, names});
        if (m_entries.size() > kMostEntries)
            m_entries.pop_back();
    }

    void clear() {
        std::lock_guard<std::mutex> const guard(m_mutex);
        m_entries.clear();
    }

private:
    struct Entry {
        std::string directory;
        State state;
        std::shared_ptr<Names const> names;
    };
    static std::size_t constexpr kMostEntries = 8;

    std::mutex m_mutex;
    std::list<Entry> m_entries;
};

Memory& memory() {
    static Memory instance;
    return instance;
}

std::shared_ptr<Names const> list(std::string const& path) {
    auto names = std::make_shared<Names>();
    DirectoryHandle const directory(opendir(path.c_str()));
    State before;
    if (!directory || !readState(dirfd(directory.get()), before))
        return names;
    if (std::shared_ptr<Names const> known = memory().find(path, before))
        return known;
    // Looked at before the names are read, so that a change meanwhile makes the state differ the next time.
    bool const mayRemember = hasBeenQuiet(before) && isOnLocalFileSystem(dirfd(directory.get()));
    bool const complete = readNames(directory.get(), *names);
    std::sort(names->begin(), names->end());
    if (complete && mayRemember)
        memory().keep(path, before, names);
    return names;
}

} // namespace

MoDirectoryListing::MoDirectoryListing(std::string const& directory) : m_names(list(directory)) {
}

void MoDirectoryListing::forgetAll() {
    memory().clear();
}

Names::const_iterator MoDirectoryListing::firstFrom(std::string const& text) const {
    return std::lower_bound(m_names->begin(), m_names->end(), text);
}

bool MoDirectoryListing::isDirectory(std::string const& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}
