#include "MoDiffInstallTools.h"

#include "MoDiffInput.h"
#include "MoDiffOutputFile.h"
#include "MoDiffShownText.h"
#include "MoDiffToolCheck.h"

#include <filesystem>
#include <ostream>
#include <stdexcept>
#include <vector>

namespace fs = std::filesystem;

namespace {

/// The directory with the scripts, installed beside this program.
fs::path findTools() {
    fs::path const installed = fs::read_symlink("/proc/self/exe").parent_path() / MODIFF_TOOLS_FROM_BIN;
    if (fs::is_directory(installed))
        return fs::canonical(installed);
    throw std::runtime_error("the scripts are not where they were installed, in " +
                             installed.lexically_normal().string());
}

std::vector<fs::path> filesBelow(fs::path const& directory) {
    std::vector<fs::path> files;
    for (fs::recursive_directory_iterator entry(directory), end; entry != end; ++entry) {
        if (entry->path().filename() == "__pycache__")
            entry.disable_recursion_pending();
        else if (entry->is_regular_file())
            files.push_back(entry->path());
    }
    return files;
}

} // namespace

void MoDiffInstallTools::install(std::string const& directory, std::ostream& out) {
    fs::path const source = findTools();
    fs::path const runDirectory = fs::path(directory) / "server/run"; // any one two levels below
    fs::path const target = (runDirectory / MoDiffToolCheck::kToolsDirectory).lexically_normal().parent_path();
    fs::create_directories(target);
    if (fs::equivalent(source, target))
        throw std::runtime_error(target.string() + " is the directory that the scripts would be copied from");
    std::vector<fs::path> const files = filesBelow(source);
    for (fs::path const& file : files) {
        fs::path const copy = target / fs::relative(file, source);
        fs::create_directories(copy.parent_path());
        MoDiffOutputFile::replace(copy.string(), MoDiffInput::readWhole(file.string()),
                                  static_cast<unsigned>(fs::status(file).permissions()));
    }
    out << files.size() << " files in " << MoDiffShownText::escaped(target.string())
        << "\nRun modiff from a directory two levels below " << MoDiffShownText::escaped(directory)
        << ", so that the engines find them at " << fs::path(MoDiffToolCheck::kToolsDirectory).parent_path().string()
        << ".\n";
}
