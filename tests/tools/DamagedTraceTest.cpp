// Every beginning and every changed byte of a small trace, through every command.
#include <fmt/core.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <numeric>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/stream/traces.h"
#include "tests/tools/commandRuns.h"
#include "tools/commands/commands.h"

using namespace vextrace;
using namespace vextrace::tools;
namespace fs = std::filesystem;
using std::string;
using std::string_view;

namespace damagedTraceTest {
namespace {

constexpr uint64_t STAMP = 764'426'119'000'000'000;  // 1994-03-23T12:35:19Z
constexpr uint64_t SECOND = 1'000'000'000;

string textOf(const TraceBytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

TraceBytes bytesOf(const string& text) {
    return {text.begin(), text.end()};
}

// With its checksum.
string sentence(const string& body) {
    const int checksum = std::accumulate(body.begin(), body.end(), 0, std::bit_xor<>());
    return fmt::format("${}*{:02X}\n", body, checksum);
}

// A message of the trace.
struct Part {
    string payload;
    TraceBytes bytes;
    bool isGps = true;
};

Part fix(uint64_t stamp, const string& payload) {
    return {payload, messageOf(MSGID_GPS, stamp, payload)};
}

// With and without RMC, in the south and the west, and one message of another type.
const std::vector<Part> PARTS = {
    fix(STAMP, sentence("GPGGA,123519,4807.1,N,01131.2,E,1,8,,5.4,M,,,,") +
                   sentence("GPRMC,123519,A,4807.1,N,01131.2,E,22,84,230394,,")),
    {"", messageOf(MSGID_CAN, STAMP, "\x01\xff"), false},
    fix(STAMP + SECOND, sentence("GPGGA,123520,4807.3,S,01131.4,E,1,8,,5.5,M,,,,")),
    fix(STAMP + 2 * SECOND, sentence("GPRMC,123521,A,4807.5,N,01131.6,W,23,85,230394,,")),
};

TraceBytes soundTrace() {
    TraceBytes trace;
    for (const Part& part : PARTS) {
        trace.insert(trace.end(), part.bytes.begin(), part.bytes.end());
    }
    return trace;
}

string log() {
    string text;
    for (const Part& part : PARTS) {
        text += part.payload;
    }
    return text;
}

// The trace with one fault.
struct DamagedTrace {
    string name;
    TraceBytes bytes;
    std::vector<size_t> untouched;  // parts that are there as they were
    bool saysTheSame = false;       // to those who read it
};

DamagedTrace beginning(size_t length) {
    DamagedTrace damaged{fmt::format("the first {} bytes", length), soundTrace(), {}};
    damaged.bytes.resize(length);
    size_t end = 0;
    for (size_t i = 0; i < PARTS.size(); ++i) {
        end += PARTS[i].bytes.size();
        if (end <= length) {
            damaged.untouched.push_back(i);
        }
    }
    return damaged;
}

// The part that holds a byte, and the byte's place in it.
struct Place {
    size_t part = 0;
    size_t byte;
};

Place placeOf(size_t position) {
    Place place{0, position};
    while (place.byte >= PARTS[place.part].bytes.size()) {
        place.byte -= PARTS[place.part].bytes.size();
        ++place.part;
    }
    return place;
}

// The size of a message of another type may be changed so that it ends where a later message does.
// Nobody can tell that from a longer message: those in between are none any more.
size_t behindLongerMessage(const TraceBytes& bytes, const Place& place) {
    if (PARTS[place.part].isGps || place.byte > 1) {
        return place.part + 1;
    }
    size_t begin = 0;
    for (size_t i = 0; i < place.part; ++i) {
        begin += PARTS[i].bytes.size();
    }
    const size_t wanted = size_t{bytes[begin]} * 256 + bytes[begin + 1] + 2;
    size_t length = 0;
    for (size_t i = place.part; i < PARTS.size(); ++i) {
        length += PARTS[i].bytes.size();
        if (length == wanted) {
            return i + 1;
        }
    }
    return place.part + 1;
}

// Reserved bytes say nothing, and of a receiver the second letter of its talker is not kept. Nor
// does a message of another type say anything, unless it is made one of GPS.
bool saysNothing(const Place& place, uint8_t value) {
    const Part& part = PARTS[place.part];
    if (!part.isGps) {
        return place.byte != 3 || value != MSGID_GPS;
    }
    const bool isReserved = place.byte == 4 || place.byte == 5;
    const bool isTalker = place.byte > 15 && part.bytes[place.byte - 2] == '$' &&
                          part.bytes[place.byte - 1] == 'G' && value != '\n';
    return isReserved || isTalker;
}

// The first sentence of a code tells the talker. With this one bit pattern changed its checksum is
// that of GN, and the next one, of GP, counts as wrong: another talker counts from its second
// sentence on.
std::optional<size_t> behindAnotherTalker(size_t position, uint8_t value) {
    const Place place = placeOf(position);
    const string& payload = PARTS[place.part].payload;
    const size_t inPayload = place.byte - MessageBase::MO_BASE_DERIVED;
    if (place.byte < MessageBase::MO_BASE_DERIVED || inPayload >= payload.size() ||
        (static_cast<uint8_t>(payload[inPayload]) ^ value) != ('P' ^ 'N')) {
        return std::nullopt;
    }
    const string code = payload.substr(payload.rfind('$', inPayload), 6);
    for (size_t i = place.part + 1; i < PARTS.size(); ++i) {
        if (PARTS[i].payload.find(code) != string::npos) {
            return i;
        }
    }
    return std::nullopt;
}

DamagedTrace change(size_t position, uint8_t value) {
    DamagedTrace damaged{fmt::format("byte {} is {}", position, value), soundTrace(), {}};
    damaged.bytes[position] = value;
    const Place place = placeOf(position);
    const size_t behind = behindLongerMessage(damaged.bytes, place);
    for (size_t i = 0; i < PARTS.size(); ++i) {
        if (i < place.part || i >= behind) {
            damaged.untouched.push_back(i);
        }
    }
    if (const std::optional<size_t> next = behindAnotherTalker(position, value)) {
        std::erase(damaged.untouched, *next);
    }
    damaged.saysTheSame = behind == place.part + 1 && saysNothing(place, value);
    return damaged;
}

// Every other value of sizes and ids. Of other bytes those that mean most, since all take minutes
// under the sanitizers: these are tried where the environment says so.
std::set<uint8_t> valuesFor(size_t position) {
    const uint8_t byte = soundTrace()[position];
    std::set<uint8_t> values;
    if (std::getenv("VEXTRACE_ALL_CHANGES") != nullptr || placeOf(position).byte < 4) {
        for (int value = 0; value < 256; ++value) {
            values.insert(static_cast<uint8_t>(value));
        }
    } else {
        values = {
            0, '\n', '$', '*', static_cast<uint8_t>(byte ^ 1), static_cast<uint8_t>(byte ^ 0x80)};
    }
    values.erase(byte);
    return values;
}

bool areLines(string_view text) {
    const bool isPrintable = std::all_of(
        text.begin(), text.end(), [](char c) { return (c >= ' ' && c <= '~') || c == '\n'; });
    return isPrintable && (text.empty() || text.ends_with('\n'));
}

std::vector<string> linesOf(const string& text) {
    std::vector<string> lines;
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = text.find('\n', begin) + 1;
        lines.push_back(text.substr(begin, end - begin));
        begin = end;
    }
    return lines;
}

// Of a table, without the name of the trace and the number of the message, which changes where
// messages before it are lost.
std::vector<string> rowsOf(const string& text) {
    std::vector<string> rows = linesOf(text);
    for (string& row : rows) {
        row.erase(0, row.find(',', row.find(',') + 1));
    }
    return rows;
}

// Runs a command that reads the trace; what it tells must be lines for people.
CommandResult run(Command& command) {
    CommandResult result = command.run();
    EXPECT_TRUE(result.status == STATUS_OK || result.status == STATUS_DATA) << result.status;
    EXPECT_TRUE(areLines(result.told)) << result.told;
    for (const string& line : linesOf(result.told)) {
        EXPECT_EQ(line.rfind("vextrace: ", 0), 0U) << line;
    }
    return result;
}

// A command that gives out something of each message.
struct Listing {
    std::unique_ptr<Command> command;
    std::function<std::vector<string>(const string&)> pieces;  // of its output for one message
    std::vector<std::vector<string>> wanted = {};              // of each part
    std::map<string, string> ofRepaired = {};                  // what it gives of these bytes
};

Listing listing(std::function<int()> command,
                std::function<std::vector<string>(const string&)> pieces) {
    return {std::make_unique<Command>(std::move(command)), std::move(pieces)};
}

size_t gpsOf(const std::vector<size_t>& parts) {
    return static_cast<size_t>(
        std::count_if(parts.begin(), parts.end(), [](size_t part) { return PARTS[part].isGps; }));
}

string behind(const string& text, const string& key) {
    const size_t begin = text.find(key);
    return begin == string::npos ? "" : text.substr(begin + key.size());
}

uint64_t numberBehind(const string& text, const string& key) {
    return std::stoull(behind(text, key));
}

// A folder for files that need one, in memory where there is such a place.
class Folder {
public:
    Folder() {
        string name = fs::is_directory("/dev/shm") ? "/dev/shm" : testing::TempDir();
        name += "/DamagedTraceTest-XXXXXX";
        folder = mkdtemp(name.data());
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { fs::remove_all(folder); }

    string path(const string& name) const { return folder / name; }

    void write(const string& name, const string& content) const {
        std::ofstream(folder / name, std::ios::binary) << content;
    }

    // What a file holds, which is removed; nothing where there is none.
    string take(const string& name) const {
        std::ifstream file(folder / name, std::ios::binary);
        string content(std::istreambuf_iterator<char>(file), {});
        fs::remove(folder / name);
        return content;
    }

private:
    fs::path folder;
};

}  // namespace

class DamagedTraceTest : public testing::Test {
protected:
    // Tries the trace with every fault.
    void forEachFault(const std::function<void(const DamagedTrace&)>& attempt) {
        const size_t length = soundTrace().size();
        for (size_t i = 0; i < length && !HasFailure(); ++i) {
            tryWith(beginning(i), attempt);
            for (const uint8_t value : valuesFor(i)) {
                tryWith(change(i, value), attempt);
            }
        }
    }

