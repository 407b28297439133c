#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "libvextrace/GPSTraceMessage.h"
#include "tests/support/fieldTexts.h"
#include "tests/support/messages.h"

namespace {

constexpr int THREADS = 4;
constexpr int ROUNDS = 200;

// Starts the work in all threads at once and waits for them; the work gets the thread's number.
void runInThreads(const std::function<void(int)>& work) {
    std::atomic<int> waiting{THREADS};
    std::vector<std::thread> threads;
    threads.reserve(THREADS);
    for (int number = 0; number < THREADS; ++number) {
        threads.emplace_back([&work, &waiting, number] {
            --waiting;
            while (waiting > 0) {
                std::this_thread::yield();
            }
            for (int round = 0; round < ROUNDS; ++round) {
                work(number);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

GPSTraceMessage wholeMessage(timeStamp_t timeStamp) {
    GPSTraceMessage message(timeStamp, RMC_SENTENCE + "\r\n");
    message.addRecord(GGA_SENTENCE + "\r\n");
    message.addRecord("$PGRME,15.0,M," + std::to_string(timeStamp));
    message.setHeaderReserved(0xFEDC);
    message.setMbnr(0x01234567);
    return message;
}

// Everything that the message and its base tell about themselves.
std::string textsOf(const GPSTraceMessage& gps) {
    const MessageBase& message = gps;
    std::ostringstream os;
    message.print(os) << '\n' << gps.getRMC() << gps.getGGA() << message.toString() << '\n';
    os << gps.getString() << gps.getSourceChannel() << ' ' << gps.getSourceChannelID() << ' '
       << message.getMsgID() << ' ' << message.getTimeStamp() << ' ' << message.getMbnr() << ' '
       << message.getHeaderReserved() << ' ' << message.getSize() << ' '
       << gps.hasNmeaDataType(GPSTraceMessage::NMEA_DATA_GPRMC)
       << gps.hasNmeaDataType(GPSTraceMessage::NMEA_DATA_GPGGA);
    return os.str();
}

auto numbersOf(const GPSTraceMessage& message) {
    GPSTraceMessage::numeric_gprmc_t r;
    GPSTraceMessage::numeric_gpgga_t g;
    const bool both = message.getGPRMC(r) && message.getGPGGA(g);
    return std::make_tuple(both, r.timeUTC, r.status, r.latitude, r.longitude, r.speed, r.course,
                           r.dateUTC, g.timeUTC, g.status, g.latitude, g.longitude,
                           g.numberSatellites, g.antennaAltitude);
}

// Writes without the checks of the test framework, which have locks of their own.
Bytes written(const MessageBase& message) {
    Bytes bytes(message.getSize() + 2);
    uint8_t* pdest = bytes.data();
    message.writeToByteArray(pdest, bytes.size(), false);
    return bytes;
}

std::unique_ptr<MessageBase> decoded(const Bytes& bytes) {
    return MessageFactory::decode(bytes.data(), bytes.size()).message;
}

}  // namespace

TEST(ThreadsTest, ReadOneMessageAtOnce) {
    const GPSTraceMessage message = wholeMessage(258);
    const std::string texts = textsOf(message);
    const auto numbers = numbersOf(message);
    const Bytes bytes = written(message);
    EXPECT_NE(texts.find("$PGRME,15.0,M,258"), std::string::npos);
    EXPECT_TRUE(std::get<0>(numbers));

    std::atomic<int> wrong{0};
    runInThreads([&](int) {
        const std::unique_ptr<GPSTraceMessage> copy(message.clone());
        const bool right = textsOf(message) == texts && numbersOf(message) == numbers &&
                           written(message) == bytes && *copy == message && textsOf(*copy) == texts;
        wrong += right ? 0 : 1;
    });
    EXPECT_EQ(wrong, 0);
}

TEST(ThreadsTest, DecodeSideBySide) {
    ASSERT_TRUE(GPSTraceMessage::registerMessage());
    std::vector<Bytes> serialisedMessages;
    serialisedMessages.reserve(THREADS);
    for (int number = 0; number < THREADS; ++number) {
        serialisedMessages.push_back(
            written(wholeMessage(1000 + static_cast<timeStamp_t>(number))));
    }
    std::atomic<int> wrong{0};
    runInThreads([&](int number) {
        const Bytes& bytes = serialisedMessages[static_cast<size_t>(number)];
        const std::unique_ptr<MessageBase> message = decoded(bytes);
        wrong += message != nullptr && written(*message) == bytes ? 0 : 1;
    });
    EXPECT_EQ(wrong, 0);
}

TEST(ThreadsTest, DecodeTheSameBytesAtOnce) {
    ASSERT_TRUE(GPSTraceMessage::registerMessage());
    const GPSTraceMessage expected = wholeMessage(258);
    const Bytes bytes = written(expected);
    std::atomic<int> wrong{0};
    runInThreads([&](int) {
        const std::unique_ptr<MessageBase> message = decoded(bytes);
        wrong += message != nullptr && *message == expected ? 0 : 1;
    });
    EXPECT_EQ(wrong, 0);
}

TEST(ThreadsTest, RegisterAndDecodeAtOnce) {
    const GPSTraceMessage expected = wholeMessage(258);
    const Bytes bytes = written(expected);
    std::atomic<int> wrong{0};
    runInThreads([&](int) {
        const bool registered = GPSTraceMessage::registerMessage();
        const std::unique_ptr<MessageBase> message = decoded(bytes);
        wrong += registered && message != nullptr && *message == expected ? 0 : 1;
    });
    EXPECT_EQ(wrong, 0);
}

TEST(ThreadsTest, WorkOnMessagesOfTheirOwn) {
    const std::string position = "48°7.038 N, 11°31.000 E, 545.4M";
    const std::string texts = textsOf(wholeMessage(258));
    std::atomic<int> wrong{0};
    runInThreads([&](int) {
        GPSTraceMessage message = wholeMessage(258);
        const bool right = message.formatForRDB() == position && textsOf(message) == texts;
        wrong += right ? 0 : 1;
    });
    EXPECT_EQ(wrong, 0);
}
