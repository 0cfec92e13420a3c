#ifndef MO_DIFF_STRAY_PROCESSES_H
#define MO_DIFF_STRAY_PROCESSES_H

#include <functional>
#include <sys/types.h>
#include <vector>

/// Processes that were left behind by those that started them. A process that adopts them (adopt()) becomes their
/// parent, wherever below it they were started, and can end them.
namespace MoDiffStrayProcesses {

/// Makes this process the parent of what its descendants leave behind.
void adopt();

/// The children of this process.
std::vector<pid_t> list();

/// Ends and reaps all children of this process but those that are known, and what these leave behind in turn.
void end(std::function<bool(pid_t)> const& isKnown);

} // namespace MoDiffStrayProcesses

#endif
