#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

/// Makes unlikely inputs out of likely ones. The same on every platform: of the standard library's
/// random numbers only the engine is used, as its distributions may differ.
class Mutator {
public:
    explicit Mutator(uint32_t seed) : engine(seed) {}

    /// A number below \p limit, which is not 0.
    size_t below(size_t limit) { return engine() % limit; }

    template <class T>
    const T& oneOf(const std::vector<T>& choices) {
        return choices[below(choices.size())];
    }

    /// A text that looks more or less like a number, with blanks, signs, up to 25 digits and more.
    std::string number();

    /// The sentence with one change to a field, a delimiter, a byte or its lines.
    std::string sentence(const std::string& sentence);

    /// The bytes with one change.
    std::string bytes(std::string bytes);

private:
    std::string digits(size_t atMost);
    std::string changedField(const std::string& sentence);
    std::string changedDelimiter(std::string sentence);
    std::string changedLines(const std::string& sentence);

    std::mt19937 engine;
};

/// Field texts that conversions may stumble over.
const std::vector<std::string>& oddFields();

/// The sentence with the text of one field replaced; fields count from 0 between the commas.
std::string withField(const std::string& sentence, size_t number, const std::string& text);
