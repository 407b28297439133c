#pragma once

#include <functional>
#include <vector>

using Work = std::function<void()>;

/// A time in seconds, of which only differences mean anything.
using Clock = double (*)();

/// What this process has computed, all threads together; other processes do not disturb it.
double processorTime();

/// What a clock on the wall shows.
double wallTime();

/// Median seconds of one run of each work. The works take turns, so that whatever else the machine
/// does falls on all of them alike; short ones are run many times at a turn.
std::vector<double> medianSeconds(const std::vector<Work>& works, Clock clock = processorTime);
