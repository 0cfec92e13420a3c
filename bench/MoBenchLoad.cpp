// Loads the shared libraries given, in this order, and prints how many CPU seconds each took.

#include <cstdio>
#include <ctime>
#include <dlfcn.h>

namespace {

double cpuSeconds() {
    timespec now;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

} // namespace

int main(int count, char** arguments) {
    for (int index = 1; index < count; ++index) {
        double const begin = cpuSeconds();
        if (!dlopen(arguments[index], RTLD_NOW)) {
            std::fprintf(stderr, "%s\n", dlerror());
            return 2;
        }
        std::printf("%.7f\n", cpuSeconds() - begin);
    }
}
