#include "tests/model/Mutator.h"

#include <algorithm>

namespace {

using namespace std::string_literals;

std::vector<size_t> positionsOf(const std::string& text, const std::string& characters) {
    std::vector<size_t> positions;
    for (size_t i = 0; i < text.size(); ++i) {
        if (characters.find(text[i]) != std::string::npos) {
            positions.push_back(i);
        }
    }
    return positions;
}

}  // namespace

const std::vector<std::string>& oddFields() {
    static const std::vector<std::string> FIELDS = {
        ""s,
        " "s,
        "\t\v\f\r\n 12.5"s,
        "0"s,
        "-0"s,
        "-0.0"s,
        "+0."s,
        "."s,
        ".5"s,
        "-.5e1"s,
        "5."s,
        "1..2"s,
        "1.2.3"s,
        "+4807.038"s,
        "-4807.038"s,
        "--4807.038"s,
        "+-1"s,
        " 4807.038"s,
        "4807.038 "s,
        "4807.038abc"s,
        "4807;038"s,
        "00004807.03800000"s,
        "000000000000000000004807.038"s,
        "4807.0380000000000000000001"s,
        "4859.9996"s,
        "4859.9995"s,
        "99.9999999999999"s,
        "16.678979"s,
        "85.367286"s,
        "251.5771201198"s,
        "9007199254740992"s,
        "9007199254740993"s,
        "900719925474099.3"s,
        "0.000000000000001"s,
        "0.0000000000000001"s,
        "123456789012345"s,
        "1234567890.12345"s,
        "1234567890.123456"s,
        "12345678901234567"s,
        "0.1234567890123456789012345"s,
        "1234567890123456789012345"s,
        "999999999"s,
        "1000000000"s,
        "2147483647"s,
        "2147483648"s,
        "-2147483648"s,
        "-2147483649"s,
        "4294967295"s,
        "4294967296"s,
        "9223372036854775807"s,
        "9223372036854775808"s,
        "-9223372036854775809"s,
        "6553500"s,
        "6553599.999"s,
        "6553600.0"s,
        "-99.5"s,
        "-100"s,
        "-6553600"s,
        "65536"s,
        "70000"s,
        "1e3"s,
        "1E+3"s,
        "1e-3"s,
        "1e"s,
        "1e+"s,
        "e5"s,
        "1e308"s,
        "1e309"s,
        "-1e309"s,
        "1e-320"s,
        "4.9e-324"s,
        "2e-324"s,
        "2.2250738585072012e-308"s,
        "0x10"s,
        "0X1.8p3"s,
        "0x"s,
        "-0x1p-1074"s,
        "inf"s,
        "-INF"s,
        "infinity"s,
        "infinit"s,
        "nan"s,
        "-nan"s,
        "NaN(123)"s,
        "-nan(0x7)"s,
        "nan(123"s,
        "nan(zz!)"s,
        "12\0 34"s,
        "\0"s,
        "\0 12"s,
        "A\0"s,
        "AA"s,
        "a"s,
        "S"s,
        "s"s,
        "SW"s,
        "W"s,
        "w"s,
        "\xC2\xB0"s,
        "\xFF"s,
        "12*34"s,
        "*"s,
        "\r"s,
        "08"s,
        "00"s,
        "0,5"s,
    };
    return FIELDS;
}

std::string withField(const std::string& sentence, size_t number, const std::string& text) {
    size_t begin = 0;
    for (size_t field = 0; field < number; ++field) {
        const size_t comma = sentence.find(',', begin);
        if (comma == std::string::npos) {
            return sentence;
        }
        begin = comma + 1;
    }
    const size_t end = std::min(sentence.find_first_of(",*", begin), sentence.size());
    return sentence.substr(0, begin) + text + sentence.substr(end);
}

std::string Mutator::digits(size_t atMost) {
    std::string text;
    for (size_t count = below(atMost + 1); count > 0; --count) {
        text += static_cast<char>('0' + below(10));
    }
    return text;
}

std::string Mutator::number() {
    static const std::vector<std::string> BEFORE = {"",  "",  "",  "",  "",      "",
                                                    " ", "-", "+", "0", "00000", " -"};
    static const std::vector<std::string> BEHIND = {"",  "",  "",   "",    "",  "",
                                                    " ", "e", "e5", "E-7", "x", "."};
    std::string text = oneOf(BEFORE) + digits(below(8) == 0 ? 25 : 8);
    if (below(4) != 0) {
        text += "." + digits(below(8) == 0 ? 25 : 9);
    }
    return text + oneOf(BEHIND);
}

std::string Mutator::changedField(const std::string& sentence) {
    const size_t fields =
        1 + static_cast<size_t>(std::count(sentence.begin(), sentence.end(), ','));
    return withField(sentence, below(fields), below(2) == 0 ? number() : oneOf(oddFields()));
}

std::string Mutator::changedDelimiter(std::string sentence) {
    static const std::vector<std::string> INSTEAD = {"", ",,", "*", ",", ";", ",*", "\n", " "};
    const std::vector<size_t> delimiters = positionsOf(sentence, ",*");
    if (delimiters.empty()) {
        return sentence + oneOf(INSTEAD);
    }
    return sentence.replace(oneOf(delimiters), 1, oneOf(INSTEAD));
}

std::string Mutator::changedLines(const std::string& sentence) {
    static const std::vector<std::string> ENDS = {"\n", "\r", "\r\n", "\r\r\n", "\n\n", "\n\r"};
    static const std::vector<std::string> BEGINS = {"$", "$G",     "$GN",    "\n", "\r\n",
                                                    " ", "$GLRMC", "$GNGGA", "$PX"};
    switch (below(4)) {
        case 0:
            return sentence + oneOf(ENDS);
        case 1:
            return oneOf(BEGINS) + sentence;
        case 2:
            return sentence.substr(0, below(sentence.size() + 1));
        default:
            return sentence + oneOf(ENDS) + sentence;
    }
}

std::string Mutator::sentence(const std::string& sentence) {
    switch (below(5)) {
        case 0:
            return changedDelimiter(sentence);
        case 1:
            return bytes(sentence);
        case 2:
            return changedLines(sentence);
        default:
            return changedField(sentence);
    }
}

std::string Mutator::bytes(std::string bytes) {
    static const std::string FAVOURITES = "\0\n\r,*$G\x0C\xFF"s;
    const size_t position = below(bytes.size() + 1);
    const char byte = below(2) == 0 ? FAVOURITES[below(FAVOURITES.size())]
                                    : static_cast<char>(static_cast<unsigned char>(below(256)));
    switch (position == bytes.size() ? 0 : below(4)) {
        case 0:
            return bytes.insert(position, 1, byte);
        case 1:
            return bytes.erase(position, 1 + below(8));
        default:
            bytes[position] = byte;
            return bytes;
    }
}
