#include "MoDiffPager.h"

#include <cstdlib>
#include <fcntl.h>
#include <iostream>
#include <sys/wait.h>
#include <unistd.h>

MoDiffPager::MoDiffPager() {
    char const* const pager = std::getenv("PAGER");
    std::string const command = pager ? pager : "less";
    if (isatty(STDOUT_FILENO) && !command.empty() && command != "cat")
        start(command);
}

void MoDiffPager::start(std::string const& command) {
    int ends[2];
    std::cout.flush();
    if (pipe2(ends, O_CLOEXEC) < 0)
        return;
    m_process = fork();
    if (m_process == 0) {
        dup2(ends[0], STDIN_FILENO);
        setenv("LESS", "FRX", /*replace=*/0);
        std::signal(SIGPIPE, SIG_DFL);
        execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        _exit(127);
    }
    close(ends[0]);
    if (m_process > 0) {
        m_output = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        dup2(ends[1], STDOUT_FILENO);
        m_interruptBefore = std::signal(SIGINT, SIG_IGN); // it is meant for the pager
    }
    close(ends[1]);
}

MoDiffPager::~MoDiffPager() {
    if (m_output < 0)
        return;
    std::cout.flush();
    std::cout.clear(); // a pager that was left early is no failure
    dup2(m_output, STDOUT_FILENO);
    close(m_output);
    waitpid(m_process, nullptr, 0);
    std::signal(SIGINT, m_interruptBefore);
}

bool MoDiffPager::isLeft() const {
    return m_output >= 0 && !std::cout.good();
}
