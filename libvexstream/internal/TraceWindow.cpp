#include "libvexstream/internal/TraceWindow.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace vextrace {

namespace {

constexpr size_t READ_AT_ONCE = size_t{128} * 1024;
constexpr size_t CAPACITY = TraceWindow::ROOM + READ_AT_ONCE;

}  // namespace

TraceWindow::TraceWindow(ByteSource& source, uint64_t start)
    : input(source), buffer(new uint8_t[CAPACITY]), begin(start), kept(start) {}

size_t TraceWindow::readUpTo(uint64_t offset, size_t count) {
    while (end() < offset + count && reading && !ended && !readError) {
        readMore();
    }
    return end() < offset ? 0 : static_cast<size_t>(std::min<uint64_t>(count, end() - offset));
}

void TraceWindow::readMore() {
    if (CAPACITY - held < READ_AT_ONCE) {
        const auto passed = static_cast<size_t>(kept - begin);
        std::memmove(buffer.get(), buffer.get() + passed, held - passed);
        begin = kept;
        held -= passed;
    }
    try {
        const size_t count = input.read(buffer.get() + held, CAPACITY - held);
        held += count;
        ended = count == 0;
    } catch (...) {
        readError = std::current_exception();
    }
}

void TraceWindow::forgetFrom(uint64_t offset) {
    const auto count = offset < end() ? static_cast<size_t>(end() - offset) : 0;
    if (count > 0 && input.goBack(count)) {
        held -= count;
    }
}

void TraceWindow::throwReadError() {
    if (readError) {
        std::rethrow_exception(std::exchange(readError, nullptr));
    }
}

}  // namespace vextrace
