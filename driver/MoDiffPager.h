#ifndef MO_DIFF_PAGER_H
#define MO_DIFF_PAGER_H

#include <csignal>
#include <string>
#include <sys/types.h>

/// Leads standard output through the user's pager as long as it lives, when it is a terminal: $PAGER, or less, which
/// ends at once when all fits on the screen. Waits for the pager at its end.
class MoDiffPager {
public:
    MoDiffPager();
    ~MoDiffPager();
    MoDiffPager(MoDiffPager const&) = delete;
    MoDiffPager& operator=(MoDiffPager const&) = delete;

    /// Whether the user has left the pager, so that nobody reads what is written.
    bool isLeft() const;

private:
    void start(std::string const& command);

    int m_output = -1; ///< standard output as it was; -1 without a pager
    pid_t m_process = -1;
    void (*m_interruptBefore)(int) = SIG_DFL;
};

#endif
