#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// The library and the model do the same, and everything that both then say is compared, numbers
/// bit by bit. Each function returns a text that describes the first difference; the empty text
/// when there is none.

/// A message is built from the first sentence, as text and as bytes, and grows by the others; it is
/// read, printed, written, read back, copied and compared.
std::string differenceInSentences(uint64_t timeStamp, const std::vector<std::string>& sentences);

/// The bytes are one serialised GPS message, whatever its size and id fields say: those are made to
/// fit before the factory decodes it. Bytes shorter than the header or beyond what the size field
/// can hold have nothing to compare.
std::string differenceInReading(const std::string& bytes);

/// The factory walks the bytes to their end, with both ways to answer what cannot be decoded. What
/// is decoded must be what the model reads, and must come back the same when it is written and read
/// again; what is not must be written back unchanged.
std::string differenceInWalk(const std::string& bytes);

/// Carries out a program, which any bytes are, on a few messages: one byte names an operation, and
/// its operands follow. Operands missing at the end read as zeros and empty texts.
std::string differenceInProgram(const std::string& program);

/// A program that builds a message from the sentences and then uses every operation.
std::string programOf(uint64_t timeStamp, const std::vector<std::string>& sentences);
