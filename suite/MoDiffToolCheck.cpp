#include "MoDiffToolCheck.h"

#include "KLTFmDir.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>
#include <system_error>
#include <unistd.h>

char const MoDiffToolCheck::kToolsDirectory[] = "../../src/kavu/Builds/tools/";

namespace {

unsigned short const kRegularFileReadableByOwner = 0x8100;

std::map<std::string, std::string> const kPackages = {
    {"python", "python-is-python3"}, {"openpyxl", "python3-openpyxl"}, {"defusedxml", "python3-defusedxml"},
    {"PIL", "python3-pil"},          {"pdfinfo", "poppler-utils"},     {"pdftotext", "poppler-utils"},
    {"pdftoppm", "poppler-utils"},
};

/// Prints the interpreter's path, then each module that cannot be imported. Modules are looked for beside the
/// scripts, as when these run, and not in the working directory, whose files are not to be executed.
char const kProbe[] = R"(import sys
sys.dont_write_bytecode = True
sys.path[0] = sys.argv[1]
print(sys.executable)
for module in sys.argv[2:]:
    try:
        __import__(module)
    except Exception:
        print(module)
)";

bool isFile(std::string const& path) {
    return KLTFmDir::exists(path.c_str(), kRegularFileReadableByOwner);
}

std::vector<std::string> split(std::istream& text, char separator) {
    std::vector<std::string> parts;
    for (std::string part; std::getline(text, part, separator);)
        if (!part.empty())
            parts.push_back(part);
    return parts;
}

std::vector<std::string> split(std::string const& text, char separator) {
    std::istringstream stream(text);
    return split(stream, separator);
}

bool isInPath(std::string const& program) {
    char const* const path = std::getenv("PATH");
    for (std::string const& directory : split(path ? path : "", ':')) {
        std::string const candidate = std::string(directory).append("/").append(program);
        if (isFile(candidate) && access(candidate.c_str(), X_OK) == 0)
            return true;
    }
    return false;
}

std::string installing(std::string const& what) {
    return "; get it with: apt-get install " + kPackages.at(what);
}

/// The lines that a command prints, and its status.
std::vector<std::string> linesOf(std::string const& command, int& status) {
    FILE* const pipe = popen(command.c_str(), "re");
    if (!pipe)
        throw std::system_error(errno, std::generic_category(), "cannot start python");
    std::string text;
    char block[512];
    for (std::size_t count; (count = std::fread(block, 1, sizeof block, pipe)) > 0;)
        text.append(block, count);
    status = pclose(pipe);
    return split(text, '\n');
}

void findMissingModules(std::string const& modules, std::vector<std::string>& missing) {
    int status = 0;
    std::vector<std::string> const lines = linesOf(std::string("python -c '") + kProbe + "' " +
                                                       MoDiffToolCheck::kToolsDirectory + " modifftools " + modules,
                                                   status);
    if (status != 0 || lines.empty()) {
        missing.push_back("the python that comes first in PATH does not run");
        return;
    }
    for (std::size_t index = 1; index < lines.size(); ++index) {
        std::string const& module = lines[index];
        bool const isOurs = module == "modifftools";
        missing.push_back("the python that comes first in PATH, " + lines[0] + ", finds no module " + module +
                          (isOurs ? "; lay it out beside the scripts with: modiff install-tools DIR"
                                  : installing(module) + " (and let Debian's /usr/bin come first in PATH)"));
    }
}

} // namespace

std::vector<std::string> MoDiffToolCheck::findMissing(MoDiffTool const& tool) {
    std::vector<std::string> missing;
    std::string const script = std::string(kToolsDirectory) + tool.script;
    if (!isFile(script))
        missing.push_back("there is no script " + script +
                          "; lay the scripts out with: modiff install-tools DIR, where DIR is two levels above the "
                          "working directory");
    for (std::string const& program : split(tool.programs, ' '))
        if (!isInPath(program))
            missing.push_back("there is no program " + program + " in PATH" + installing(program));
    if (!isInPath("python"))
        missing.push_back("there is no program python in PATH" + installing("python"));
    else if (missing.empty())
        findMissingModules(tool.modules, missing);
    return missing;
}
