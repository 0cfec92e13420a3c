#include "MoDiffToolCheck.h"

#include "KLTFmDir.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

char const MoDiffToolCheck::kToolsDirectory[] = "../../src/kavu/Builds/tools/";

namespace {

unsigned short const kRegularFileReadableByOwner = 0x8100;

/// The Debian packages of programs. Those of python modules stand in the scripts' common module, which names them,
/// too, when a script is run by itself.
std::map<std::string, std::string> const kPackages = {
    {"python", "python-is-python3"},
    {"pdfinfo", "poppler-utils"},
    {"pdftotext", "poppler-utils"},
    {"pdftoppm", "poppler-utils"},
};

char const kOurModule[] = "modifftools";

/// Begins each line of the probe: start files of the interpreter may print, too.
char const kMark[] = "modiff-probe:";

/// The status of a probe that came to its end. One that a start file ends, or whose status it changes, has another.
int constexpr kProbeStatus = 73;

/// Tells interpreter and version, then each module that cannot be imported with its package, as the scripts' module
/// names it or else as Debian would call it, then that it is done.
/// Modules are looked for beside the scripts, as when these run, and not in the working directory, whose files are
/// not to be executed. Start files are not left out, since the engines' command does not leave them out either.
char const kProbe[] = R"(import sys
def tell(*words):
    print("\n" + sys.argv[1], *words, flush=True)
def lacks(module):
    try:
        __import__(module)
        return False
    except BaseException:
        return True
sys.dont_write_bytecode = True
sys.path = [sys.argv[3]] + [path for path in sys.path if path]
tell("python", sys.executable + ",", "version", sys.version.split()[0])
packages = {}
for module in sys.argv[4:]:
    if lacks(module):
        tell("lacks", module, packages.get(module, "python3-" + module.lower()))
    elif module == "modifftools":
        packages = getattr(sys.modules[module], "PACKAGES", {})
tell("done")
sys.exit(int(sys.argv[2]))
)";

/// What a probe told.
struct Probe {
    std::string interpreter;                                  ///< path and version; "" when it does not run
    std::vector<std::pair<std::string, std::string>> modules; ///< that are missing, and their packages
    bool isComplete = false;
    std::string lastLine; ///< for the reason when it is not
};

bool isFile(std::string const& path) {
    return KLTFmDir::exists(path.c_str(), kRegularFileReadableByOwner);
}

std::vector<std::string> split(std::string const& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
        if (!part.empty())
            parts.push_back(part);
    return parts;
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

std::string installing(std::string const& package) {
    return "get it with: apt-get install " + package;
}

/// All that a command prints, and its status.
std::string outputOf(std::string const& command, int& status) {
    FILE* const pipe = popen(command.c_str(), "re");
    if (!pipe)
        throw std::system_error(errno, std::generic_category(), "cannot start python");
    std::string text;
    char block[512];
    for (std::size_t count; (count = std::fread(block, 1, sizeof block, pipe)) > 0;)
        text.append(block, count);
    status = pclose(pipe);
    return text;
}

Probe probe(std::string const& modules) {
    int status = 0;
    std::string const command = std::string("python -c '") + kProbe + "' " + kMark + " " +
                                std::to_string(kProbeStatus) + " " + MoDiffToolCheck::kToolsDirectory + " " +
                                modules + " 2>&1 </dev/null";
    Probe result;
    bool isDone = false;
    for (std::string const& line : split(outputOf(command, status), '\n')) {
        result.lastLine = line;
        std::istringstream words(line);
        std::string mark, kind, module, package;
        words >> mark >> kind;
        if (mark != kMark)
            continue;
        if (kind == "python")
            std::getline(words >> std::ws, result.interpreter);
        else if (kind == "lacks" && words >> module >> package)
            result.modules.emplace_back(module, package);
        isDone = kind == "done";
    }
    result.isComplete = isDone && WIFEXITED(status) && WEXITSTATUS(status) == kProbeStatus;
    return result;
}

void findMissingModules(std::string const& modules, std::vector<MoDiffToolCheck::Lack>& lacks) {
    Probe const found = probe(modules);
    if (!found.isComplete) {
        bool const isSilent = found.lastLine.empty() || found.lastLine.rfind(kMark, 0) == 0;
        lacks.push_back(
            {"the python that comes first in PATH does not run programs to their end" +
                 (isSilent ? "" : ": " + found.lastLine),
             "see what `python -c \"exit(3)\"; echo $?` says, which is to be 3 alone; sitecustomize.py and "
             "usercustomize.py are run before each program"});
        return;
    }
    for (auto const& [module, package] : found.modules)
        lacks.push_back({"the python that comes first in PATH, " + found.interpreter + ", finds no module " + module,
                         module == kOurModule ? "lay it out beside the scripts with: modiff install-tools DIR"
                                              : installing(package) + " (and let Debian's /usr/bin come first in "
                                                                      "PATH)"});
}

} // namespace

std::vector<MoDiffToolCheck::Lack> MoDiffToolCheck::findLacks(MoDiffTool const& tool) {
    std::vector<Lack> lacks;
    std::string const script = std::string(kToolsDirectory) + tool.script;
    bool const hasScript = isFile(script);
    if (!hasScript)
        lacks.push_back({"there is no script " + script, "lay the scripts out with: modiff install-tools DIR, where "
                                                         "DIR is two levels above the working directory"});
    std::string const interpreter = "python ";
    for (std::string const& program : split(interpreter + tool.programs, ' '))
        if (!isInPath(program))
            lacks.push_back({"there is no program " + program + " in PATH", installing(kPackages.at(program))});
    if (isInPath("python")) // without the scripts their own module is no news
        findMissingModules((hasScript ? std::string(kOurModule) + " " : "") + tool.modules, lacks);
    return lacks;
}

std::vector<std::string> MoDiffToolCheck::findMissing(MoDiffTool const& tool) {
    std::vector<std::string> sentences;
    for (Lack const& lack : findLacks(tool))
        sentences.push_back(lack.text + "; " + lack.remedy);
    return sentences;
}

std::string MoDiffToolCheck::describeInterpreter() {
    return isInPath("python") ? probe("").interpreter : "";
}
