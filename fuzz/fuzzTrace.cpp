#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <memory>
#include <string>

#include "fuzz/finding.h"
#include "libvextrace/serialise.h"
#include "tools/io/InputFile.h"
#include "tools/trace/TraceReader.h"

using vextools::TraceItem;

namespace {

// A file in memory that holds the bytes.
class MemoryFile {
public:
    explicit MemoryFile(const std::string& bytes) : fd(memfd_create("trace", 0)) {
        if (fd < 0 || write(fd, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
            stopAt("no file in memory");
        }
    }
    ~MemoryFile() { close(fd); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(fd); }

private:
    int fd;
};

struct Walk {
    std::string sound;  // the messages, which is what repair writes
    bool damaged = false;
};

// Reads the trace; what it gives out must lie back to back and be all of it.
Walk walk(const std::string& bytes) {
    const MemoryFile file(bytes);
    vextools::InputFile input(file.path());
    vextools::TraceReader reader(input);
    Walk result;
    uint64_t position = 0;
    for (TraceItem item = reader.next(); item.kind != TraceItem::Kind::END; item = reader.next()) {
        if (item.offset != position || item.length == 0) {
            stopAt("the items do not lie back to back");
        }
        position += item.length;
        if (item.kind == TraceItem::Kind::DAMAGE) {
            result.damaged = true;
            continue;
        }
        const std::string message(item.bytes.begin(), item.bytes.end());
        if (message != bytes.substr(item.offset, item.length)) {
            stopAt("a message is not what the trace holds there");
        }
        if ((item.kind == TraceItem::Kind::GPS) != (item.gps != nullptr)) {
            stopAt("a GPS message is not decoded");
        }
        result.sound += message;
    }
    if (position != bytes.size()) {
        stopAt("the items are not all of the trace");
    }
    return result;
}

std::string soundTrace() {
    GPSTraceMessage fix(
        258, "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A*07\r\n");
    fix.addRecord("$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47\r\n");
    const std::vector<uint8_t> bytes = serialise(fix);
    std::string trace;
    for (int i = 0; i < 4; ++i) {
        trace.append(bytes.begin(), bytes.end());
    }
    return trace;
}

}  // namespace

/// Any bytes as a trace: alone, and in front of a sound trace, most of which must be found.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    GPSTraceMessage::registerMessage();
    const std::string bytes(data, data + size);
    const Walk alone = walk(bytes);
    if (!alone.damaged && alone.sound != bytes) {
        stopAt("a sound trace does not come out the same");
    }
    static const std::string SOUND = soundTrace();
    const std::string lastTwo = SOUND.substr(SOUND.size() / 2);
    if (!walk(bytes + SOUND).sound.ends_with(lastTwo)) {
        stopAt("more than two messages behind the damage are lost");
    }
    return 0;
}
