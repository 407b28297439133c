#include "tools/trace/walkTraces.h"

#include <fmt/core.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "libvexstream/internal/soundness.h"
#include "tools/io/Progress.h"
#include "tools/io/plural.h"
#include "tools/io/standardStreams.h"
#include "tools/trace/kinds.h"

namespace vextrace::tools {

namespace {

// Tells people of the damage in a trace: a line for each of the first places, naming the byte where
// the last sound message ended and how many bytes were passed over, and a count of the others.
class DamageLog {
public:
    explicit DamageLog(std::string shownName) : name(std::move(shownName)) {}

    void add(const TraceItem& damage);

    // Tells what was held back.
    void finish() const;

private:
    static constexpr uint64_t TOLD_PLACES = 10;

    std::string name;
    uint64_t count = 0;
    uint64_t heldBack = 0;  // bytes of the places that were not told
};

void DamageLog::add(const TraceItem& damage) {
    ++count;
    const std::string length = counted(damage.length, "byte");
    if (damage.offset == 0 && damage.reachesEnd) {
        tell(fmt::format(
            "{}: no trace: {} without any message{}", name, length,
            looksLikeLog(damage.bytes) ? "; it looks like NMEA: vextrace record first" : ""));
    } else if (count <= TOLD_PLACES) {
        tell(fmt::format("{}: damaged at byte {}, {} passed over: {}", name, damage.offset, length,
                         damage.reason));
    } else {
        heldBack += damage.length;
    }
}

void DamageLog::finish() const {
    if (count > TOLD_PLACES) {
        tell(fmt::format("{}: {}, {} passed over", name,
                         counted(count - TOLD_PLACES, "more damaged place"),
                         counted(heldBack, "byte")));
    }
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
    if (walk.span.holds(messageStamp(item.bytes.data()))) {
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
