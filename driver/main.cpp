#include "MoDiffCommandLine.h"
#include "MoDiffExitStatus.h"
#include "MoDiffTrouble.h"

#include <csignal>
#include <exception>
#include <fcntl.h>
#include <unistd.h>

namespace {

/// A file that is opened must not take the number of a standard stream that was closed.
void fillStandardStreams() {
    while (true) {
        int const descriptor = open("/dev/null", O_RDWR);
        if (descriptor > STDERR_FILENO)
            close(descriptor);
        if (descriptor < 0 || descriptor > STDERR_FILENO)
            return;
    }
}

} // namespace

int main(int count, char** arguments) {
    fillStandardStreams();
    std::signal(SIGPIPE, SIG_IGN); // a reader that goes away must not keep summary and log from being completed
    std::signal(SIGXFSZ, SIG_IGN); // a file that gets too long is an error like any other
    try {
        return MoDiffCommandLine::run(count, arguments);
    } catch (std::exception const& error) {
        MoDiffTrouble().report(error);
        return eExitTrouble;
    }
}
