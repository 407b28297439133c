#include "tools/trace/kinds.h"

#include <algorithm>
#include <optional>

#include "libvexstream/ByteSource.h"
#include "libvexstream/Framer.h"
#include "libvexstream/TraceReader.h"
#include "tools/io/InputFile.h"

namespace vextrace::tools {

bool looksLikeTrace(std::span<const uint8_t> front) {
    MemorySource source(front);
    TraceReader trace(source);
    const TraceItem::Kind first = trace.next().kind;
    return first == TraceItem::Kind::GPS || first == TraceItem::Kind::OTHER;
}

bool looksLikeLog(std::span<const uint8_t> front) {
    if (std::find(front.begin(), front.end(), 0) != front.end()) {
        return false;
    }
    Framer framer;
    framer.feed({reinterpret_cast<const char*>(front.data()), front.size()});
    framer.finish();
    while (framer.next()) {
    }
    return framer.counters().checked != 0;
}

std::vector<uint8_t> frontOf(const std::string& path) {
    constexpr size_t ENOUGH = size_t{64} * 1024;
    std::vector<uint8_t> front;
    const std::optional<FileStatus> status = fileStatus(path);
    if (path != "-" && status && status->kind == FileStatus::Kind::REGULAR) {
        InputFile input(path);
        front.resize(ENOUGH);
        front.resize(input.read(front.data(), front.size()));
    }
    return front;
}

}  // namespace vextrace::tools
