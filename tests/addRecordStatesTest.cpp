// addRecord splits only what can have changed. In whatever state a message is, it must give what
// splitting both sentences each time gives, which is what the model does.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "tests/model/compareMessages.h"
#include "tests/support/fieldTexts.h"
#include "tests/support/messages.h"

namespace {

const std::vector<std::string> RECORDS = {
    RMC_SENTENCE + "\r\n",
    "$GNRMC,999999,V,1,S,2,W,3,4,5,6,E,N*00\r\n",
    "$GPRMC,,,,,,,,,,,,*00",
    "$GPRMC",
    "$GPRMC,,,,,,,,,,,,D*00",
    GGA_SENTENCE + "\r\n",
    "$GNGGA,888888,1,S,2,W,3,4,5,6,F,7,F,8,9*00",
    "$GPGGA,,,,,,,,,,,,,,*00",
    "$GPGGA",
    "$PGRME,15.0,M,45.0,M,25.0,M*1C",
};

using Records = std::vector<std::string>;

// No record, and each alone.
std::vector<Records> atMostOneRecord() {
    std::vector<Records> all = {{}};
    for (const std::string& record : RECORDS) {
        all.push_back({record});
    }
    return all;
}

// Each pair besides.
std::vector<Records> fewRecords() {
    std::vector<Records> all = atMostOneRecord();
    for (const std::string& first : RECORDS) {
        for (const std::string& second : RECORDS) {
            all.push_back({first, second});
        }
    }
    return all;
}

// What comes to a message that another one is assigned to or changes places with.
const std::vector<Records> OTHERS = {
    {}, {RECORDS[1]}, {RECORDS[6]}, {RECORDS[1], RECORDS[6]}, {RECORDS[1], RECORDS[9]},
};

void add(MessagePair& pair, const std::string& record) {
    pair.library->addRecord(record);
    pair.model.addRecord(record);
}

MessagePair added(uint64_t timeStamp, const Records& records) {
    MessagePair pair;
    pair.library->setTimeStamp(timeStamp);
    pair.model.stamp = timeStamp;
    for (const std::string& record : records) {
        add(pair, record);
    }
    return pair;
}

// The constructor alone takes the first record, which stays unsplit until a second comes.
MessagePair built(uint64_t timeStamp, const Records& records) {
    if (records.empty()) {
        return added(timeStamp, records);
    }
    MessagePair pair{std::make_unique<GPSTraceMessage>(timeStamp, records.front()),
                     GPSModel(timeStamp, records.front())};
    for (size_t i = 1; i < records.size(); ++i) {
        add(pair, records[i]);
    }
    return pair;
}

std::string difference(const MessagePair& pair) {
    Comparison comparison;
    compareFields(comparison, pair);
    compareWriting(comparison, pair);
    return comparison.text();
}

// Compares at once, and again behind every record that may come next.
void expectSameFromHereOn(const MessagePair& pair) {
    ASSERT_EQ(difference(pair), "");
    for (const std::string& record : RECORDS) {
        MessagePair next = cloned(pair);
        add(next, record);
        ASSERT_EQ(difference(next), "") << record;
        add(next, RECORDS[0]);
        add(next, RECORDS[5]);
        ASSERT_EQ(difference(next), "") << record << " and more";
    }
    MessagePair next = cloned(pair);
    Comparison comparison;
    compareRdb(comparison, next);
    add(next, RECORDS[9]);
    compareFields(comparison, next);
    ASSERT_EQ(comparison.text(), "");
}

// What a message holds that was moved from is not said. Whatever it is, once more is added it has
// the fields of the sentences that it holds, and no others.
void expectFieldsOfWhatItHolds(GPSTraceMessage& movedFrom) {
    for (const std::string& record : RECORDS) {
        GPSTraceMessage message = movedFrom;
        message.addRecord(record);
        GPSTraceMessage expected;
        for (const auto& [code, sentence] : message.getSentences()) {
            expected.addRecord(sentence);
        }
        ASSERT_EQ(fieldTexts(message.getRMC()), fieldTexts(expected.getRMC())) << record;
        ASSERT_EQ(fieldTexts(message.getGGA()), fieldTexts(expected.getGGA())) << record;
    }
}

void forEachStateOf(const std::vector<Records>& all, const std::function<void(MessagePair)>& test) {
    for (const Records& records : all) {
        SCOPED_TRACE(testing::PrintToString(records));
        for (const auto& make : {added, built}) {
            test(make(258, records));
            if (testing::Test::HasFatalFailure()) {
                return;
            }
        }
    }
}

void forEachState(const std::function<void(MessagePair)>& test) {
    forEachStateOf(fewRecords(), test);
}

void forEachTwoStates(const std::function<void(MessagePair, MessagePair)>& test) {
    std::vector<Records> all = atMostOneRecord();
    all.push_back({RECORDS[0], RECORDS[5]});
    all.push_back({RECORDS[3], RECORDS[5]});
    all.push_back({RECORDS[0], RECORDS[7]});
    for (const Records& records : OTHERS) {
        SCOPED_TRACE(testing::PrintToString(records));
        for (const auto& make : {added, built}) {
            forEachStateOf(all,
                           [&](MessagePair pair) { test(std::move(pair), make(259, records)); });
        }
    }
}

}  // namespace

