// One digit of a log changes to another one: what is known to be wrong steers nothing else.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "libvexstream/ByteSource.h"
#include "libvexstream/EpochBuilder.h"
#include "libvexstream/Fix.h"
#include "libvexstream/Framer.h"
#include "libvexstream/TraceReader.h"
#include "libvexstream/utc.h"

using namespace vextrace;
using std::string;
using std::vector;

namespace {

const std::chrono::sys_days FIRST_DAY = *calendarDay(1994, 3, 23);

// A log, and which epoch each byte belongs to.
struct Log {
    string text;
    vector<size_t> epochEnds;

    size_t epochAt(size_t place) const {
        size_t epoch = 0;
        while (place >= epochEnds[epoch]) {
            ++epoch;
        }
        return epoch;
    }
};

// Over midnight. The first sentence has no digit, so that whatever changes, a right checksum was
// sent before. RMC, where there is one, stands in every other epoch.
Log logOf(bool hasRmc) {
    Log log;
    log.text = makeSentence("GPTXT,begin");
    for (const string time : {"235957", "235958.50", "000000", "000001", "020002", "020003"}) {
        const string date = time[0] == '2' ? "230394" : "240394";
        const string position = "4807.038,N,01131.000,E,";
        if (hasRmc && log.epochEnds.size() % 2 == 0) {
            log.text +=
                makeSentence("GNRMC," + time + ",A," + position + "022.4,084.4," + date + ",,,A");
        }
        log.text += makeSentence("GNGGA," + time + "," + position + "1,08,0.9,545.4,M,46.9,M,,");
        log.text += makeSentence("GPGSV,1,1,01,03,40,083,46");
        log.epochEnds.push_back(log.text.size());
    }
    return log;
}

// What a recording makes of a log: the messages' bytes.
vector<uint8_t> recorded(const string& log) {
    Framer framer;
    EpochBuilder epochs(StampSource::SENTENCES, FIRST_DAY);
    vector<uint8_t> trace;
    const auto append = [&](const EpochBuilder::Part& part) {
        trace.insert(trace.end(), part.bytes.begin(), part.bytes.end());
    };
    framer.feed(log);
    framer.finish();
    while (const auto sentence = framer.next()) {
        append(epochs.add(sentence->text, sentence->checksum, 0));
    }
    append(epochs.take());
    return trace;
}

using Shown = std::tuple<bool, std::optional<double>, std::optional<double>, std::optional<double>,
                         std::optional<double>>;

// The fixes of a trace that are right, by their stamps. A wrong time that is by chance that of the
// next epoch takes the first place there: the right GGA is in the next message, a fix of its own.
std::map<string, Shown> fixesOf(const vector<uint8_t>& trace) {
    std::map<string, Fix> fixes;
    MemorySource source(trace);
    TraceReader messages(source);
    FixReader reader;
    for (TraceItem item = messages.next(); item.kind != TraceItem::Kind::END;
         item = messages.next()) {
        const std::optional<Fix> fix = reader.read(*item.gps);
        if (fix && !fix->repeats && !fix->isDoubtful()) {
            Fix& first = fixes.try_emplace(utcText(fix->stamp), *fix).first->second;
            first.altitude = first.altitude ? first.altitude : fix->altitude;
        }
    }
    std::map<string, Shown> result;
    for (const auto& [stamp, fix] : fixes) {
        result.emplace(stamp, Shown{fix.valid, fix.latitude, fix.altitude, fix.speed, fix.course});
    }
    return result;
}

void expectOthersUnchanged(const Log& log) {
    const std::map<string, Shown> sound = fixesOf(recorded(log.text));
    ASSERT_EQ(sound.size(), log.epochEnds.size());
    const vector<std::pair<string, Shown>> ordered(sound.begin(), sound.end());
    string changed = log.text;
    for (size_t place = 0; place < changed.size(); ++place) {
        if (changed[place] < '0' || changed[place] > '9') {
            continue;
        }
        for (char digit = '0'; digit <= '9'; ++digit) {
            changed[place] = digit;
            const std::map<string, Shown> fixes = fixesOf(recorded(changed));
            for (size_t epoch = 0; epoch < ordered.size(); ++epoch) {
                const auto& [stamp, fix] = ordered[epoch];
                const auto found = fixes.find(stamp);
                EXPECT_TRUE(epoch == log.epochAt(place) ||
                            (found != fixes.end() && found->second == fix))
                    << stamp << " with " << digit << " at " << place;
            }
        }
        changed[place] = log.text[place];
    }
}

}  // namespace

TEST(FlippedDigitsTest, MoveNoOtherEpochAndChangeNoOtherFix) {
    expectOthersUnchanged(logOf(true));
}

TEST(FlippedDigitsTest, MoveNoOtherEpochOfALogWithoutDates) {
    expectOthersUnchanged(logOf(false));
}
