#ifndef MO_DIFF_TREE_WATCH_H
#define MO_DIFF_TREE_WATCH_H

#include "MoDiffDescriptor.h"

#include <atomic>
#include <chrono>
#include <map>
#include <string>

/// Waits for changes in directories: the system tells of them (inotify), or where it cannot, time passes and
/// everything may have changed. Nothing is told of what changed where; whoever waits looks for himself.
class MoDiffTreeWatch {
public:
    /// What is of interest in a directory.
    struct Interest {
        bool contents = false; ///< all files: their names and contents; otherwise directories and links alone
        std::string file{};    ///< and this one; "" for none

        friend bool operator==(Interest const& left, Interest const& right) {
            return left.contents == right.contents && left.file == right.file;
        }
    };
    /// By absolute path. What is not there, or away for a time, is waited for where it would have to appear.
    using Places = std::map<std::string, Interest>;

    /// What has happened.
    struct News {
        bool names = false;    ///< files or directories came, went or were replaced, perhaps the tree as a whole
        bool contents = false; ///< files were written
        explicit operator bool() const { return names || contents; }
        void add(News const& more) {
            names = names || more.names;
            contents = contents || more.contents;
        }
    };

    /// Watches these places from now on, and no others.
    void watch(Places const& places);

    /// Waits until something happens, and then until nothing has happened for a moment, or until a signal comes.
    /// @param signal holds the number of a signal that is to end the waiting, 0 as long as none came
    News wait(std::atomic<int> const& signal);

    /// Why the system cannot tell of all changes, a sentence; "" when it can.
    std::string const& whyLooking() const { return m_whyLooking; }

    /// How long nothing must happen, so that changes that belong together are told together.
    static constexpr std::chrono::milliseconds kQuiet{200};
    /// The longest that changes are gathered, since some file may never come to rest.
    static constexpr std::chrono::milliseconds kLongestGathering{5000};
    /// How often everything may have changed where the system does not tell.
    static constexpr std::chrono::milliseconds kLookInterval{2000};

private:
    struct Directory {
        std::string path;
        Interest interest;
    };

    void open();
    void add(std::string const& path, Interest const& interest);
    void addNearest(std::string path);
    bool tryAdd(std::string const& path, Interest const& interest);
    void lookInstead(std::string const& reason);
    bool waitFor(std::chrono::milliseconds time, std::atomic<int> const& signal) const;
    void gather(News& news, std::atomic<int> const& signal);
    News read();
    News newsOf(int watch, unsigned mask, std::string const& name) const;

    MoDiffDescriptor m_descriptor;
    std::map<int, Directory> m_directories; ///< by number of the watch
    Places m_places;
    std::string m_whyLooking;
};

#endif
