#pragma once

#include <ios>
#include <memory>
#include <string>

#include "libvextrace/GPSTraceMessage.h"
#include "tests/model/Comparison.h"
#include "tests/model/GPSModel.h"

/// A message of the library and the model's message that should be the same.
struct MessagePair {
    std::unique_ptr<GPSTraceMessage> library = std::make_unique<GPSTraceMessage>();
    GPSModel model;
};

/// What a caller may have set on a stream before a message is written to it.
struct StreamState {
    std::ios_base::fmtflags flags = std::ios_base::dec | std::ios_base::skipws;
    char fill = ' ';
    std::streamsize width = 0;
    std::streamsize precision = 6;
};

void compareFields(Comparison& comparison, const MessagePair& pair);
void compareNumbers(Comparison& comparison, const MessagePair& pair);
void compareHeader(Comparison& comparison, const MessagePair& pair);

/// Compares size and bytes; where the size field cannot hold the size, that writing is refused.
void compareWriting(Comparison& comparison, const MessagePair& pair, bool sync = false);

/// Compares the writing into room that lacks so many bytes, or has none at all where it needs
/// fewer. It must be refused, with no byte written; unless none are missing.
void compareWritingShortBy(Comparison& comparison, const MessagePair& pair, size_t missing);

void compareTraceLine(Comparison& comparison, const MessagePair& pair, const StreamState& state);
void compareDumps(Comparison& comparison, const MessagePair& pair, const StreamState& state);

/// Compares the fields and the text for the RDB output that leave the message as it is.
void compareSplits(Comparison& comparison, const MessagePair& pair);

/// Compares the text for the RDB output. Changes the pair: the fields are refreshed.
void compareRdb(Comparison& comparison, MessagePair& pair);

/// Compares the answers of operator== to two pairs, both ways round.
void compareEquality(Comparison& comparison, const MessagePair& a, const MessagePair& b);

/// Compares everything above; the pair itself stays as it is.
void compareAll(Comparison& comparison, const MessagePair& pair);

MessagePair cloned(const MessagePair& pair);

/// Decodes the bytes of one message, with size and id fields that fit, and compares how that ends.
/// \return whether there is a message, which is then in the pair
bool readBoth(Comparison& comparison, std::string bytes, MessagePair& pair);

/// Writes, reads and compares again. A message that comes back whole must be equal.
void compareRoundTrip(Comparison& comparison, const MessagePair& pair);

/// Whether a header fits into the bytes, and their number into its size field.
bool fitsSizeField(const std::string& bytes);
