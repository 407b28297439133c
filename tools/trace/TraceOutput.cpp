#include "tools/trace/TraceOutput.h"

#include <fmt/core.h>

#include <cerrno>
#include <optional>
#include <span>
#include <string_view>

#include "libvexstream/TraceReader.h"
#include "libvexstream/internal/soundness.h"
#include "libvexstream/utc.h"
#include "libvextrace/MessageFactory.h"
#include "tools/io/StoppableSource.h"
#include "tools/io/escape.h"
#include "tools/io/plural.h"

namespace vextrace::tools {

namespace {

constexpr size_t QUEUE_SIZE = size_t{128} * 1024;
constexpr size_t ID_BEGIN = MessageBase::MSGSIZE_LENGTH;
constexpr size_t ID_END = MessageBase::MO_HDRRESERVED;

// As text files begin. The size of a message that begins so is at least 2 kB.
bool isText(uint8_t byte) {
    return byte >= 0x20 || byte == '\t' || byte == '\n' || byte == '\r';
}

// Whether bytes that are too few for the id can be the beginning of a GPS message. Its size is that
// of the sentences of one moment.
bool mayBeginMessage(std::span<const uint8_t> bytes) {
    return !isText(bytes[0]) && (bytes.size() <= ID_BEGIN || bytes[ID_BEGIN] == 0);
}

// Whether the bytes, in which no message was found, can be the beginning of a GPS message.
bool mayBeTorn(std::span<const uint8_t> bytes) {
    if (bytes.size() < ID_END) {
        return mayBeginMessage(bytes);
    }
    return MessageFactory::frame(bytes.data(), bytes.size()).framing == FRAMING_INCOMPLETE &&
           messageId(bytes.data()) == MSGID_GPS;
}

std::string_view textOf(std::span<const uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

TraceOutput::TraceOutput(const std::string& path, ExistingFile existing, const InputFile& input)
    : file(path, existing, input) {
    if (file.goesOn()) {
        continueTrace(path);
    }
}

void TraceOutput::continueTrace(const std::string& path) {
    InputFile before(path);
    StoppableSource source(before);
    TraceReader reader(source);
    std::optional<uint64_t> damage;
    bool torn = false;
    for (TraceItem item = reader.next(); item.kind != TraceItem::Kind::END; item = reader.next()) {
        StoppableSource::stopWhenTold();
        const bool isDamage = item.kind == TraceItem::Kind::DAMAGE;
        damage = isDamage ? std::optional(item.offset) : std::nullopt;
        torn = isDamage && mayBeTorn(item.bytes);
    }
    if (!damage) {
        return;
    }
    if (!reader.foundMessage() && !torn) {
        file.sink().refuse("is no trace that could go on");
    }
    const uint64_t size = reader.position() - *damage;
    const std::string aside = file.moveAside(*damage, reader.position());
    told = fmt::format("{}: ended in a torn message; {} from byte {} on moved to {}", name(),
                       counted(size, "byte"), *damage, escaped(aside));
}

void TraceOutput::write(const EpochBuilder::Part& part) {
    if (part.messages == 0) {
        return;
    }
    queue.insert(queue.end(), part.bytes.begin(), part.bytes.end());
    parts.push_back({queue.size(),
                     {part.beginsEpoch ? 1U : 0U, part.messages, part.sentences, part.bytes.size(),
                      hasDate(part.stamp) ? 0 : part.messages, part.stamp, part.stamp}});
    if (!together || queue.size() >= QUEUE_SIZE) {
        flush();
    }
}

void TraceOutput::flush() {
    if (queue.empty()) {
        return;
    }
    file.requireName();
    const size_t done = file.write(textOf(queue));
    const int reason = errno;
    const bool failed = done < queue.size();
    file.takeBack(done - countWhole(done));
    queue.clear();
    parts.clear();
    if (failed) {
        file.sink().failFor(reason);
    }
    if (sync) {
        file.synchronise();
    }
}

// Bytes of the parts that were written whole.
size_t TraceOutput::countWhole(size_t done) {
    size_t whole = 0;
    for (const Queued& part : parts) {
        if (part.end > done) {
            break;
        }
        whole = part.end;
        if (hasDate(part.added.first)) {
            count.first = count.first == 0 ? part.added.first : count.first;
            count.last = part.added.last;
        }
        count.messagesWithoutDate += part.added.messagesWithoutDate;
        count.epochs += part.added.epochs;
        count.messages += part.added.messages;
        count.sentences += part.added.sentences;
        count.bytes += part.added.bytes;
    }
    return whole;
}

void TraceOutput::close() {
    flush();
    file.close();
}

}  // namespace vextrace::tools
