// The tool on networks of 10,000 and of 100,000 resources, run as its users run it: time of the
// processor and the most memory of each command. What reads by pages needs no more memory for more
// rows, and nothing takes more time for a row of many than for one of few.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr double kTimes = 10;  // as many resources in the large network as in the small one
constexpr char kSizes[][8] = {"10000", "100000"};

struct Cost {
    double seconds = 0;
    double megabytes = 0;
};

[[noreturn]] void fail(const std::string &what) {
    std::fprintf(stderr, "%s failed\n", what.c_str());
    std::exit(1);
}

[[noreturn]] void become(const std::vector<std::string> &command, const std::string &output) {
    std::vector<char *> arguments;
    for (const std::string &argument : command)
        arguments.push_back(const_cast<char *>(argument.c_str()));
    arguments.push_back(nullptr);
    if (std::freopen(output.c_str(), "w", stdout) != nullptr)
        execvp(arguments[0], arguments.data());
    _exit(127);
}

Cost run(const std::vector<std::string> &command, const std::string &output = "/dev/null") {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0)
        become(command, output);
    int status = 0;
    rusage used = {};
    if (wait4(child, &status, 0, &used) != child || status != 0)
        fail(command.front() + " " + command.at(1));
    const auto seconds = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return {seconds(used.ru_utime) + seconds(used.ru_stime),
            static_cast<double>(used.ru_maxrss) / 1024};
}

struct Work {
    const char *name;
    std::vector<std::string> arguments;
    bool by_pages;
    std::array<Cost, 2> costs{};
};

std::vector<Work> all_work(const std::string &folder) {
    const std::string everyone = "//locations;locationId=global?:com.example.network:1.0/Port";
    const std::string document = folder + "/document.xml";
    std::ofstream(document) << "<port uri=\"" << everyone
                            << "\" mr=\"com.example.network:1.0/Port\" op=\"get\"><name/><mtu/>"
                               "</port>";
    return {{"load", {"load", folder + "/data.json"}, false},
            {"get of all ports", {"get", everyone, "name", "mtu", "-f", "text"}, false},
            {"query of all ports", {"query", document, "--count", "500", "--all"}, true},
            {"export", {"export"}, true}};
}

void measure(std::vector<Work> &works, size_t size, const std::string &folder) {
    run({NETWORK_GENERATE, kSizes[size]}, folder + "/data.json");
    for (Work &work : works) {
        std::vector<std::string> command{ORUCTL};
        command.insert(command.end(), work.arguments.begin(), work.arguments.end());
        if (work.arguments.front() == "load") {
            for (const char *end : {"", "-wal", "-shm"})
                std::filesystem::remove(folder + "/network.db" + end);
        }
        work.costs[size] = run(command);
    }
}

const char *words(bool holds) {
    return holds ? "holds" : "DOES NOT HOLD";
}

void print(const Work &work) {
    constexpr double kMostTime = 1.4 * kTimes;
    constexpr double kMostMemory = 1.5;
    const auto &[few, many] = work.costs;
    const double time = many.seconds / few.seconds;
    std::printf("%-20s %6.2f s   %6.2f s  %5.1f times (%.0f or less: %s)   %6.1f MB   %6.1f MB",
                work.name, few.seconds, many.seconds, time, kMostTime, words(time <= kMostTime),
                few.megabytes, many.megabytes);
    const double memory = many.megabytes / few.megabytes;
    if (work.by_pages)
        std::printf("  %4.1f times (%.1f or less: %s)", memory, kMostMemory,
                    words(memory <= kMostMemory));
    std::printf("\n");
}

}  // namespace

int main() {
    char path[] = "/tmp/oructl_bench_XXXXXX";
    if (mkdtemp(path) == nullptr)
        return 1;
    const std::string folder = path;
    setenv("ORUCTL_DB", (folder + "/network.db").c_str(), 1);
    setenv("ORUCTL_MODEL", NETWORK_PACKAGES, 1);
    std::vector<Work> works = all_work(folder);
    for (size_t size : {0, 1})
        measure(works, size, folder);
    std::printf("%-20s %s and %s resources\n", "", kSizes[0], kSizes[1]);
    for (const Work &work : works)
        print(work);
    std::filesystem::remove_all(folder);
}
