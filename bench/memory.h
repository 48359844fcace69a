// Resident bytes that each of many objects costs, everything around them included. Each kind is
// measured in a process of its own, so that no other one's free memory serves it.
#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace oru::bench {

inline long resident_bytes() {
    char text[64] = "";
    const int file = open("/proc/self/statm", O_RDONLY);
    const ssize_t length = read(file, text, sizeof text - 1);
    close(file);
    long pages = 0;
    return length > 0 && std::sscanf(text, "%*d %ld", &pages) == 1 ? pages * sysconf(_SC_PAGESIZE)
                                                                   : 0;
}

// The most that was ever resident.
inline long peak_bytes() {
    long kilobytes = 0;
    char line[128];
    std::FILE *file = std::fopen("/proc/self/status", "r");
    while (file != nullptr && std::fgets(line, sizeof line, file) != nullptr &&
           std::sscanf(line, "VmHWM: %ld", &kilobytes) != 1) {
    }
    if (file != nullptr) {
        std::fclose(file);
    }
    return kilobytes * 1024;
}

// The most that `work` needs beyond what there was before it.
template <class Work>
double peak_bytes_of(Work work) {
    int ends[2];
    double bytes = 0;
    if (pipe(ends) != 0) {
        return bytes;
    }
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        const long before = resident_bytes();
        work();
        bytes = static_cast<double>(peak_bytes() - before);
        _exit(write(ends[1], &bytes, sizeof bytes) == sizeof bytes ? 0 : 1);
    }
    close(ends[1]);
    if (read(ends[0], &bytes, sizeof bytes) != sizeof bytes) {
        bytes = 0;
    }
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return bytes;
}

// Prints the bytes of one of the `count` objects that `make_all` makes and keeps. `prepare` runs
// before.
template <class Prepare, class MakeAll>
void print_bytes_each(const char *what, const char *where, int count, Prepare prepare,
                      MakeAll make_all) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        prepare();
        const long before = resident_bytes();
        make_all();
        const double bytes = static_cast<double>(resident_bytes() - before) / count;
        std::printf("%-32s %-10s %7.1f bytes\n", what, where, bytes);
        std::fflush(stdout);
        _exit(0);
    }
    waitpid(child, nullptr, 0);
}

// The same for objects that `make(i)` makes one by one.
template <class Prepare, class Make>
void print_bytes_of(const char *what, const char *where, Prepare prepare, Make make) {
    constexpr int kWarm = 1000;
    constexpr int kCount = 200000;
    const auto make_many = [&make](int count) {
        for (int i = 0; i < count; i++) {
            make(i);
        }
    };
    const auto prepare_and_warm = [&] {
        prepare();
        make_many(kWarm);
    };
    print_bytes_each(what, where, kCount, prepare_and_warm, [&] { make_many(kCount); });
}

}  // namespace oru::bench
