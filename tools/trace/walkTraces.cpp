#include "tools/trace/walkTraces.h"

#include <algorithm>
#include <optional>

#include "libvexutil/datablock.h"
#include "tools/io/Progress.h"
#include "tools/io/standardStreams.h"
#include "tools/trace/DamageLog.h"

namespace vextrace::tools {

namespace {

// Of a message, whatever its type.
timeStamp_t stampOf(const TraceItem& message) {
    constexpr size_t STAMP_OFFSET = 6;
    return message.gps != nullptr ? message.gps->getTimeStamp()
                                  : byteArrayToUint64(message.bytes.data() + STAMP_OFFSET);
}

class Walker {
public:
    Walker(const Walk& asked, TraceVisitor& asking) : walk(asked), visitor(asking) {
        if (walk.showsProgress) {
            progress.emplace(totalSize(statusesThatExist(walk.traces)));
        }
    }

    Walked run();

private:
    void readTrace(const std::string& path);
    void readItems(InputFile& input, TraceReader& trace, DamageLog& damage);
    void use(const TraceItem& item, DamageLog& damage);
    void fail(Status status, const char* reason);

    const Walk& walk;
    TraceVisitor& visitor;
    std::optional<Progress> progress;
    uint64_t bytesBefore = 0;  // of the traces that are done
    uint64_t number = 0;       // of the message in hand
    Walked walked;
};

Walked Walker::run() {
    for (const std::string& path : walk.traces) {
        try {
            readTrace(path);
        } catch (const UsageError& error) {
            fail(STATUS_USAGE, error.what());
        }
        if (visitor.isDone()) {
            break;
        }
    }
    return walked;
}

void Walker::readTrace(const std::string& path) {
    InputFile input(path);
    TraceReader trace(visitor.sourceOf(input, path));
    DamageLog damage(input.name());
    number = 0;
    visitor.beginTrace(path);
    bool isWhole = true;
    try {
        readItems(input, trace, damage);
    } catch (const ReadError& error) {
        visitor.addFailure(error.what());
        fail(STATUS_DATA, error.what());
        isWhole = false;
    }
    damage.finish();
    bytesBefore += trace.position();
    walked.foundTrace |= trace.foundMessage() || (isWhole && trace.position() == 0);
    visitor.endTrace(trace.position());
}

void Walker::readItems(InputFile& input, TraceReader& trace, DamageLog& damage) {
    bool isGrowing = walk.isGrowing;
    trace.setGrowing(isGrowing);
    while (!visitor.isDone()) {
        const TraceItem item = trace.next();
        if (item.kind == TraceItem::Kind::END) {
            if (!isGrowing) {
                return;
            }
            // Where nobody writes any more, what is left is looked at once more.
            isGrowing = visitor.waitForMore(input, trace.position());
            trace.setGrowing(isGrowing);
            continue;
        }
        use(item, damage);
        if (progress) {
            progress->update(bytesBefore + trace.position());
        }
    }
}

void Walker::use(const TraceItem& item, DamageLog& damage) {
    if (item.kind == TraceItem::Kind::DAMAGE) {
        visitor.addDamage(item);
        damage.add(item);
        walked.status = std::max<int>(walked.status, STATUS_DATA);
        return;
    }
    ++number;
    if (walk.span.holds(stampOf(item))) {
        visitor.addMessage(item, number);
    } else {
        visitor.passOver(item);
    }
}

void Walker::fail(Status status, const char* reason) {
    tell(reason);
    walked.status = std::max<int>(walked.status, status);
}

}  // namespace

Walked walkTraces(const Walk& walk, TraceVisitor& visitor) {
    return Walker(walk, visitor).run();
}

}  // namespace vextrace::tools
