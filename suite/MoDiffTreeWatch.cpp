#include "MoDiffTreeWatch.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/vfs.h>
#include <system_error>

namespace fs = std::filesystem;

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

std::chrono::milliseconds constexpr kForever{-1};
std::uint32_t constexpr kComing = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
std::uint32_t constexpr kSelf = IN_DELETE_SELF | IN_MOVE_SELF;
std::uint32_t constexpr kWriting = IN_MODIFY | IN_CLOSE_WRITE;

/// File systems whose files change without this machine's doing: NFS, SMB, CIFS, SMB2, FUSE, 9P, Ceph, AFS.
std::array<std::uint32_t, 8> constexpr kRemote = {0x6969,     0x517B,     0xFF534D42, 0xFE534D42,
                                                  0x65735546, 0x01021997, 0x00C36400, 0x5346414F};

bool isRemote(std::string const& path) {
    struct statfs status;
    if (statfs(path.c_str(), &status) != 0)
        return false;
    return std::find(kRemote.begin(), kRemote.end(), static_cast<std::uint32_t>(status.f_type)) != kRemote.end();
}

bool isLink(std::string const& path) {
    std::error_code ignored;
    return fs::is_symlink(path, ignored);
}

/// Keeps all signals back as long as it lives, so that none comes between a look at what they leave and the waiting.
class HeldSignals {
public:
    HeldSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~HeldSignals() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    HeldSignals(HeldSignals const&) = delete;
    HeldSignals& operator=(HeldSignals const&) = delete;

    sigset_t const* before() const { return &m_before; }

private:
    sigset_t m_before{};
};

} // namespace

void MoDiffTreeWatch::watch(Places const& places) {
    m_places = places;
    open();
    for (auto const& [path, interest] : places)
        add(path, interest);
}

/// All is begun anew: a watch follows its directory wherever that is moved to.
void MoDiffTreeWatch::open() {
    m_directories.clear();
    m_whyLooking.clear();
    m_descriptor.reset();
    m_descriptor = MoDiffDescriptor(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (!m_descriptor)
        lookInstead("the system watches no more directories for this user: " +
                    std::generic_category().message(errno) + ", see fs.inotify.max_user_instances");
}

void MoDiffTreeWatch::add(std::string const& path, Interest const& interest) {
    if (!tryAdd(path, interest))
        addNearest(path);
}

/// Watches for what is not there at the nearest directory that is.
void MoDiffTreeWatch::addNearest(std::string path) {
    while (m_descriptor && path.size() > 1) {
        path = fs::path(path).parent_path().string();
        if (tryAdd(path, {}))
            return;
    }
}

/// Whether the directory is there, or nothing needs to be added any more.
bool MoDiffTreeWatch::tryAdd(std::string const& path, Interest const& interest) {
    if (!m_descriptor)
        return true;
    std::uint32_t mask = IN_ONLYDIR | IN_MASK_ADD | IN_ATTRIB | kComing | kSelf;
    if (interest.contents)
        mask |= kWriting;
    if (!interest.file.empty())
        mask |= IN_CLOSE_WRITE;
    int const watch = inotify_add_watch(m_descriptor.get(), path.c_str(), mask);
    if (watch < 0 && errno == ENOSPC) {
        lookInstead("the system watches no more directories for this user, see fs.inotify.max_user_watches");
        return true;
    }
    if (watch < 0)
        return errno != ENOENT && errno != ENOTDIR;
    Directory& directory = m_directories[watch]; // several paths may lead there
    directory.path = path;
    directory.interest.contents = directory.interest.contents || interest.contents;
    if (!interest.file.empty())
        directory.interest.file = interest.file;
    if (m_whyLooking.empty() && isRemote(path))
        m_whyLooking = path + " lies on a file system that does not tell of all changes";
    return true;
}

void MoDiffTreeWatch::lookInstead(std::string const& reason) {
    m_whyLooking = reason;
    m_descriptor.reset();
    m_directories.clear();
}

MoDiffTreeWatch::News MoDiffTreeWatch::wait(std::atomic<int> const& signal) {
    News news;
    while (!news) {
        bool const isTold = waitFor(m_whyLooking.empty() ? kForever : kLookInterval, signal);
        if (signal != 0)
            return {};
        if (isTold)
            news = read();
        else if (!m_whyLooking.empty())
            return {true, true};
    }
    gather(news, signal);
    return news;
}

/// What is of no interest does not prolong the waiting.
void MoDiffTreeWatch::gather(News& news, std::atomic<int> const& signal) {
    Clock::time_point const last = Clock::now() + kLongestGathering;
    Clock::time_point end = Clock::now() + kQuiet;
    while (true) {
        auto const rest = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        if (rest <= 0ms || !waitFor(rest, signal))
            return;
        News const more = read();
        news.add(more);
        if (more)
            end = std::min(Clock::now() + kQuiet, last);
    }
}

/// Whether there is something to be read before the time is over or a signal comes.
bool MoDiffTreeWatch::waitFor(std::chrono::milliseconds time, std::atomic<int> const& signal) const {
    HeldSignals const held;
    if (signal != 0)
        return false;
    pollfd event = {m_descriptor.get(), POLLIN, 0}; // a negative one is passed over
    timespec const limit = {static_cast<time_t>(time / 1s),
                            static_cast<long>(std::chrono::nanoseconds(time % 1s).count())};
    return ppoll(&event, 1, time == kForever ? nullptr : &limit, held.before()) > 0;
}

MoDiffTreeWatch::News MoDiffTreeWatch::read() {
    News news;
    alignas(inotify_event) std::array<char, 1 << 16> block;
    ssize_t count = 0;
    while ((count = ::read(m_descriptor.get(), block.data(), block.size())) > 0) {
        for (char const* place = block.data(); place < block.data() + count;) {
            inotify_event event;
            std::memcpy(&event, place, sizeof event);
            std::string const name = event.len > 0 ? place + sizeof event : "";
            news.add(newsOf(event.wd, event.mask, name));
            place += sizeof event + event.len;
        }
    }
    return news;
}

MoDiffTreeWatch::News MoDiffTreeWatch::newsOf(int watch, unsigned mask, std::string const& name) const {
    if (mask & IN_Q_OVERFLOW)
        return {true, true};
    auto const directory = m_directories.find(watch);
    if (directory == m_directories.end() || (mask & IN_IGNORED))
        return {};
    if (mask & (kSelf | IN_UNMOUNT))
        return {true, false};
    auto const& [path, interest] = directory->second;
    bool const isFile = !interest.file.empty() && name == interest.file;
    if (mask & kComing) {
        std::string const entry = path + "/" + name;
        bool const isDirectory = (mask & IN_ISDIR) || isLink(entry) || m_places.count(entry) != 0;
        return {interest.contents || isFile || isDirectory, false};
    }
    bool const isDirectory = mask & IN_ISDIR; // who may read it
    return {isFile || isDirectory, interest.contents && !isDirectory};
}
