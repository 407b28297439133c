#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "libvexstream/TraceReader.h"
#include "tools/io/InputFile.h"
#include "tools/io/errors.h"

namespace vextrace::tools {

/// The time stamps that are asked for.
struct Span {
    timeStamp_t from = 0;
    timeStamp_t until = std::numeric_limits<timeStamp_t>::max();  ///< included

    bool holds(timeStamp_t stamp) const { return from <= stamp && stamp <= until; }
};

/// What a command does with what traces hold.
class TraceVisitor {
public:
    TraceVisitor() = default;
    TraceVisitor(const TraceVisitor&) = delete;
    TraceVisitor& operator=(const TraceVisitor&) = delete;
    virtual ~TraceVisitor() = default;

    /// What the next trace is read from: the input, or what passes its bytes on.
    /// \param path  as it was given
    virtual ByteSource& sourceOf(InputFile& input, const std::string& /*path*/) { return input; }

    /// \param path  as it was given
    virtual void beginTrace(const std::string& /*path*/) {}

    /// A message of the span, of any type.
    /// \param number  of the message in its trace, counted from 1
    virtual void addMessage(const TraceItem& message, uint64_t number) = 0;

    /// A message before or behind the span.
    virtual void passOver(const TraceItem& /*message*/) {}

    /// Is called before people are told of it.
    virtual void addDamage(const TraceItem& /*damage*/) {}

    /// The trace could not be read on. Is called before people are told of it.
    virtual void addFailure(const std::string& /*reason*/) {}

    /// \param bytes  of the trace: messages and damage
    virtual void endTrace(uint64_t /*bytes*/) {}

    /// Whether nothing more is wanted.
    virtual bool isDone() const { return false; }

    /// At the end of a trace that may grow: waits, and says whether to look again.
    /// \param position  bytes that were read of it
    virtual bool waitForMore(const InputFile& /*input*/, uint64_t /*position*/) { return false; }
};

/// What is to be walked.
struct Walk {
    std::vector<std::string> traces;  ///< "-" is standard input
    Span span = {};
    bool isGrowing = false;
    bool showsProgress = true;
};

/// What came of it.
struct Walked {
    int status = STATUS_OK;
    bool foundTrace = false;  ///< one of them holds a message, or nothing at all
};

/// Reads traces one behind the other, each message by message. Damage, and what cannot be read on,
/// is told to people and gives STATUS_DATA; an input that cannot be opened is told and gives
/// STATUS_USAGE. What is good is visited in any case.
Walked walkTraces(const Walk& walk, TraceVisitor& visitor);

}  // namespace vextrace::tools
