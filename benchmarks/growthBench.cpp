#include <algorithm>
#include <cstdio>
#include <memory>

#include "benchmarks/Goals.h"
#include "benchmarks/operations.h"
#include "benchmarks/timing.h"
#include "libvexutil/datablock.h"

// Each table shows the cost per sentence or per byte. Down a column it must not grow, apart from
// the look-ups in the map of the sentences, which grow with the logarithm of their number, and from
// what no longer fits the caches.

namespace {

// The cost at the largest amount over the least in its column. The look-ups double; work that grows
// with the square would grow with the amount.
constexpr double WANTED_GROWTH = 3;

constexpr double WANTED_BEHIND_LONG_LINE = 2;

struct Column {
    const char* name;
    Work work;
};

// Prints and gives the cost of each column for one unit of the amount, in nanoseconds.
std::vector<double> printRow(size_t amount, const std::vector<Column>& columns) {
    std::vector<Work> works;
    works.reserve(columns.size());
    for (const Column& column : columns) {
        works.push_back(column.work);
    }
    std::vector<double> costs = medianSeconds(works);
    std::printf("%10zu", amount);
    for (double& cost : costs) {
        cost *= 1e9 / static_cast<double>(amount);
        std::printf("  %12.3f", cost);
    }
    std::printf("\n");
    return costs;
}

void printHeading(const char* title, const char* amount, const std::vector<Column>& columns) {
    std::printf("\n%s\n%10s", title, amount);
    for (const Column& column : columns) {
        std::printf("  %12s", column.name);
    }
    std::printf("\n");
}

void printGrowth(const std::vector<std::vector<double>>& rows, Goals& goals) {
    double largest = 0;
    std::printf("%10s", "growth");
    for (size_t column = 0; column < rows.front().size(); ++column) {
        double least = rows.front()[column];
        for (const std::vector<double>& row : rows) {
            least = std::min(least, row[column]);
        }
        const double growth = rows.back()[column] / least;
        largest = std::max(largest, growth);
        std::printf("  %12.2f", growth);
    }
    std::printf("  wanted at most %.0f%s\n", WANTED_GROWTH, goals.atMost(largest, WANTED_GROWTH));
}

// Prints one row for each amount; the columns are made for the amount.
template <class MakeColumns>
void printTable(Goals& goals, const char* title, const char* unit,
                const std::vector<size_t>& amounts, MakeColumns columns) {
    printHeading(title, unit, columns(amounts.front()));
    std::vector<std::vector<double>> rows;
    rows.reserve(amounts.size());
    for (const size_t amount : amounts) {
        rows.push_back(printRow(amount, columns(amount)));
    }
    printGrowth(rows, goals);
}

// A sentence of its own code, length bytes with its line feed.
std::string numberedSentence(size_t number, size_t length) {
    std::string sentence = "$A0000";
    for (size_t i = sentence.size() - 1; number > 0; number /= 10) {
        sentence[i--] = static_cast<char>('0' + number % 10);
    }
    sentence.resize(length - 1, ',');
    return sentence + '\n';
}

std::string numberedSentences(size_t count, size_t length) {
    std::string sentences;
    for (size_t number = 0; number < count; ++number) {
        sentences += numberedSentence(number, length);
    }
    return sentences;
}

std::string rmcOfLength(size_t length) {
    std::string sentence = RMC_TEXT;
    sentence.insert(sentence.find('*'), length - sentence.size(), 'x');
    return sentence;
}

// An RMC sentence with zeros in front of its latitude.
std::string rmcWithZeros(size_t zeros) {
    std::string sentence = RMC_TEXT;
    return sentence.insert(sentence.find("4134"), zeros, '0');
}

std::vector<uint8_t> serialised(const std::string& payload) {
    std::vector<uint8_t> bytes(MessageBase::MO_BASE_DERIVED);
    const size_t size = bytes.size() - MessageBase::MSGSIZE_LENGTH + payload.size();
    uint16ToByteArray(static_cast<uint16_t>(size), bytes.data());
    uint16ToByteArray(MSGID_GPS, bytes.data() + MessageBase::MO_MSGID);
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    return bytes;
}

Work decoding(const std::string& payload) {
    return [bytes = serialised(payload)] { MessageFactory::decode(bytes.data(), bytes.size()); };
}

std::vector<Column> sentenceColumns(size_t count) {
    const std::string payload = numberedSentences(count, 64);
    const auto bytes = serialised(payload);
    const std::shared_ptr<MessageBase> message =
        MessageFactory::decode(bytes.data(), bytes.size()).message;
    const std::shared_ptr<MessageBase> copy(message->clone());
    return {{"decode", decoding(payload)},
            {"addRecord",
             [count] {
                 GPSTraceMessage built;
                 for (size_t number = 0; number < count; ++number) {
                     built.addRecord(numberedSentence(number, 64));
                 }
             }},
            {"write", [message] { bytesOf(*message); }},
            {"clone", [message] { delete message->clone(); }},
            {"==", [message, copy] { static_cast<void>(*message == *copy); }},
            {"toString", [message] { message->toString(); }}};
}

std::vector<Column> lengthColumns(const std::string& sentence) {
    const auto message = std::make_shared<GPSTraceMessage>(STAMP, sentence);
    return {{"construct", [sentence] { GPSTraceMessage built(STAMP, sentence); }},
            {"addRecord", [sentence, message] { message->addRecord(sentence); }},
            {"getGPRMC",
             [message] {
                 GPSTraceMessage::numeric_gprmc_t numbers;
                 message->getGPRMC(numbers);
             }},
            {"formatForRDB", [message] { message->formatForRDB(); }},
            {"write", [message] { bytesOf(*message); }},
            {"decode", decoding(sentence + GGA_TEXT)}};
}

std::string repeated(const std::string& text, size_t length) {
    std::string payload = RMC_TEXT + GGA_TEXT;
    while (payload.size() + text.size() <= length) {
        payload += text;
    }
    return payload;
}

std::vector<Column> payloadColumns(size_t length) {
    return {{"own codes", decoding(numberedSentences(length / 64, 64))},
            {"held codes", decoding(repeated(RMC_TEXT, length))},
            {"short lines", decoding(repeated("A\n", length))},
            {"line feeds", decoding(repeated("\n", length))},
            {"one line", decoding(rmcOfLength(length))}};
}

void printShortLinesBehindLongOne(Goals& goals) {
    const std::string lines = numberedSentences(4000, 7);
    const auto times =
        medianSeconds({decoding(RMC_TEXT + lines), decoding(rmcOfLength(30000) + lines)});
    std::printf("\ndecode 4000 short lines behind an RMC line of %zu bytes: %.0f us\n",
                RMC_TEXT.size(), 1e6 * times[0]);
    std::printf("decode 4000 short lines behind an RMC line of 30000 bytes: %.0f us\n",
                1e6 * times[1]);
    const double ratio = times[1] / times[0];
    std::printf("ratio: %.2f, wanted at most %.0f%s\n", ratio, WANTED_BEHIND_LONG_LINE,
                goals.atMost(ratio, WANTED_BEHIND_LONG_LINE));
}

}  // namespace

// With "--check" it fails where a cost grows more than is wanted.
int main(int argc, char** argv) {
    Goals goals(argc, argv);
    GPSTraceMessage::registerMessage();
    printTable(goals, "ns per sentence, by sentences in a message", "sentences",
               {10, 30, 100, 300, 1000}, sentenceColumns);
    printTable(goals, "ns per byte, by length of a sentence", "bytes", {100, 1000, 10000, 50000},
               [](size_t length) { return lengthColumns(rmcOfLength(length)); });
    printTable(goals, "ns per byte, by zeros in front of a coordinate", "zeros",
               {100, 1000, 10000, 50000},
               [](size_t zeros) { return lengthColumns(rmcWithZeros(zeros)); });
    printTable(goals, "decode, ns per byte, by size of the payload", "bytes",
               {500, 2000, 8000, 60000}, payloadColumns);
    printShortLinesBehindLongOne(goals);
    return goals.exitStatus();
}
