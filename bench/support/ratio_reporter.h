// Runs pairs of benchmarks, ours and a reference, and ends with a table of ratios. For the main function of a
// benchmark.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace tavra::bench {

// Our time, the reference's time (of the fastest repetition of each; processor time, which other load on the
// machine disturbs least, or the wall's where both benchmarks ask for it by UseRealTime or take the time
// themselves), and how many times the reference's rate is wanted.
//
// A target that is missed is told. It fails the run only from a quarter of it downwards, which no load of the
// machine explains and a mistake in the code does.
struct Pair {
    std::string ours;
    std::string reference;
    double target;  // 0 for a pair that is shown without a target
};

// Initializes the benchmark library so that repetitions of all benchmarks are shuffled: a slow spell of the
// machine then meets both sides of a ratio. False for arguments that it does not know.
inline bool initializeShuffled(int argc, char** argv) {
    static char shuffle[] = "--benchmark_enable_random_interleaving=true";
    std::vector<char*> arguments(argv, argv + argc);
    arguments.insert(arguments.begin() + 1, shuffle);
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    benchmark::Initialize(&count, arguments.data());
    return !benchmark::ReportUnrecognizedArguments(count, arguments.data());
}

// Prints the usual lines, and keeps the fastest repetition of each benchmark.
class FastestReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        benchmark::ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
            const double milliseconds = secondsOf(run) * 1e3 / static_cast<double>(run.iterations);
            const auto [entry, isNew] = fastest_.emplace(run.run_name.function_name, milliseconds);
            if (!isNew) entry->second = std::min(entry->second, milliseconds);
        }
    }

    // Pairs of which one side did not run (a filter was given) are left out. True unless a ratio is far below
    // its target.
    bool printRatios(const std::vector<Pair>& pairs) const {
        std::printf("\n%-34s %-28s %9s %9s %8s %8s\n", "ours", "reference", "ours ms", "ref ms", "ratio",
                    "target");
        bool good = true;
        for (const Pair& pair : pairs) {
            const auto ours = fastest_.find(pair.ours);
            const auto reference = fastest_.find(pair.reference);
            if (ours == fastest_.end() || reference == fastest_.end()) continue;
            const double ratio = reference->second / ours->second;
            std::printf("%-34s %-28s %9.3f %9.3f %8.2f ", pair.ours.c_str(), pair.reference.c_str(),
                        ours->second, reference->second, ratio);
            if (pair.target == 0) {
                std::printf("%8s\n", "-");
            } else {
                std::printf("%8.2f %s\n", pair.target, ratio >= pair.target ? "met" : "MISSED");
                good = good && ratio >= pair.target / 4;
            }
        }
        return good;
    }

  private:
    static double secondsOf(const Run& run) {
        const std::string& clock = run.run_name.time_type;
        const bool onTheWall = clock == "real_time" || clock == "manual_time";
        return onTheWall ? run.real_accumulated_time : run.cpu_accumulated_time;
    }

    std::map<std::string, double> fastest_;
};

// The whole of a benchmark's main function. `addAll` registers both sides of its pairs.
inline int runPairs(int argc, char** argv, std::vector<Pair> (*addAll)()) {
    if (!initializeShuffled(argc, argv)) return 2;
    const std::vector<Pair> pairs = addAll();
    FastestReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return reporter.printRatios(pairs) ? 0 : 1;
}

}  // namespace tavra::bench
