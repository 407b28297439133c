#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <string>
#include <string_view>

/// Control of the operators new of this executable.
namespace failingMemory {

/// Makes the n-th allocation from now on fail, counted from 1; 0 makes none fail.
void failAt(size_t n);

/// Blocks allocated and not yet freed.
size_t liveBlocks();

/// Blocks allocated so far, freed ones included.
size_t allocations();

/// Calls the function in the midst of every allocation, but not of those that it makes itself; null
/// ends that. For what another thread might do there.
void duringAllocations(void (*function)());

/// Whether strings keep short texts inside themselves, as every standard library means it. Built as
/// C++23 by clang 14, those of libstdc++ allocate for each.
inline bool keepsShortTextsInside() {
    std::string text;
    const size_t before = allocations();
    text = std::string_view("short");
    return allocations() == before;
}

}  // namespace failingMemory

/// Runs the operation with its first, second, third ... allocation failing, until it needs no more
/// of them. Each failure must reach the caller as std::bad_alloc and leave no block behind; what
/// else must hold then is checked by \p afterFailure. Returns how many allocations failed.
template <class Operation, class AfterFailure>
size_t failEachAllocation(Operation operation, AfterFailure afterFailure) {
    for (size_t n = 1;; ++n) {
        const size_t before = failingMemory::liveBlocks();
        failingMemory::failAt(n);
        try {
            operation();
            failingMemory::failAt(0);
            EXPECT_EQ(failingMemory::liveBlocks(), before);
            return n - 1;
        } catch (const std::bad_alloc&) {
            failingMemory::failAt(0);
        }
        EXPECT_EQ(failingMemory::liveBlocks(), before) << "allocation " << n << " failed";
        afterFailure();
    }
}

template <class Operation>
size_t failEachAllocation(Operation operation) {
    return failEachAllocation(operation, [] {});
}
