#include <array>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <utility>

#include "tests/model/compareMessages.h"
#include "tests/model/differential.h"

namespace {

enum Operation : uint8_t {
    BUILD_FROM_TEXT,
    BUILD_FROM_BYTES,
    BUILD_FROM_NULL,
    BUILD_EMPTY,
    ADD,
    ADD_REPEATED,
    SET_RESERVED,
    SET_MBNR,
    CASCADE,
    PRINT,
    DUMP,
    RDB,
    NUMBERS,
    WRITE,
    READ_BYTES,
    READ_WRITTEN,
    CLONE,
    MOVE,
    ASSIGN,
    MOVE_ASSIGN,
    EQUALITY,
    ALL,
    OPERATIONS
};

// A text among the operands ends at a backslash that no second backslash follows; two stand for
// one. So any bytes can be operands, and texts can grow and shrink inside a program.
constexpr char ESCAPE = '\\';
constexpr char TEXT_END = '.';

constexpr int MAX_STEPS = 64;
constexpr size_t MESSAGES = 3;

class ProgramReader {
public:
    explicit ProgramReader(const std::string& text) : program(text) {}

    [[nodiscard]] bool atEnd() const { return position == program.size(); }

    uint8_t byte() { return atEnd() ? uint8_t{0} : static_cast<uint8_t>(program[position++]); }

    uint64_t number(int width) {
        uint64_t value = 0;
        for (int i = 0; i < width; ++i) {
            value = value << 8 | byte();
        }
        return value;
    }

    std::string text() {
        std::string text;
        while (!atEnd()) {
            const char c = static_cast<char>(byte());
            if (c == ESCAPE && byte() != static_cast<uint8_t>(ESCAPE)) {
                break;
            }
            text += c;
        }
        return text;
    }

    StreamState streamState() {
        constexpr std::ios_base::fmtflags FLAGS[] = {
            std::ios_base::boolalpha, std::ios_base::dec,       std::ios_base::fixed,
            std::ios_base::hex,       std::ios_base::internal,  std::ios_base::left,
            std::ios_base::oct,       std::ios_base::right,     std::ios_base::scientific,
            std::ios_base::showbase,  std::ios_base::showpoint, std::ios_base::showpos,
            std::ios_base::skipws,    std::ios_base::unitbuf,   std::ios_base::uppercase};
        StreamState state;
        state.flags = std::ios_base::fmtflags();
        uint64_t bits = number(2);
        for (const std::ios_base::fmtflags flag : FLAGS) {
            if (bits % 2 == 1) {
                state.flags |= flag;
            }
            bits /= 2;
        }
        state.fill = static_cast<char>(byte());
        state.width = byte();
        state.precision = byte();
        return state;
    }

private:
    const std::string& program;
    size_t position = 0;
};

class ProgramRun {
public:
    explicit ProgramRun(const std::string& program) : reader(program) {}

    std::string difference() {
        for (int step = 0; step < MAX_STEPS && !reader.atEnd() && !comparison.failed(); ++step) {
            const int operation = reader.byte() % OPERATIONS;
            const Comparison::Place place(
                comparison,
                "step " + std::to_string(step) + ", operation " + std::to_string(operation));
            MessagePair& pair = message();
            perform(operation, pair);
            compareFields(comparison, pair);
            compareWriting(comparison, pair);
        }
        for (const MessagePair& pair : messages) {
            compareAll(comparison, pair);
        }
        return comparison.text();
    }

private:
    MessagePair& message() { return messages[reader.byte() % MESSAGES]; }

    void perform(int operation, MessagePair& pair) {
        if (operation <= BUILD_EMPTY) {
            build(operation, pair);
        } else if (operation <= CASCADE) {
            change(operation, pair);
        } else if (operation <= WRITE) {
            use(operation, pair);
        } else {
            relate(operation, pair);
        }
    }

    void build(int operation, MessagePair& pair) {
        if (operation == BUILD_EMPTY) {
            pair = MessagePair();
            return;
        }
        const uint64_t timeStamp = reader.number(8);
        if (operation == BUILD_FROM_NULL) {
            buildFromNull(pair, timeStamp, reader.byte());
            return;
        }
        const std::string text = reader.text();
        if (operation == BUILD_FROM_TEXT) {
            pair.library = std::make_unique<GPSTraceMessage>(timeStamp, text);
            pair.model = GPSModel(timeStamp, text);
            return;
        }
        const std::vector<uint8_t> exact(text.begin(), text.end());
        pair.library = std::make_unique<GPSTraceMessage>(timeStamp, exact.data(), exact.size());
        pair.model = GPSModel(timeStamp, exact.data(), exact.size());
    }

    void buildFromNull(MessagePair& pair, uint64_t timeStamp, size_t size) {
        bool libraryThrows = false;
        try {
            pair.library = std::make_unique<GPSTraceMessage>(timeStamp, nullptr, size);
        } catch (const std::logic_error&) {
            libraryThrows = true;
        }
        bool modelThrows = false;
        try {
            pair.model = GPSModel(timeStamp, nullptr, size);
        } catch (const std::logic_error&) {
            modelThrows = true;
        }
        comparison.equalAnswers("null is refused", libraryThrows, modelThrows);
    }

    void change(int operation, MessagePair& pair) {
        switch (operation) {
            case ADD:
                add(pair, reader.text());
                break;
            case ADD_REPEATED:
                addRepeated(pair);
                break;
            case SET_RESERVED:
                pair.model.reserved = static_cast<uint16_t>(reader.number(2));
                pair.library->setHeaderReserved(pair.model.reserved);
                break;
            case SET_MBNR:
                pair.model.mbnr = static_cast<uint32_t>(reader.number(4));
                pair.library->setMbnr(pair.model.mbnr);
                break;
            default:
                pair.model.mbnr = static_cast<uint16_t>(reader.number(2));
                pair.library->cascadeChannel(static_cast<uint16_t>(pair.model.mbnr));
        }
    }

