// The trap console's whole road under load: traps sent to snmptrapd, each
// stored by kxtrapreceive, while the trap page is requested through
// lighttpd. Figures: sustained traps per second (beside snmptrapd handing
// the same traps to a program that does nothing) and the page's latency
// under that load (beside the same page of the same store when idle), for
// 1,000 and 10,000 traps.
#include <signal.h>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "support/trap_console.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr int kWebPort = 18931;
constexpr size_t kSamples = 4;  // the sample traps of every console site
constexpr int kInFlight = 50;   // traps sent but not yet received: kept below the socket's buffer

struct Site {
    std::string path;
    pid_t web = -1;
    explicit Site(bool store) {
        path = (std::filesystem::temp_directory_path() / "kx-bench-console-XXXXXX").string();
        if (mkdtemp(path.data()) == nullptr) std::exit(1);
        const std::string layout = std::string(KX_SOURCE_DIR) + "/tools/console-site.sh " + path + " " +
                                   KX_CONSOLE_CGI + " " + std::to_string(kWebPort) + " >/dev/null";
        if (std::system(layout.c_str()) != 0) std::exit(1);
        if (!store) std::ofstream(path + "/run/snmptrapd.conf") << "disableAuthorization yes\nformat2 received %b\\n\n"
                                                                      "traphandle default /bin/true\n";
        web = fork();
        if (web == 0) {
            const std::string config = path + "/lighttpd.conf";
            execlp("lighttpd", "lighttpd", "-D", "-f", config.c_str(), static_cast<char *>(nullptr));
            _exit(127);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
    }
    ~Site() {
        kill(web, SIGTERM);
        waitpid(web, nullptr, 0);
        std::filesystem::remove_all(path);
    }
};

// Seconds of one request of the trap page (curl's own figure), -1 on failure.
double PageSeconds() {
    const std::string command = "curl -s -o /dev/null -w '%{http_code} %{time_total}' 'http://127.0.0.1:" +
                                std::to_string(kWebPort) + "/console.cgi?Application=console&Page=traps.htm'";
    FILE *pipe = popen(command.c_str(), "r");
    int status = 0;
    double seconds = -1;
    if (pipe == nullptr || std::fscanf(pipe, "%d %lf", &status, &seconds) != 2 || status != 200) seconds = -1;
    if (pipe != nullptr) pclose(pipe);
    return seconds;
}

double Median(std::vector<double> values) {
    if (values.empty()) return 0;
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
    return values[values.size() / 2];
}

// The trap files renamed into a store since the object was made, counted
// from the directory's notifications: listing 10,000 names at every poll
// took the CPU that the road itself needs on a small machine.
class Arrivals {
public:
    explicit Arrivals(const std::string &site) : fd_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)), site_(site) {
        if (fd_ >= 0 && inotify_add_watch(fd_, (site + "/traps").c_str(), IN_MOVED_TO) < 0) exact_ = false;
    }
    ~Arrivals() { if (fd_ >= 0) close(fd_); }
    Arrivals(const Arrivals &) = delete;
    Arrivals &operator=(const Arrivals &) = delete;
    size_t Count() {
        alignas(inotify_event) char buffer[64 * 1024];
        for (ssize_t n; fd_ >= 0 && (n = read(fd_, buffer, sizeof buffer)) > 0;)
            for (const char *at = buffer; at < buffer + n;) {
                const auto *event = reinterpret_cast<const inotify_event *>(at);
                if (event->mask & IN_Q_OVERFLOW) exact_ = false;
                if (event->len > 0 && event->name[0] == 'T' && std::isdigit(static_cast<unsigned char>(event->name[1])))
                    ++count_;
                at += sizeof(inotify_event) + event->len;
            }
        return exact_ && fd_ >= 0 ? count_ : kx::test::StoredTraps(site_).size() - kSamples;
    }

private:
    int fd_;
    std::string site_;
    size_t count_ = 0;
    bool exact_ = true;
};

// Sends count traps, never more than kInFlight ahead of what arrived;
// returns traps per second from the first send to the last arrival.
double Road(const kx::test::TrapReceiver &receiver, int count, Arrivals *stored) {
    auto arrived = [&] { return stored != nullptr ? stored->Count() : static_cast<size_t>(receiver.Accepted()); };
    const auto start = Clock::now();
    for (int i = 0; i < count; ++i) {
        while (i % 10 == 0 && static_cast<int>(arrived()) < i - kInFlight)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        kx::test::SendTrap(receiver.port(), "1.3.6.1.4.1.99999.0.3", "1.3.6.1.4.1.99999.2.1.0", "FAN" + std::to_string(i));
    }
    for (auto last = arrived(); last < static_cast<size_t>(count); last = arrived()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        if (Clock::now() - start > std::chrono::seconds(600)) break;
    }
    const std::chrono::duration<double> took = Clock::now() - start;
    return static_cast<double>(arrived()) / took.count();
}

void Run(int count) {
    double reference = 0;
    {
        Site site(false);
        kx::test::TrapReceiver receiver(site.path);
        reference = Road(receiver, count, nullptr);
    }
    Site site(true);
    Arrivals arrivals(site.path);
    kx::test::TrapReceiver receiver(site.path);
    std::atomic<bool> loading = true;
    std::vector<double> loaded;
    int failed = 0;
    std::thread reader([&] {
        while (loading) {
            const double seconds = PageSeconds();
            seconds < 0 ? ++failed : (loaded.push_back(seconds), 0);
        }
    });
    const double rate = Road(receiver, count, &arrivals);
    loading = false;
    reader.join();
    std::vector<double> idle;
    for (int i = 0; i < 5; ++i) idle.push_back(PageSeconds());
    const size_t stored = receiver.Traps().size() - kSamples;
    std::printf("%6d traps: %8.1f traps/s stored   snmptrapd to /bin/true %8.1f traps/s   ratio %.3f\n", count,
                rate, reference, rate / reference);
    std::printf("%6d traps: trap page under load %8.1f ms (median of %zu, %d failed)   idle %8.1f ms   ratio %.2f   "
                "stored %zu of %d\n",
                count, Median(loaded) * 1e3, loaded.size(), failed, Median(idle) * 1e3, Median(loaded) / Median(idle),
                stored, count);
}

}  // namespace

int main() {
    for (int count : {1000, 10000}) Run(count);
    return 0;
}
