#pragma once

#include <functional>
#include <vector>

using Work = std::function<void()>;

/// Median seconds of one run of each work, in processor time of this process, which others do not
/// disturb. The works take turns, so that whatever else the machine does falls on all of them
/// alike; short ones are run many times at a turn.
std::vector<double> medianSeconds(const std::vector<Work>& works);

/// The same by the clock on the wall, and the fastest instead of the median: what else the machine
/// does can only make a work slower.
std::vector<double> fastestSeconds(const std::vector<Work>& works);
