#include "tests/memory/failingMemory.h"

#include <atomic>
#include <cstdlib>

namespace {

// Only one test has several threads; none fails there.
size_t allocationsUntilFailure = 0;
std::atomic<size_t> blocks{0};
std::atomic<size_t> blocksEver{0};
std::atomic<void (*)()> inTheMidst{nullptr};

void callInTheMidst() {
    thread_local bool called = false;
    void (*const function)() = inTheMidst;
    if (function != nullptr && !called) {
        called = true;
        function();
        called = false;
    }
}

}  // namespace

namespace failingMemory {

void failAt(size_t n) {
    allocationsUntilFailure = n;
}

size_t liveBlocks() {
    return blocks;
}

size_t allocations() {
    return blocksEver;
}

void duringAllocations(void (*function)()) {
    inTheMidst = function;
}

}  // namespace failingMemory

void* operator new(size_t size) {
    if (allocationsUntilFailure != 0 && --allocationsUntilFailure == 0) {
        throw std::bad_alloc();
    }
    void* block = std::malloc(size != 0 ? size : 1);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    ++blocks;
    ++blocksEver;
    callInTheMidst();
    return block;
}

void operator delete(void* block) noexcept {
    if (block != nullptr) {
        --blocks;
        std::free(block);
    }
}

void operator delete(void* block, size_t /*size*/) noexcept {
    operator delete(block);
}
