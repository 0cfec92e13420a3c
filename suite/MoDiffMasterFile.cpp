#include "MoDiffMasterFile.h"

#include "MoDiffContentHash.h"
#include "MoDiffDescriptor.h"
#include "MoDiffInputFile.h"
#include "MoDiffSha256.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>
#include <system_error>

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(std::string const& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

std::string directoryOf(std::string const& path) {
    return fs::path(path).parent_path();
}

/// Not derived from the name itself, which may be as long as a name can be.
std::string temporaryFor(std::string const& master) {
    return directoryOf(master) + "/.modiff-" + MoDiffContentHash::digitsOf(master.data(), master.size());
}

void synchronizeDirectory(std::string const& directory) {
    MoDiffDescriptor const descriptor(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor || fsync(descriptor.get()) < 0)
        fail("cannot synchronize " + directory);
}

void writeAll(int descriptor, std::string_view bytes, std::string const& master) {
    while (!bytes.empty()) {
        ssize_t const count = write(descriptor, bytes.data(), bytes.size());
        if (count >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EINTR)
            fail("cannot write " + master);
    }
}

/// Gives a new file the mode of the master in whose place it comes, and its owner as far as that is allowed.
void takeOver(int descriptor, std::string const& master) {
    struct stat status = {};
    if (stat(master.c_str(), &status) == 0) {
        static_cast<void>(fchown(descriptor, status.st_uid, status.st_gid) < 0);
    } else { // as any new file gets it
        mode_t const mask = umask(0);
        umask(mask);
        status.st_mode = 0666u & ~mask;
    }
    if (fchmod(descriptor, status.st_mode & 07777u) < 0)
        fail("cannot set the mode of " + master);
}

/// Removes the temporary file unless it has got the master's name.
struct Temporary {
    std::string name;
    bool isRenamed = false;
    ~Temporary() {
        if (!isRenamed)
            unlink(name.c_str());
    }
};

void checkDirectory(std::string const& directory) {
    if (access(directory.c_str(), W_OK | X_OK) < 0)
        throw MoDiffMasterFile::Protected("the directory " + directory +
                                          " cannot be written: " + std::generic_category().message(errno));
}

} // namespace

std::string MoDiffMasterFile::resolve(std::string const& path) {
    return fs::weakly_canonical(fs::absolute(path));
}

void MoDiffMasterFile::checkReplaceable(std::string const& master) {
    struct stat status = {};
    if (stat(master.c_str(), &status) < 0)
        fail("cannot look at " + master);
    if ((status.st_mode & 0222u) == 0)
        throw Protected("the master is read-only; chmod u+w " + master + " makes it writable");
    checkDirectory(directoryOf(master));
}

void MoDiffMasterFile::checkPlace(std::string const& master) {
    fs::path directory = directoryOf(master);
    while (!fs::exists(directory) && directory.has_relative_path())
        directory = directory.parent_path();
    checkDirectory(directory);
}

bool MoDiffMasterFile::replace(std::string const& master, std::string const& source, std::string const& sum) {
    MoDiffInputFile input(source);
    fs::create_directories(directoryOf(master));
    Temporary temporary{temporaryFor(master)};
    MoDiffDescriptor const file(open(temporary.name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file)
        fail("cannot write " + temporary.name);
    MoDiffSha256 written;
    input.readAll([&](char const* bytes, std::size_t count) {
        written.add(bytes, count);
        writeAll(file.get(), {bytes, count}, master);
    });
    if (written.getDigits() != sum)
        return false;
    takeOver(file.get(), master);
    if (fsync(file.get()) < 0)
        fail("cannot write " + master);
    if (std::rename(temporary.name.c_str(), master.c_str()) < 0)
        fail("cannot replace " + master);
    temporary.isRenamed = true;
    synchronizeDirectory(directoryOf(master));
    return true;
}

void MoDiffMasterFile::remove(std::string const& master) {
    if (unlink(master.c_str()) < 0)
        fail("cannot remove " + master);
    synchronizeDirectory(directoryOf(master));
}

void MoDiffMasterFile::removeTemporary(std::string const& master) {
    unlink(temporaryFor(master).c_str()); // mostly there is none
}
