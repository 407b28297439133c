#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

#include "benchmarks/Goals.h"
#include "benchmarks/PlainGps.h"
#include "benchmarks/operations.h"
#include "benchmarks/timing.h"

namespace {

using Sentences = std::vector<std::string>;
using Bytes = std::vector<uint8_t>;

constexpr double SECONDS_PER_THREAD = 0.1;

// Threads that share nothing run side by side; a lock or a counter that they share shows.
constexpr double WANTED_OF_TWO_THREADS = 1.6;

bool isRmc(const std::string& sentence) {
    return sentence.compare(3, 3, "RMC") == 0;
}

// The sentences of a log, a fix with all that goes with it beginning at each RMC sentence.
std::vector<Sentences> readFixes(const char* path) {
    std::ifstream log(path, std::ios::binary);
    std::vector<Sentences> fixes;
    for (std::string line; std::getline(log, line);) {
        if (line.size() < GPSTraceMessage::NMEA_CODE_SIZE || line[0] != '$') {
            continue;
        }
        if (fixes.empty() || isRmc(line)) {
            fixes.emplace_back();
        }
        fixes.back().push_back(line + '\n');
    }
    return fixes;
}

size_t countSentences(const std::vector<Sentences>& fixes) {
    size_t count = 0;
    for (const Sentences& sentences : fixes) {
        count += sentences.size();
    }
    return count;
}

template <class Message>
void buildAll(const std::vector<Sentences>& fixes) {
    for (const Sentences& sentences : fixes) {
        build<Message>(sentences);
    }
}

// The whole road: text in, numbers and bytes out.
template <class Message>
void runRoad(const std::vector<Sentences>& fixes) {
    typename Message::numeric_gprmc_t gprmc{};
    typename Message::numeric_gpgga_t gpgga{};
    for (const Sentences& sentences : fixes) {
        const auto message = build<Message>(sentences);
        message.getGPRMC(gprmc);
        message.getGPGGA(gpgga);
        bytesOf(message);
    }
}

template <class Message>
std::vector<Bytes> serialise(const std::vector<Sentences>& fixes) {
    Message::registerMessage();
    std::vector<Bytes> messages;
    messages.reserve(fixes.size());
    for (const Sentences& sentences : fixes) {
        messages.push_back(bytesOf(build<Message>(sentences)));
    }
    return messages;
}

void decodeAll(const std::vector<Bytes>& messages) {
    for (const Bytes& bytes : messages) {
        MessageFactory::decode(bytes.data(), bytes.size());
    }
}

// Both ways must do the same, or their times say nothing.
std::ostream& dumpFields(std::ostream& os, const GPSTraceMessage& message) {
    return os << message.getRMC() << message.getGGA();
}

std::ostream& dumpFields(std::ostream& os, const PlainGps& message) {
    GPSModel::dumpRmc(os, message.getModel().rmc);
    GPSModel::dumpGga(os, message.getModel().gga);
    return os;
}

template <class Message>
std::string everythingOf(const Sentences& sentences) {
    auto message = build<Message>(sentences);
    typename Message::numeric_gprmc_t gprmc{};
    typename Message::numeric_gpgga_t gpgga{};
    message.getGPRMC(gprmc);
    message.getGPGGA(gpgga);
    std::ostringstream os;
    os << std::hexfloat << gprmc.timeUTC << ' ' << gprmc.status << ' ' << gprmc.latitude << ' '
       << gprmc.longitude << ' ' << gprmc.speed << ' ' << gprmc.course << ' ' << gprmc.dateUTC
       << ' ' << gpgga.timeUTC << ' ' << gpgga.status << ' ' << gpgga.latitude << ' '
       << gpgga.longitude << ' ' << gpgga.numberSatellites << ' ' << gpgga.antennaAltitude << '\n'
       << message.formatForRDB() << '\n';
    dumpFields(os, message) << static_cast<const MessageBase&>(message).toString();
    return os.str();
}

bool waysAgree(const std::vector<Sentences>& fixes) {
    for (const Sentences& sentences : fixes) {
        if (everythingOf<GPSTraceMessage>(sentences) != everythingOf<PlainGps>(sentences)) {
            std::fprintf(stderr, "The plain way differs at %s", sentences.front().c_str());
            return false;
        }
    }
    return true;
}

void printRoad(const char* name, double sentences, const Work& work, const Work& plain) {
    const std::vector<double> times = medianSeconds({work, plain});
    std::printf("%-22s  %15.0f  %17.0f  %6.2f\n", name, sentences / times[0], sentences / times[1],
                times[1] / times[0]);
}

void printRoads(const std::vector<Sentences>& fixes) {
    const auto count = static_cast<double>(countSentences(fixes));
    std::printf("%-22s  %15s  %17s  %6s\n", "road", "sentences per s", "plain way", "ratio");
    printRoad(
        "text to messages", count, [&] { buildAll<GPSTraceMessage>(fixes); },
        [&] { buildAll<PlainGps>(fixes); });
    printRoad(
        "text-to-numbers+bytes", count, [&] { runRoad<GPSTraceMessage>(fixes); },
        [&] { runRoad<PlainGps>(fixes); });
}

// Every thread does the work; two of them share nothing but what they read.
void runThreads(size_t count, const Work& work) {
    std::vector<std::thread> threads;
    for (size_t i = 0; i < count; ++i) {
        threads.emplace_back(work);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void printThreads(const std::vector<Bytes>& messages, double sentences, Goals& goals) {
    const double once = medianSeconds({[&] { decodeAll(messages); }})[0];
    const long times = std::max(1L, static_cast<long>(SECONDS_PER_THREAD / once));
    const Work work = [&] {
        for (long i = 0; i < times; ++i) {
            decodeAll(messages);
        }
    };
    const auto walls = fastestSeconds({[&] { runThreads(1, work); }, [&] { runThreads(2, work); }});
    const double decoded = sentences * static_cast<double>(times);
    const double ratio = 2 * walls[0] / walls[1];
    std::printf("%-22s  %15.0f\n", "decode, one thread", decoded / walls[0]);
    std::printf("%-22s  %15.0f  %.2f times one, wanted %.1f%s\n", "decode, two threads",
                2 * decoded / walls[1], ratio, WANTED_OF_TWO_THREADS,
                goals.verdict(ratio, WANTED_OF_TWO_THREADS));
}

void printDecoding(const std::vector<Sentences>& fixes, Goals& goals) {
    const std::vector<Bytes> messages = serialise<GPSTraceMessage>(fixes);
    const std::vector<Bytes> plainMessages = serialise<PlainGps>(fixes);
    size_t held = 0;
    for (const Bytes& bytes : messages) {
        held += static_cast<size_t>(
            std::count(bytes.begin() + MessageBase::MO_BASE_DERIVED, bytes.end(), '\n'));
    }
    const auto sentences = static_cast<double>(held);
    printRoad(
        "decode", sentences, [&] { decodeAll(messages); }, [&] { decodeAll(plainMessages); });
    if (std::thread::hardware_concurrency() > 1) {
        printThreads(messages, sentences, goals);
    }
}

}  // namespace

int main(int argc, char** argv) {
    Goals goals(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "Usage: %s [--check] LOG\n", argv[0]);
        return EXIT_FAILURE;
    }
    const std::vector<Sentences> fixes = readFixes(argv[1]);
    if (fixes.empty()) {
        std::fprintf(stderr, "%s: no sentences.\n", argv[1]);
        return EXIT_FAILURE;
    }
    if (!waysAgree(fixes)) {
        return EXIT_FAILURE;
    }
    std::printf("%s: %zu sentences in %zu messages\n", argv[1], countSentences(fixes),
                fixes.size());
    printRoads(fixes);
    printDecoding(fixes, goals);
    return goals.exitStatus();
}
