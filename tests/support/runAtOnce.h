#pragma once

#include <atomic>
#include <thread>
#include <vector>

/// Calls \p work(thread, round) in several threads, round after round. No thread begins a round
/// before all of them have come to it, so that they meet in what the work begins with.
template <class Work>
void runAtOnce(unsigned threads, unsigned rounds, const Work& work) {
    std::atomic<unsigned> arrivals{0};
    std::vector<std::thread> running;
    running.reserve(threads);
    for (unsigned thread = 0; thread < threads; ++thread) {
        running.emplace_back([&, thread] {
            for (unsigned round = 0; round < rounds; ++round) {
                ++arrivals;
                while (arrivals < threads * (round + 1)) {
                    std::this_thread::yield();
                }
                work(thread, round);
            }
        });
    }
    for (std::thread& thread : running) {
        thread.join();
    }
}
