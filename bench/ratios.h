// A reporter that prints, behind the usual table, how many times as long a peer takes as we do, for
// each kind of work. Benchmarks are named "work/contender...", ours being the contender "ours".
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace oru::bench {

class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run> &runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                note(run);
            }
        }
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf(
            "\npeer's time / our time (above 1: ours is faster);\n"
            "times of one round, all threads together; best of the repetitions\n");
        for (const auto &[work, contenders] : best_) {
            print(work, contenders);
        }
    }

  private:
    using Contenders = std::map<std::string, double>;

    // The run "pair/ours" on two threads is the work "pair 2" of the contender "ours".
    void note(const Run &run) {
        const std::string &work = run.run_name.function_name;
        const size_t slash = work.find('/');
        if (slash == std::string::npos) {
            return;
        }
        const std::string contender = work.substr(slash + 1);
        const std::string key = work.substr(0, slash) + " " + run.run_name.threads;
        const double time = run.real_accumulated_time / static_cast<double>(run.iterations);
        double &best = best_[key].try_emplace(contender, time).first->second;
        best = std::min(best, time);
    }

    static void print(const std::string &work, const Contenders &contenders) {
        const auto ours = contenders.find("ours");
        if (ours == contenders.end()) {
            return;
        }
        std::printf("%-28s ours %6.2f ns", work.c_str(), ours->second * 1e9);
        for (const auto &[name, time] : contenders) {
            if (name != "ours") {
                std::printf("   %s %6.2f ns: %.2f", name.c_str(), time * 1e9, time / ours->second);
            }
        }
        std::printf("\n");
    }

    std::map<std::string, Contenders> best_;
};

inline int run_all(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}

}  // namespace oru::bench
