#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

/// What the model and the framer say of one sentence, in a form that compares and prints.
struct ModelSentence {
    uint64_t offset = 0;
    std::string text;
    char checksum = '-';  ///< 'R' right, 'W' wrong, 'N' none

    bool operator==(const ModelSentence& other) const {
        return offset == other.offset && text == other.text && checksum == other.checksum;
    }
};

/// For people; shortened, and nothing but printable ASCII.
std::ostream& operator<<(std::ostream& os, const ModelSentence& sentence);

/// The sentences of all that a receiver sent, found in the plainest way: everything at once, each
/// possible end tried with each possible start.
std::vector<ModelSentence> modelSentences(const std::string& input);

/// The same from vextrace::Framer, fed in pieces of at most that many bytes.
std::vector<ModelSentence> framedSentences(const std::string& input, size_t pieceSize);

/// A line a sentence.
std::string describe(const std::vector<ModelSentence>& sentences);
