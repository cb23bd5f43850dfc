#include "Benchmarks/Ratios.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <map>
#include <utility>
#include <vector>

namespace Benchmarks {

namespace {

struct Measured {
    std::string who;
    double milliseconds;
    double target;
};

std::map<std::string, double>& targets() {
    static std::map<std::string, double> all;
    return all;
}

/// Prints as Google Benchmark does, and keeps the medians.
class MedianReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& reports) override {
        ConsoleReporter::ReportRuns(reports);
        for (const Run& run : reports) {
            if (run.run_type != Run::RT_Aggregate || run.aggregate_name != "median") continue;
            const std::string& name = run.run_name.function_name;
            const std::size_t slash = name.rfind('/');
            m_medians[name.substr(0, slash)].push_back(
                {name.substr(slash + 1), run.GetAdjustedRealTime(), targets()[name]});
        }
    }

    void printRatios() const {
        std::printf("\n%-46s %10s  %-12s %10s %7s  %s\n", "case", "ours, ms", "peer", "peer, ms", "ratio",
                    "target");
        for (const auto& [name, measured] : m_medians) printCase(name, measured);
    }

private:
    static void printCase(const std::string& name, const std::vector<Measured>& measured) {
        double own = 0;
        for (const Measured& one : measured) {
            if (one.who == ours) own = one.milliseconds;
        }
        bool alone = true;
        for (const Measured& one : measured) {
            if (one.who == ours) continue;
            alone = false;
            std::printf("%-46s %10.3f  %-12s %10.3f %7.2f", name.c_str(), own, one.who.c_str(),
                        one.milliseconds, own / one.milliseconds);
            if (one.target > 0) {
                std::printf("  %.2f %s", one.target,
                            own / one.milliseconds <= one.target ? "reached" : "MISSED");
            }
            std::printf("\n");
        }
        if (alone) std::printf("%-46s %10.3f\n", name.c_str(), own);
    }

    std::map<std::string, std::vector<Measured>> m_medians;
};

} // namespace

void compare(const std::string& subjectAndCase, const std::string& who, std::function<void()> body,
             double target) {
    const std::string name = subjectAndCase + "/" + who;
    targets()[name] = target;
    benchmark::RegisterBenchmark(name.c_str(),
                                 [body = std::move(body)](benchmark::State& state) {
                                     for (auto _ : state) body();
                                 })
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}

std::vector<double> shortestMicroseconds(const std::vector<std::function<void()>>& bodies, int rounds) {
    using Clock = std::chrono::steady_clock;
    std::vector<double> shortest(bodies.size(), HUGE_VAL);
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < bodies.size(); ++i) {
            const auto start = Clock::now();
            bodies[i]();
            const std::chrono::duration<double, std::micro> time = Clock::now() - start;
            shortest[i] = std::min(shortest[i], time.count());
        }
    }
    return shortest;
}

double slope(const std::vector<int>& sizes, const std::vector<double>& times) {
    double sumX = 0;
    double sumY = 0;
    double sumXX = 0;
    double sumXY = 0;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const double x = std::log(sizes[i]);
        const double y = std::log(times[i]);
        sumX += x;
        sumY += y;
        sumXX += x * x;
        sumXY += x * y;
    }
    const auto n = static_cast<double>(sizes.size());
    return (n * sumXY - sumX * sumY) / (n * sumXX - sumX * sumX);
}

int run(int argc, char** argv) {
    std::vector<std::string> arguments = {argv[0], "--benchmark_repetitions=5",
                                          "--benchmark_enable_random_interleaving=true",
                                          "--benchmark_report_aggregates_only=true"};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    int count = static_cast<int>(pointers.size());
    benchmark::Initialize(&count, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(count, pointers.data())) return 2;
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios();
    return 0;
}

} // namespace Benchmarks