    void set(const TraceBytes& bytes) {
        file.cut(0);
        file.append(bytes);
    }

    // What can be found of the trace.
    CommandResult repaired() { return run(repair); }

    // Commands that give out something of each message, in pieces, must do so of those that are
    // untouched, and must make of a damaged trace what they make of the repaired one.
    void expectUntouched(std::vector<Listing>& listings) {
        for (Listing& listing : listings) {
            for (const Part& part : PARTS) {
                set(part.bytes);
                listing.wanted.push_back(listing.pieces(run(*listing.command).output));
            }
        }
        forEachFault([&](const DamagedTrace& damaged) {
            const string kept = repaired().output;
            const bool isSound = kept == textOf(damaged.bytes);
            for (Listing& listing : listings) {
                const CommandResult result = run(*listing.command);
                expectPieces(listing, damaged, result.output);
                EXPECT_EQ(result.status == STATUS_OK, isSound);
                EXPECT_TRUE(isSound || !result.told.empty());
                if (!isSound) {
                    EXPECT_EQ(result.output, ofRepaired(listing, kept, damaged.bytes));
                }
            }
        });
    }

    std::function<int()> exportTo(const string& format) const {
        ExportCommand options;
        options.format = format;
        options.traces = {trace};
        return [=] { return exportTraces(options); };
    }

