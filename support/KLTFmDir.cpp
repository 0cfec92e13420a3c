#include "KLTFmDir.h"

#include "I18NString.h"

#include <cstring>
#include <sys/stat.h>

namespace {

std::string& effectiveWorkingDir() {
    static std::string directory;
    return directory;
}

} // namespace

void KLTFmDir::splitPath(char const* path, std::string* directory, std::string* file) {
    char const* const slash = std::strrchr(path, '/');
    if (directory) {
        char const* end = slash;
        while (end && end > path && end[-1] == '/')
            --end;
        if (!slash)
            *directory = ".";
        else
            directory->assign(path, end == path ? path + 1 : end);
    }
    if (file)
        *file = slash ? slash + 1 : path;
}

void KLTFmDir::joinPath(std::string& path, char const* component) {
    if (!path.empty()) {
        if (path.back() != '/')
            path += '/';
        while (*component == '/')
            ++component;
    }
    path += component;
}

bool KLTFmDir::exists(char const* path, unsigned short mode) {
    struct stat status;
    if (stat(path, &status) != 0)
        return false;
    mode_t const permissions = mode & 07777U;
    return (status.st_mode & S_IFMT) == (mode & S_IFMT) && (status.st_mode & permissions) == permissions;
}

void KLTFmDir::setEffectiveWorkingDir(I18NString const& directory) {
    effectiveWorkingDir() = directory.toUtf8();
}

std::string KLTFmDir::getEffectiveWorkingDir() {
    return effectiveWorkingDir();
}
