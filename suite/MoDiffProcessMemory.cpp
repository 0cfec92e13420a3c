#include "MoDiffProcessMemory.h"

#include <fstream>
#include <string>
#include <unistd.h>

std::uint64_t MoDiffProcessMemory::ofTree(pid_t process) {
    std::string const directory = "/proc/" + std::to_string(process);
    std::uint64_t total = 0;
    std::uint64_t resident = 0;
    std::uint64_t ofFiles = 0;
    if (std::ifstream(directory + "/statm") >> total >> resident >> ofFiles)
        total = (resident - ofFiles) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    else
        total = 0; // it has gone
    std::ifstream children(directory + "/task/" + std::to_string(process) + "/children");
    for (pid_t child = 0; children >> child;)
        total += ofTree(child);
    return total;
}