    TemporaryFile file;
    const string trace = file.path();
    Command repair{[this] { return tools::repair({{trace, "-"}, "", false, 0}); }};

private:
    void tryWith(const DamagedTrace& damaged,
                 const std::function<void(const DamagedTrace&)>& attempt) {
        SCOPED_TRACE(damaged.name);
        set(damaged.bytes);
        attempt(damaged);
    }

    static void expectPieces(const Listing& listing, const DamagedTrace& damaged,
                             const string& output) {
        for (const size_t part : damaged.untouched) {
            for (const string& piece : listing.wanted[part]) {
                EXPECT_NE(output.find(piece), string::npos) << piece << output;
            }
        }
    }

    const string& ofRepaired(Listing& listing, const string& kept, const TraceBytes& damaged) {
        const auto [found, isNew] = listing.ofRepaired.try_emplace(kept);
        if (isNew && !kept.empty()) {  // else it is no trace, and gives nothing
            set(bytesOf(kept));
            found->second = run(*listing.command).output;
            set(damaged);
        }
        return found->second;
    }
};

TEST_F(DamagedTraceTest, RepairKeepsEveryMessageThatIsUntouched) {
    std::map<string, CommandResult> again;
    forEachFault([&](const DamagedTrace& damaged) {
        const CommandResult result = repaired();
        size_t position = 0;
        for (const size_t part : damaged.untouched) {
            position = result.output.find(textOf(PARTS[part].bytes), position);
            ASSERT_NE(position, string::npos) << part;
            position += PARTS[part].bytes.size();
        }
        const bool isSound = result.output == textOf(damaged.bytes);
        EXPECT_EQ(result.status == STATUS_OK, isSound);
        EXPECT_LE(linesOf(result.told).size(), 2U) << result.told;
        const auto [found, isNew] = again.try_emplace(isSound ? "" : result.output);
        if (isNew) {
            set(bytesOf(found->first));
            found->second = repaired();
        }
        EXPECT_EQ(found->second.status, STATUS_OK);
        EXPECT_EQ(found->second.output, found->first) << "what was repaired is sound";
    });
}

TEST_F(DamagedTraceTest, ShowShowsEveryMessageThatIsUntouched) {
    const auto whole = [](const string& output) { return std::vector<string>{output}; };
    std::vector<Listing> listings;
    ShowCommand lines;
    lines.trace = trace;
    listings.push_back(listing([=] { return show(lines); }, whole));
    ShowCommand views = lines;
    views.utc = views.fields = views.fix = views.rdb = views.hex = true;
    listings.push_back(listing([=] { return show(views); }, whole));
    expectUntouched(listings);
}

TEST_F(DamagedTraceTest, TablesHaveTheRowsOfMessagesThatAreUntouched) {
    std::vector<Listing> listings;
    listings.push_back(listing(exportTo("csv"), rowsOf));
    listings.push_back(listing(exportTo("jsonl"), rowsOf));
    listings.push_back(listing(exportTo("nmea"), linesOf));
    expectUntouched(listings);
}

TEST_F(DamagedTraceTest, DrawingsHaveThePointsOfMessagesThatAreUntouched) {
    const auto point = [](const string& output) {
        const string key = "\"coordinates\":";
        const size_t begin = output.find(key);
        if (begin == string::npos) {
            return std::vector<string>();
        }
        const size_t end = output.find(']', begin) + 1;
        return std::vector{output.substr(begin + key.size(), end - begin - key.size())};
    };
    std::vector<Listing> listings;
    listings.push_back(listing(exportTo("gpx"), linesOf));
    listings.push_back(listing(exportTo("kml"), linesOf));
    listings.push_back(listing(exportTo("geojson"), point));
    expectUntouched(listings);
}

TEST_F(DamagedTraceTest, InfoAccountsForEveryByte) {
    InfoCommand options;
    options.traces = {trace};
    Command words([=] { return info(options); });
    options.json = true;
    Command json([=] { return info(options); });
    forEachFault([&](const DamagedTrace& damaged) {
        const CommandResult inWords = run(words);
        const CommandResult result = run(json);
        EXPECT_EQ(inWords.status, result.status);
        EXPECT_EQ(inWords.told, result.told);
        const string all = behind(result.output, "\"all\": ");
        const string inDamage = behind(all, "\"damage\": ");
        const size_t length = damaged.bytes.size();
        const size_t kept = repaired().output.size();
        EXPECT_EQ(result.status == STATUS_OK, kept == length);
        EXPECT_EQ(numberBehind(all, "\"bytes\": "), length);
        EXPECT_EQ(numberBehind(inDamage, "\"bytes\": "), length - kept);
        EXPECT_EQ(numberBehind(inDamage, "\"places\": "), kept == length ? 0U : 1U);
        EXPECT_GE(numberBehind(all, "\"gps\": "), gpsOf(damaged.untouched));
        EXPECT_LE(numberBehind(all, "\"gps\": "), PARTS.size());
    });
}

// A page takes so long that not every fault has its turn.
TEST_F(DamagedTraceTest, ReportIsAWholePageOrNone) {
    constexpr size_t FAULTS_PER_PAGE = 17;
    ReportCommand options;
    options.traces = {trace};
    Command report([&] { return tools::report(options); });
    size_t faults = 0;
    forEachFault([&](const DamagedTrace& damaged) {
        if (++faults % FAULTS_PER_PAGE != 0) {
            return;
        }
        const CommandResult result = run(report);
        const size_t kept = repaired().output.size();
        EXPECT_EQ(result.status == STATUS_OK, kept == damaged.bytes.size());
        EXPECT_EQ(result.output.ends_with("</html>\n"), !result.output.empty());
        EXPECT_TRUE(damaged.untouched.empty() || !result.output.empty());
    });
}

TEST_F(DamagedTraceTest, CheckFindsEveryChangeOfWhatWasSent) {
    const TemporaryFile sent(bytesOf(log()));
    CheckCommand options;
    options.log = sent.path();
    options.trace = trace;
    Command check([&] { return tools::check(options); });
    set(soundTrace());
    ASSERT_EQ(run(check).status, STATUS_OK);
    forEachFault([&](const DamagedTrace& damaged) {
        const CommandResult result = run(check);
        const bool isSound = repaired().output == textOf(damaged.bytes);
        EXPECT_EQ(result.status == STATUS_OK, isSound && damaged.saysTheSame);
        EXPECT_EQ(linesOf(result.told).size(), result.status == STATUS_OK ? 0U : 1U) << result.told;
    });
}

// Where a trace is taken for a log, no sentence that stands in it is lost.
TEST_F(DamagedTraceTest, RecordFindsTheSentencesInATrace) {
    RecordCommand options;
    options.inputs = {trace};
    Command record([&] { return tools::record(options); });
    forEachFault([&](const DamagedTrace& damaged) {
        const CommandResult result = run(record);
        for (const size_t part : damaged.untouched) {
            for (const string& line : linesOf(PARTS[part].payload)) {
                EXPECT_NE(result.output.find(line), string::npos) << line;
            }
        }
    });
}

// What cannot be read at the end is moved aside; else nothing is touched.
TEST_F(DamagedTraceTest, RecordGoesOnBehindATraceAndLosesNothingOfIt) {
    const TemporaryFile sent(bytesOf(log()));
    RecordCommand options;
    options.inputs = {sent.path()};
    const string recorded = Command([&] { return tools::record(options); }).run().output;
    ASSERT_EQ(recorded.size(), soundTrace().size() - PARTS[1].bytes.size());
    const Folder folder;
    options.append = true;
    options.output = folder.path("trace");
    Command record([&] { return tools::record(options); });
    forEachFault([&](const DamagedTrace& damaged) {
        const string before = textOf(damaged.bytes);
        folder.write("trace", before);
        const CommandResult result = record.run();
        EXPECT_TRUE(areLines(result.told)) << result.told;
        const string left = folder.take("trace");
        const string aside = folder.take("trace.torn");
        if (result.status == STATUS_USAGE) {
            EXPECT_EQ(left, before);
            EXPECT_TRUE(damaged.untouched.empty());
            return;
        }
        EXPECT_EQ(result.status, STATUS_OK) << result.told;
        ASSERT_TRUE(left.ends_with(recorded));
        EXPECT_EQ(left.substr(0, left.size() - recorded.size()) + aside, before);
    });
}

}  // namespace damagedTraceTest
