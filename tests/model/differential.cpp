#include "tests/model/differential.h"

#include <algorithm>
#include <memory>
#include <sstream>

#include "libvextrace/MessageFactory.h"
#include "tests/model/compareMessages.h"
#include "tests/support/InvalidHandling.h"

namespace {

const char* const FIRST_OF_ALL_CODES = "!before all other codes";

// What the factory must make of the front of a byte range.
struct ExpectedStep {
    size_t bytesTaken = 0;
    std::optional<invalidMessageCause_t> cause;
    size_t invalidValue = 0;
};

size_t uint16At(const std::string& bytes, size_t position) {
    return static_cast<unsigned char>(bytes[position]) * size_t{256} +
           static_cast<unsigned char>(bytes[position + 1]);
}

ExpectedStep expectedStep(const std::string& range) {
    if (range.size() < 14) {
        return {range.size(), IM_INVALID_LEN, range.size()};
    }
    const size_t size = uint16At(range, 0);
    if (size < 12 || size + 2 > range.size()) {
        return {range.size(), IM_INVALID_LEN, size};
    }
    const size_t id = uint16At(range, 2);
    if (id != 22) {
        return {size + 2, IM_INVALID_MSGID, id};
    }
    if (!GPSModel::read(range.substr(0, size + 2))) {
        return {size + 2, IM_MISC, 0};
    }
    return {size + 2, std::nullopt, 0};
}

std::string writtenBack(const MessageBase& message, size_t length) {
    std::vector<uint8_t> room(length);
    uint8_t* pdest = room.data();
    message.writeToByteArray(pdest, room.size(), false);
    return {room.data(), pdest};
}

void compareUndecodable(Comparison& comparison, const DecodedMessage& decoded,
                        const std::string& bytes) {
    if (MessageBase::invalidHandling == IMH_RETURN_NULL) {
        comparison.holds("no message stands for what cannot be decoded", !decoded.message);
        return;
    }
    comparison.holds("a message stands for what cannot be decoded", decoded.message != nullptr);
    if (comparison.failed()) {
        return;
    }
    const MessageBase& message = *decoded.message;
    comparison.equal("id of the undecodable", message.getMsgID(), MSGID_INVALID);
    comparison.equal("size of the undecodable", message.getSize(),
                     bytes.size() < 2 ? 0 : bytes.size() - 2);
    comparison.equal("the undecodable written back", writtenBack(message, bytes.size()), bytes);

    const std::unique_ptr<MessageBase> copy(message.clone());
    comparison.holds("the undecodable equals its clone", message == *copy && *copy == message);
    comparison.equal("the undecodable's clone written back", writtenBack(*copy, bytes.size()),
                     bytes);
    std::ostringstream os;
    message.print(os);
    comparison.equal("the undecodable as text", message.toString(), os.str());

    const GPSTraceMessage gps;
    comparison.holds("the undecodable is no GPS message", !(message == gps) && !(gps == message));
}

void compareDecoded(Comparison& comparison, DecodedMessage decoded, const std::string& bytes) {
    auto* gps = dynamic_cast<GPSTraceMessage*>(decoded.message.get());
    comparison.holds("a GPS message is decoded", gps != nullptr);
    if (comparison.failed()) {
        return;
    }
    static_cast<void>(decoded.message.release());
    const MessagePair pair{std::unique_ptr<GPSTraceMessage>(gps), *GPSModel::read(bytes)};
    compareAll(comparison, pair);
    compareRoundTrip(comparison, pair);
}

// Compares the factory's answer to the front of the range and gives the bytes that it takes.
size_t compareStep(Comparison& comparison, const std::vector<uint8_t>& range) {
    DecodedMessage decoded = MessageFactory::decode(range.data(), range.size());
    const std::string text(range.begin(), range.end());
    const ExpectedStep expected = expectedStep(text);
    comparison.equal("bytes taken", decoded.bytesTaken, expected.bytesTaken);
    comparison.equalAnswers("undecodable", decoded.error.has_value(), expected.cause.has_value());
    if (comparison.failed()) {
        return range.size();
    }
    const std::string bytes = text.substr(0, expected.bytesTaken);
    if (expected.cause) {
        comparison.equal("cause", decoded.error->getCause(), *expected.cause);
        comparison.equal("value", decoded.error->getInvalidValue(), expected.invalidValue);
        compareUndecodable(comparison, decoded, bytes);
    } else {
        compareDecoded(comparison, std::move(decoded), bytes);
    }
    return expected.bytesTaken;
}

void compareWalk(Comparison& comparison, const std::string& bytes) {
    size_t position = 0;
    do {
        const std::vector<uint8_t> range(bytes.begin() + static_cast<std::ptrdiff_t>(position),
                                         bytes.end());
        const Comparison::Place place(comparison, "at byte " + std::to_string(position));
        position += compareStep(comparison, range);
    } while (!comparison.failed() && position < bytes.size());
    comparison.equal("bytes walked", position, bytes.size());
}

// The other constructor must build the same.
void compareBuiltFromBytes(Comparison& comparison, const MessagePair& pair,
                           const std::string& sentence) {
    const Comparison::Place place(comparison, "built from bytes");
    const std::vector<uint8_t> exact(sentence.begin(), sentence.end());
    const MessagePair fromBytes{
        std::make_unique<GPSTraceMessage>(pair.model.stamp, exact.data(), exact.size()),
        GPSModel(pair.model.stamp, exact.data(), exact.size())};
    compareHeader(comparison, fromBytes);
    compareWriting(comparison, fromBytes);
    compareEquality(comparison, pair, fromBytes);
}

void compareIndependence(Comparison& comparison, const MessagePair& pair) {
    const Comparison::Place place(comparison, "after a clone has grown");
    MessagePair copy = cloned(pair);
    copy.library->addRecord(FIRST_OF_ALL_CODES);
    copy.model.addRecord(FIRST_OF_ALL_CODES);
    compareAll(comparison, copy);
    compareEquality(comparison, pair, copy);
    compareFields(comparison, pair);
    compareWriting(comparison, pair);
}

}  // namespace

