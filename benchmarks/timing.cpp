#include "benchmarks/timing.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <ctime>

namespace {

constexpr int ROUNDS = 11;
constexpr double SECONDS_PER_TURN = 0.005;

double secondsOf(const Work& work, long runs, Clock clock) {
    const double start = clock();
    for (long run = 0; run < runs; ++run) {
        work();
    }
    return (clock() - start) / static_cast<double>(runs);
}

// Doubles the runs until they take long enough; so the work is warm as well.
long runsPerTurn(const Work& work, Clock clock) {
    long runs = 1;
    while (secondsOf(work, runs, clock) * static_cast<double>(runs) < SECONDS_PER_TURN) {
        runs *= 2;
    }
    return runs;
}

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace

double processorTime() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

double wallTime() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
}

std::vector<double> medianSeconds(const std::vector<Work>& works, Clock clock) {
    std::vector<long> runs;
    runs.reserve(works.size());
    for (const Work& work : works) {
        runs.push_back(runsPerTurn(work, clock));
    }
    std::vector<std::vector<double>> measured(works.size());
    for (int round = 0; round < ROUNDS; ++round) {
        for (size_t i = 0; i < works.size(); ++i) {
            measured[i].push_back(secondsOf(works[i], runs[i], clock));
        }
    }
    std::vector<double> medians;
    medians.reserve(measured.size());
    for (std::vector<double>& values : measured) {
        medians.push_back(median(values));
    }
    return medians;
}