TEST(AddRecordStatesTest, SplitsWhatWasAddedOrBuilt) {
    forEachState([](const MessagePair& pair) { expectSameFromHereOn(pair); });
}

TEST(AddRecordStatesTest, SplitsWhatWasDecoded) {
    for (const Records& records : fewRecords()) {
        if (!records.empty()) {
            const std::string bytes = GPSModel::of(258, records).write();
            const MessagePair pair{rebuild(bytesOf(bytes)), *GPSModel::read(bytes)};
            ASSERT_NE(pair.library, nullptr);
            ASSERT_NO_FATAL_FAILURE(expectSameFromHereOn(pair)) << bytes;
        }
    }
}

TEST(AddRecordStatesTest, SplitsBehindATextForTheRDB) {
    forEachState([](MessagePair pair) {
        Comparison comparison;
        compareRdb(comparison, pair);
        ASSERT_EQ(comparison.text(), "");
        expectSameFromHereOn(pair);
    });
}

TEST(AddRecordStatesTest, SplitsWhatWasMovedIntoANewMessage) {
    forEachState([](const MessagePair& pair) {
        expectSameFromHereOn(
            {std::make_unique<GPSTraceMessage>(std::move(*pair.library)), pair.model});
        expectFieldsOfWhatItHolds(*pair.library);
    });
}

TEST(AddRecordStatesTest, SplitsWhatWasAssigned) {
    forEachTwoStates([](MessagePair pair, const MessagePair& other) {
        *pair.library = *other.library;
        pair.model = other.model;
        expectSameFromHereOn(pair);
        ASSERT_EQ(difference(other), "");
    });
}

TEST(AddRecordStatesTest, SplitsWhatWasMovedByAssignment) {
    forEachTwoStates([](MessagePair pair, const MessagePair& other) {
        *pair.library = std::move(*other.library);
        pair.model = other.model;
        expectSameFromHereOn(pair);
        expectFieldsOfWhatItHolds(*other.library);
    });
}

TEST(AddRecordStatesTest, SplitsWhatChangedPlaces) {
    forEachTwoStates([](MessagePair pair, MessagePair other) {
        std::swap(*pair.library, *other.library);
        std::swap(pair.model, other.model);
        expectSameFromHereOn(pair);
        expectSameFromHereOn(other);
    });
}

TEST(AddRecordStatesTest, SplitsWhatWasAssignedToItself) {
    forEachState([](const MessagePair& pair) {
        GPSTraceMessage& message = *pair.library;
        const GPSTraceMessage& itself = message;
        message = itself;
        expectSameFromHereOn(pair);
    });
}

TEST(AddRecordStatesTest, SplitsWhatWasMovedToItself) {
    forEachState([](const MessagePair& pair) {
        GPSTraceMessage& message = *pair.library;
        GPSTraceMessage& itself = message;
        message = std::move(itself);
        expectFieldsOfWhatItHolds(message);
    });
}

TEST(AddRecordStatesTest, SplitsWhatIsFilledAgainAfterAMove) {
    forEachState([](MessagePair pair) {
        const GPSTraceMessage moved(std::move(*pair.library));
        *pair.library = GPSTraceMessage(260, RECORDS[0]);
        pair.model = GPSModel(260, RECORDS[0]);
        expectSameFromHereOn(pair);
    });
}
