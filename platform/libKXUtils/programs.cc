// Starting another program: always with an argument vector and never
// through a shell, so no text handed to it can become a second command.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "companion/libKXUtils.h"

extern char **environ;

namespace kxutils {
namespace {

constexpr char kSynchronous[] = "synchron";
// How long a program may run when the caller names no limit.
constexpr int kDefaultSeconds = 30;
// How often a running child is looked at while the caller waits for it.
constexpr long kPollNanoseconds = 5'000'000;

double Now() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// Starts argv[0] with argv in a process group of its own, so that a child
// that runs too long can be stopped together with what it started. Its
// standard input is /dev/null: the request still waiting on ours is not its
// to read. Standard output is shared, so what it prints joins the page.
pid_t Spawn(char *const argv[]) {
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
    if (posix_spawnattr_init(&attributes) != 0) return -1;
    if (posix_spawn_file_actions_init(&actions) != 0) {
        posix_spawnattr_destroy(&attributes);
        return -1;
    }
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    pid_t pid = -1;
    const int failed = posix_spawnp(&pid, argv[0], &actions, &attributes, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return failed == 0 ? pid : -1;
}

// Waits for the child until the deadline; kills its group past it. The
// child is reaped on every path.
int Reap(pid_t pid, double deadline) {
    int status = 0;
    for (;;) {
        const pid_t done = waitpid(pid, &status, WNOHANG);
        if (done == pid) break;
        if (done < 0 && errno != EINTR) return -1;
        if (Now() >= deadline) {
            kill(-pid, SIGKILL);
            while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {}
            return -1;
        }
        const timespec pause{0, kPollNanoseconds};
        nanosleep(&pause, nullptr);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace
}  // namespace kxutils

extern "C" int KXUtilsStartProgram(const char *mode, int argc, char **argv, int seconds) {
    if (mode == nullptr || std::strcmp(mode, kxutils::kSynchronous) != 0) return -1;
    if (argc < 1 || argv == nullptr || argv[0] == nullptr || *argv[0] == '\0') return -1;
    std::vector<char *> vector;
    for (int i = 0; i < argc && argv[i] != nullptr; ++i) vector.push_back(argv[i]);
    vector.push_back(nullptr);
    const double limit = seconds > 0 ? seconds : kxutils::kDefaultSeconds;
    const pid_t pid = kxutils::Spawn(vector.data());
    if (pid < 0) return -1;
    return kxutils::Reap(pid, kxutils::Now() + limit);
}
