// A reporter that prints, behind the usual table, how many times as long a peer takes as we do, for
// each kind of work, and whether the bound that was stated for it holds. Benchmarks are named
// "work/contender...", ours being the contender "ours":
//
//     compare("append a text/ours", append_text);
//     compare("append a text/std::string", append_text_peer);
//     expect("append a text", "std::string", at_most(1.2));
//     return run_all(argc, argv);
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace oru::bench {

// The least that a peer's time divided by ours may be.
using Bound = double;

// We take at most so many times as long as the peer.
constexpr Bound at_most(double times) {
    return 1 / times;
}

// We are at least so many times as fast as the peer.
constexpr Bound at_least(double times) {
    return times;
}

// The bounds by work and peer.
inline std::map<std::string, std::map<std::string, Bound>> stated_bounds;

inline void expect(const std::string &work, const std::string &peer, Bound bound) {
    stated_bounds[work][peer] = bound;
}

// What contenders need of memory for a work, which is printed and bounded as times are.
inline std::map<std::string, std::map<std::string, double>> measured_bytes;

inline void measure_bytes(const std::string &work, const std::string &contender, double bytes) {
    measured_bytes[work][contender] = bytes;
}

// Registers a work for one contender, on one thread. The best of the repetitions counts, in time of
// the processor: of many short ones, since on a machine that others use a long one is never left
// alone.
template <class Body>
void compare(const std::string &name, Body body, int repetitions = 100) {
    benchmark::RegisterBenchmark(name.c_str(), body)->Repetitions(repetitions)->MinTime(0.002);
}

class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run> &runs) override {
        ConsoleReporter::ReportRuns(shown(runs));
        for (const Run &run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                note(run);
            }
        }
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf(
            "\npeer's time / our time (above 1: ours is faster), and bytes alike;\n"
            "times of one round, all threads together; best of the repetitions;\n"
            "time of the processor on one thread, of the clock on more\n");
        for (const auto &[work, contenders] : best_) {
            print(work, work.substr(0, work.rfind(' ')), contenders, kNanoseconds);
        }
        for (const auto &[work, contenders] : measured_bytes) {
            print(work, work, contenders, kMegabytes);
        }
        if (!stated_bounds.empty()) {
            std::printf("bounds that do not hold: %d\n", missed_);
        }
    }

  private:
    using Contenders = std::map<std::string, double>;

    struct Unit {
        const char *name;
        double size;
    };
    static constexpr Unit kNanoseconds{"ns", 1e-9};
    static constexpr Unit kMegabytes{"MB", 1e6};

    // Of repetitions the median and its variation tell enough.
    static std::vector<Run> shown(const std::vector<Run> &runs) {
        std::vector<Run> shown;
        std::copy_if(runs.begin(), runs.end(), std::back_inserter(shown), [](const Run &run) {
            return run.repetitions <= 1 || run.aggregate_name == "median" ||
                   run.aggregate_name == "cv";
        });
        return shown;
    }

    // The run "pair/ours" on two threads is the work "pair 2" of the contender "ours".
    void note(const Run &run) {
        const std::string &work = run.run_name.function_name;
        const size_t slash = work.find('/');
        if (slash == std::string::npos) {
            return;
        }
        const std::string contender = work.substr(slash + 1);
        const std::string key = work.substr(0, slash) + " " + run.run_name.threads;
        const double all = run.threads == 1 ? run.cpu_accumulated_time : run.real_accumulated_time;
        const double time = all / static_cast<double>(run.iterations);
        double &best = best_[key].try_emplace(contender, time).first->second;
        best = std::min(best, time);
    }

    // `shown` is the work with what tells its runs apart.
    void print(const std::string &shown, const std::string &work, const Contenders &contenders,
               Unit unit) {
        const auto ours = contenders.find("ours");
        if (ours == contenders.end()) {
            return;
        }
        std::printf("%-28s ours %6.2f %s", shown.c_str(), ours->second / unit.size, unit.name);
        for (const auto &[name, amount] : contenders) {
            if (name != "ours") {
                const double ratio = amount / ours->second;
                std::printf("   %s %6.2f %s: %.2f", name.c_str(), amount / unit.size, unit.name,
                            ratio);
                print_bound(work, name, ratio);
            }
        }
        std::printf("\n");
    }

    void print_bound(const std::string &work, const std::string &peer, double ratio) {
        const auto of_work = stated_bounds.find(work);
        if (of_work == stated_bounds.end() || of_work->second.count(peer) == 0) {
            return;
        }
        const Bound bound = of_work->second.at(peer);
        const bool holds = ratio >= bound;
        missed_ += holds ? 0 : 1;
        std::printf(" (%.2f or more: %s)", bound, holds ? "holds" : "DOES NOT HOLD");
    }

    std::map<std::string, Contenders> best_;
    int missed_ = 0;
};

// Repetitions of all contenders take turns, so that other work on the machine meets all of them.
inline int run_all(int argc, char **argv) {
    std::string in_turns = "--benchmark_enable_random_interleaving=true";
    std::vector<char *> arguments{argv[0], in_turns.data()};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    argc = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    argv = arguments.data();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}

}  // namespace oru::bench
