#include "python/fixSpans.h"

#include <algorithm>
#include <future>
#include <thread>
#include <utility>
#include <vector>

namespace vextrace::python {

namespace {

// The tables of what is read side by side take less than the bytes that they were made of.
constexpr unsigned MOST_THREADS = 4;

// A span, with what is carried into it and out of it.
struct SpanEnds {
    explicit SpanEnds(const FixChooser& carried) : before(carried), behind(carried) {}

    Findings findings;
    FixChooser before;
    FixChooser behind;
    uint64_t begin = 0;  // of its first item
    uint64_t end = 0;    // of its last item
};

struct Span {
    SpanEnds ends;
    FixColumns columns;
};

void addDamage(const TraceItem& item, Findings& findings) {
    if (findings.places == 0) {
        findings.firstDamage = item.offset;
        findings.firstReason = item.reason;
    }
    ++findings.places;
    findings.damagedBytes += item.length;
}

void addItem(const TraceItem& item, bool isTaken, uint32_t trace, SpanEnds& span,
             FixColumns& columns) {
    span.findings.bytes += item.length;
    if (item.kind == TraceItem::Kind::DAMAGE) {
        addDamage(item, span.findings);
        return;
    }
    ++span.findings.messages;
    if (isTaken) {
        columns.push(span.behind.fix(), trace, span.findings.messages);
    }
}

SpanEnds readSpan(ByteSource& bytes, uint32_t trace, const TraceRange& range,
                  const FixChooser& carried, FixColumns& columns) {
    TraceReader reader(bytes, range);
    SpanEnds span(carried);
    bool hasBegun = false;
    const auto begin = [&](uint64_t offset) {
        span.before = span.behind;
        span.begin = offset;
        hasBegun = true;
    };
    TraceItem item = reader.next();
    for (; item.kind != TraceItem::Kind::END; item = reader.next()) {
        if (!item.isBefore && !hasBegun) {
            begin(item.offset);
        }
        const bool isTaken =
            item.gps != nullptr && span.behind.choose(*item.gps) == FixChooser::Outcome::TAKEN;
        if (!item.isBefore) {
            addItem(item, isTaken, trace, span, columns);
        }
    }
    if (!hasBegun) {
        begin(item.offset);
    }
    span.end = item.offset;
    span.findings.foundMessage = reader.foundMessage();
    return span;
}

// Reads spans of a trace, several at a time.
class SideBySide {
public:
    SideBySide(const Input& itsInput, const FixWish& itsWish, FixColumns& itsColumns)
        : input(itsInput), wish(itsWish), columns(itsColumns), chooser(wish.choice) {}

    Findings read(uint64_t span);

private:
    Span readOne(const TraceRange& range, const FixChooser& carried) const;
    void add(Span span, TraceRange range);

    const Input& input;
    const FixWish& wish;
    FixColumns& columns;
    FixChooser chooser;     // as the spans so far leave it
    uint64_t position = 0;  // behind them
    Findings findings;
};

Findings SideBySide::read(uint64_t span) {
    const uint64_t size = input.size().value();
    for (uint64_t begin = 0; begin == 0 || begin < size;) {
        handleSignals();
        std::vector<TraceRange> ranges;
        std::vector<std::future<Span>> spans;
        for (size_t i = 0; i < threadsOf() && (begin == 0 || begin < size); ++i, begin += span) {
            TraceRange& range = ranges.emplace_back();
            range.begin = begin;
            range.end = size - begin > span ? begin + span : range.end;
            range.givesBefore = true;
            spans.push_back(
                std::async([this, range] { return readOne(range, FixChooser(wish.choice)); }));
        }
        for (size_t i = 0; i < spans.size(); ++i) {
            add(spans[i].get(), ranges[i]);
        }
    }
    return findings;
}

Span SideBySide::readOne(const TraceRange& range, const FixChooser& carried) const {
    FixColumns own;
    SpanEnds ends = readSpan(*input.again(), wish.trace, range, carried, own);
    return {std::move(ends), std::move(own)};
}

void SideBySide::add(Span span, TraceRange range) {
    if (span.ends.begin != position || !(span.ends.before == chooser)) {
        range.givesBefore = false;
        range.lead = span.ends.begin == position ? range.lead : range.begin;
        span = readOne(range, chooser);
    }
    columns.append(span.columns, findings.messages);
    findings.add(span.ends.findings);
    chooser = span.ends.behind;
    position = span.ends.end;
}

}  // namespace

void Findings::add(const Findings& more) {
    if (places == 0) {
        firstDamage = more.firstDamage;
        firstReason = more.firstReason;
    }
    bytes += more.bytes;
    messages += more.messages;
    places += more.places;
    damagedBytes += more.damagedBytes;
    foundMessage |= more.foundMessage;
}

Findings readFixes(ByteSource& bytes, const FixWish& wish, const TraceRange& range,
                   FixColumns& columns) {
    return readSpan(bytes, wish.trace, range, FixChooser(wish.choice), columns).findings;
}

Findings readFixesSideBySide(const Input& input, const FixWish& wish, uint64_t span,
                             FixColumns& columns) {
    return SideBySide(input, wish, columns).read(span);
}

size_t threadsOf() {
    return std::clamp(std::thread::hardware_concurrency(), 1U, MOST_THREADS);
}

}  // namespace vextrace::python
