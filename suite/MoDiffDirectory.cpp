#include "MoDiffDirectory.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <system_error>

namespace {

using Stream = std::unique_ptr<DIR, int (*)(DIR*)>;

[[noreturn]] void fail(std::string const& path) {
    throw std::system_error(errno, std::generic_category(), "cannot read the directory " + path);
}

/// What a link, or an entry that the directory tells nothing of, leads to.
MoDiffDirectory::Kind kindBehind(int directory, char const* name, bool isLink) {
    struct stat status;
    if (fstatat(directory, name, &status, 0) != 0) {
        bool const leadsNowhere = errno == ENOENT || errno == ENOTDIR || errno == ELOOP;
        return leadsNowhere ? MoDiffDirectory::eFile : MoDiffDirectory::eUnknown;
    }
    if (!S_ISDIR(status.st_mode))
        return MoDiffDirectory::eFile;
    return isLink ? MoDiffDirectory::eLinkedDirectory : MoDiffDirectory::eDirectory;
}

bool isLink(int directory, char const* name) {
    struct stat status;
    return fstatat(directory, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
}

MoDiffDirectory::Kind kindOf(int directory, dirent const& entry) {
    switch (entry.d_type) {
    case DT_DIR:
        return MoDiffDirectory::eDirectory;
    case DT_LNK:
        return kindBehind(directory, entry.d_name, /*isLink=*/true);
    case DT_UNKNOWN:
        return kindBehind(directory, entry.d_name, isLink(directory, entry.d_name));
    default:
        return MoDiffDirectory::eFile;
    }
}

} // namespace

std::string MoDiffDirectory::current() {
    std::error_code error;
    std::string path = std::filesystem::current_path(error).string();
    if (error)
        throw std::system_error(error, "there is no current directory any more");
    return path;
}

MoDiffDirectory MoDiffDirectory::read(std::string const& path) {
    std::string const name = path.empty() ? "." : path;
    Stream const stream(opendir(name.c_str()), closedir);
    struct stat status;
    if (!stream || fstat(dirfd(stream.get()), &status) != 0)
        fail(name);
    MoDiffDirectory directory;
    directory.identity = {status.st_dev, status.st_ino};
    errno = 0;
    while (dirent const* const entry = readdir(stream.get())) {
        std::string_view const entryName = entry->d_name;
        Kind const kind = kindOf(dirfd(stream.get()), *entry);
        if (kind == eFile)
            directory.files.push_back({std::string(entryName), kind, entry->d_type == DT_REG});
        else if (entryName != "." && entryName != "..")
            directory.others.push_back({std::string(entryName), kind, /*isRegular=*/false});
        errno = 0;
    }
    if (errno != 0)
        fail(name);
    std::sort(directory.others.begin(), directory.others.end(),
              [](Entry const& left, Entry const& right) { return left.name < right.name; });
    return directory;
}
