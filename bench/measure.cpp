// Runs one command and says what it took: measure OUT COMMAND [ARGUMENT...] writes to OUT one line of
// seconds by the clock, processor seconds, peak resident KiB, and exit status (128 + signal when a
// signal ended it), and exits with that status. SIGTERM to both ends the command only, so that what it
// took until then is told.
//
// It stays this small because Linux counts a new process's peak from the memory of the process that
// started it: a large parent would hide what a small child needs. What it cannot see is a peak
// under its own, about 3,500 KiB.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <span>

namespace {

double Seconds(const timeval& t) {
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
}

}  // namespace

int main(int count, char** values) {
    const std::span arguments(values, static_cast<std::size_t>(count));
    if (count < 3) {
        std::fputs("usage: measure OUT COMMAND [ARGUMENT...]\n", stderr);
        return 2;
    }
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child < 0) {
        std::perror("measure: fork");
        return 2;
    }
    if (child == 0) {
        execvp(arguments[2], &arguments[2]);
        std::perror(arguments[2]);
        _exit(127);
    }
    std::signal(SIGTERM, SIG_IGN);
    int status = 0;
    rusage usage{};
    if (wait4(child, &status, 0, &usage) != child) {
        std::perror("measure: wait4");
        return 2;
    }
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);

    std::FILE* out = std::fopen(arguments[1], "w");
    if (out == nullptr) {
        std::perror(arguments[1]);
        return 2;
    }
    std::fprintf(out, "%.4f %.4f %ld %d\n", wall.count(), Seconds(usage.ru_utime) + Seconds(usage.ru_stime),
                 usage.ru_maxrss, code);
    return std::fclose(out) == 0 ? code : 2;
}
