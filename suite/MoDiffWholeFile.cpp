#include "MoDiffWholeFile.h"

#include "MoDiffOutputFile.h"

#include <cerrno>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

unsigned const kNewFile = 0666;
int const kMostLinks = 40;

/// The permissions that the file has or a new one gets.
unsigned permissionsFor(std::string const& fileName) {
    struct stat status;
    if (stat(fileName.c_str(), &status) == 0)
        return status.st_mode & 07777;
    mode_t const mask = umask(0);
    umask(mask);
    return kNewFile & ~mask;
}

/// What is to be replaced: never a pipe or device, nor a link in place of its file. "" when it is to be written to.
std::string replaceableFile(std::string const& fileName) {
    if (fs::exists(fileName) && !fs::is_regular_file(fileName))
        return "";
    fs::path file = fileName;
    for (int links = 0; links < kMostLinks && fs::is_symlink(file); ++links) // the file need not be there
        file = file.parent_path() / fs::read_symlink(file);
    return file.string();
}

} // namespace

void MoDiffWholeFile::prepare(std::string const& fileName) {
    std::string const file = replaceableFile(fileName);
    if (file.empty()) {
        if (access(fileName.c_str(), W_OK) != 0)
            throw std::system_error(errno, std::generic_category(), "cannot write " + fileName);
        return;
    }
    MoDiffOutputFile::replace(file, "", permissionsFor(file)); // fails now rather than at the end
    fs::remove(file);
}

void MoDiffWholeFile::write(std::string const& fileName, std::string_view contents) {
    std::string const file = replaceableFile(fileName);
    if (file.empty())
        MoDiffOutputFile(fileName).write(contents);
    else
        MoDiffOutputFile::replace(file, contents, permissionsFor(file));
}
