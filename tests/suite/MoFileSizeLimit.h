#ifndef MO_FILE_SIZE_LIMIT_H
#define MO_FILE_SIZE_LIMIT_H

#include <csignal>
#include <sys/resource.h>

/// Lets files grow only so far, as a full disk does.
class MoFileSizeLimit {
public:
    explicit MoFileSizeLimit(rlim_t bytes) : m_handler(signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit const limit = {bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~MoFileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        signal(SIGXFSZ, m_handler);
    }
    MoFileSizeLimit(MoFileSizeLimit const&) = delete;
    MoFileSizeLimit& operator=(MoFileSizeLimit const&) = delete;

private:
    rlimit m_before;
    sighandler_t m_handler;
};

#endif
