#include "tests/memory/failingMemory.h"

#include <cstdlib>

namespace {

size_t allocationsUntilFailure = 0;
size_t blocks = 0;

}  // namespace

namespace failingMemory {

void failAt(size_t n) {
    allocationsUntilFailure = n;
}

size_t liveBlocks() {
    return blocks;
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
