#pragma once

// How the benchmarks compare: cases named "subject/case/who", each timed by wall clock in runs that alternate
// at random, and a table of the medians with our time divided by each peer's.

#include <benchmark/benchmark.h>
#include <functional>
#include <string>
#include <vector>

namespace Benchmarks {

/// The name under which our own code runs; any other name is a peer's.
inline constexpr const char* ours = "Imaging";

/// Adds a benchmark of `body`, called over and over. `target` is the largest ratio of our time to this
/// peer's that we mean to reach, or 0 for a peer that is shown for comparison only; ours ignores it.
void compare(const std::string& subjectAndCase, const std::string& who, std::function<void()> body,
             double target = 0);

/// The shortest of several rounds of each body in microseconds: what disturbs a run can only make it longer.
/// The bodies take turns, so that a busy spell does not fall on one alone.
std::vector<double> shortestMicroseconds(const std::vector<std::function<void()>>& bodies, int rounds);

/// The slope of log(time) over log(size) by least squares: 1 is linear, 2 quadratic.
double slope(const std::vector<int>& sizes, const std::vector<double>& times);

/// Runs what was added, as the Google Benchmark options of the command line say (five repetitions where they
/// say nothing), and prints the medians and the ratios. Returns the program's exit status: 0, or 2 for
/// options that are not understood; a missed target is shown in the table and is no failure.
int run(int argc, char** argv);

} // namespace Benchmarks
