#ifndef MO_DIFF_PROCESS_MEMORY_H
#define MO_DIFF_PROCESS_MEMORY_H

#include <cstdint>
#include <sys/types.h>

namespace MoDiffProcessMemory {

/// The bytes that a process and all its descendants hold in memory, parts of files left out. Pages that a process
/// shares with one that it was forked from count for both.
std::uint64_t ofTree(pid_t process);

} // namespace MoDiffProcessMemory

#endif
