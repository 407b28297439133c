#include "benchmarks/timing.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <ctime>

namespace {

constexpr int ROUNDS = 11;
constexpr double SECONDS_PER_TURN = 0.005;

using Clock = double (*)();

double processorTime() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

double wallTime() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
}

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

// All measured times of each work, taking turns.
std::vector<std::vector<double>> measure(const std::vector<Work>& works, Clock clock) {
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
    return measured;
}

// The value that stands at this place when the values are sorted; for each work.
std::vector<double> sortedAt(std::vector<std::vector<double>> measured, std::ptrdiff_t place) {
    std::vector<double> values;
    values.reserve(measured.size());
    for (std::vector<double>& times : measured) {
        std::nth_element(times.begin(), times.begin() + place, times.end());
        values.push_back(times[static_cast<size_t>(place)]);
    }
    return values;
}

}  // namespace

std::vector<double> medianSeconds(const std::vector<Work>& works) {
    return sortedAt(measure(works, processorTime), ROUNDS / 2);
}

std::vector<double> fastestSeconds(const std::vector<Work>& works) {
    return sortedAt(measure(works, wallTime), 0);
}