    // As text or as bytes, which is the same.
    static void add(MessagePair& pair, const std::string& record) {
        if (record.size() % 2 == 0) {
            pair.library->addRecord(record);
        } else {
            pair.library->addRecord(reinterpret_cast<const uint8_t*>(record.data()), record.size());
        }
        pair.model.addRecord(record);
    }

    // Long records reach the end of the size field.
    void addRepeated(MessagePair& pair) {
        const size_t length = reader.number(2);
        std::string record = reader.text();
        const std::string pattern = reader.text();
        while (!pattern.empty() && record.size() < length) {
            record += pattern;
        }
        add(pair, record);
    }

    void use(int operation, MessagePair& pair) {
        switch (operation) {
            case PRINT:
                compareTraceLine(comparison, pair, reader.streamState());
                break;
            case DUMP:
                compareDumps(comparison, pair, reader.streamState());
                break;
            case RDB:
                compareRdb(comparison, pair);
                break;
            case NUMBERS:
                compareNumbers(comparison, pair);
                break;
            default:
                compareWritingShortBy(comparison, pair, reader.number(2));
        }
    }

    void relate(int operation, MessagePair& pair) {
        switch (operation) {
            case READ_BYTES:
                read(reader.text(), pair);
                break;
            case READ_WRITTEN:
                read(pair.model.write(), message());
                break;
            case CLONE:
                message() = cloned(pair);
                break;
            case MOVE:
                move(pair, message());
                break;
            case ASSIGN:
                assign(pair, message());
                break;
            case MOVE_ASSIGN:
                moveAssign(pair, message());
                break;
            case EQUALITY:
                compareEquality(comparison, pair, message());
                break;
            default:
                compareAll(comparison, pair);
                compareRoundTrip(comparison, pair);
        }
    }

    void read(const std::string& bytes, MessagePair& pair) {
        MessagePair fresh;
        if (fitsSizeField(bytes) && readBoth(comparison, bytes, fresh)) {
            pair = std::move(fresh);
        }
    }

    // What a message holds that was moved from is not said, so an empty one takes its place.
    static void move(MessagePair& from, MessagePair& to) {
        MessagePair moved{std::make_unique<GPSTraceMessage>(std::move(*from.library)), from.model};
        from = MessagePair();
        to = std::move(moved);
    }

    static void assign(const MessagePair& from, MessagePair& to) {
        *to.library = *from.library;
        to.model = from.model;
    }

    static void moveAssign(MessagePair& from, MessagePair& to) {
        if (&from != &to) {
            *to.library = std::move(*from.library);
            to.model = std::exchange(from, MessagePair()).model;
        }
    }

    ProgramReader reader;
    Comparison comparison;
    std::array<MessagePair, MESSAGES> messages;
};

class ProgramWriter {
public:
    ProgramWriter& bytes(std::initializer_list<int> values) {
        for (const int value : values) {
            program += static_cast<char>(static_cast<unsigned char>(value));
        }
        return *this;
    }

    ProgramWriter& number(uint64_t value, int width) {
        for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) {
            program += static_cast<char>(static_cast<unsigned char>(value >> shift & 0xFF));
        }
        return *this;
    }

    ProgramWriter& text(const std::string& text) {
        for (const char c : text) {
            program.append(c == ESCAPE ? 2 : 1, c);
        }
        program += {ESCAPE, TEXT_END};
        return *this;
    }

    [[nodiscard]] const std::string& written() const { return program; }

private:
    std::string program;
};

}  // namespace

std::string differenceInProgram(const std::string& program) {
    return ProgramRun(program).difference();
}

std::string programOf(uint64_t timeStamp, const std::vector<std::string>& sentences) {
    ProgramWriter program;
    program.bytes({BUILD_EMPTY, 0});
    for (size_t i = 0; i < sentences.size(); ++i) {
        if (i == 0) {
            program.bytes({BUILD_FROM_BYTES, 1}).number(timeStamp, 8).text(sentences[i]);
            program.bytes({BUILD_FROM_TEXT, 0}).number(timeStamp, 8).text(sentences[i]);
        } else {
            program.bytes({ADD, 0}).text(sentences[i]);
        }
    }
    program.bytes({SET_RESERVED, 0, 0x12, 0x34, SET_MBNR, 0, 0x56, 0x78, 0x9A, 0xBC, NUMBERS, 0});
    program.bytes({PRINT, 0, 0x02, 0x09, ' ', 40, 2, DUMP, 0, 0x01, 0x20, '#', 25, 3});
    program.bytes({EQUALITY, 0, 1, CLONE, 0, 1, CASCADE, 1, 0xDE, 0xF0, RDB, 1, WRITE, 0, 0, 0});
    program.bytes({WRITE, 0, 0, 1, WRITE, 0, 0, 2, WRITE, 0, 0, 3});
    program.bytes({READ_WRITTEN, 0, 2, EQUALITY, 0, 2, MOVE, 1, 0, BUILD_FROM_NULL, 1})
        .number(timeStamp, 8)
        .bytes({1, ADD_REPEATED, 0, 0xFF, 0xFF})
        .text("$PLONG,")
        .text("0123456789,")
        .bytes({READ_BYTES, 1})
        .text("fourteen bytes$GPGGA,1*00\n$GPRMC,2*00\n")
        .bytes({ALL, 1, ASSIGN, 1, 2, ADD, 2})
        .text("$GPGGA,3*00")
        .bytes({MOVE_ASSIGN, 2, 1, ADD, 1})
        .text("$PXYZE,4*00")
        .bytes({ALL, 1});
    return program.written();
}