std::string differenceInSentences(uint64_t timeStamp, const std::vector<std::string>& sentences) {
    Comparison comparison;
    MessagePair pair;
    if (!sentences.empty()) {
        pair.library = std::make_unique<GPSTraceMessage>(timeStamp, sentences.front());
        pair.model = GPSModel(timeStamp, sentences.front());
        compareAll(comparison, pair);
        compareBuiltFromBytes(comparison, pair, sentences.front());
    }
    for (size_t i = 1; i < sentences.size(); ++i) {
        const Comparison::Place place(comparison, "sentence " + std::to_string(i));
        pair.library->addRecord(sentences[i]);
        pair.model.addRecord(sentences[i]);
        compareFields(comparison, pair);
        compareWriting(comparison, pair);
    }
    if (sentences.size() != 1) {
        compareAll(comparison, pair);
    }
    compareRoundTrip(comparison, pair);
    compareIndependence(comparison, pair);
    return comparison.text();
}

std::string differenceInReading(const std::string& bytes) {
    Comparison comparison;
    MessagePair pair;
    if (fitsSizeField(bytes) && readBoth(comparison, bytes, pair)) {
        compareAll(comparison, pair);
        compareRoundTrip(comparison, pair);
    }
    return comparison.text();
}

std::string differenceInWalk(const std::string& bytes) {
    Comparison comparison;
    comparison.holds("the type is registered", GPSTraceMessage::registerMessage());
    for (const invalidMsgHandling_t handling : {IMH_RETURN_NULL, IMH_RETURN_INVALID_MESSAGE}) {
        const InvalidHandling forThisWalk(handling);
        compareWalk(comparison, bytes);
    }
    return comparison.text();
}
