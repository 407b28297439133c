#include <optional>
#include <string_view>

#include "libvexstream/TalkerMemory.h"
#include "libvexstream/sentence.h"
#include "tools/export/Format.h"

namespace vextrace::tools {

namespace {

/// The sentences as the messages hold them, line ends included; those with a right checksum with
/// the talker that they were sent with. Where the stamp changes, one that tells the time comes
/// first, so that no other sentence seems to belong to the epoch before.
class Nmea : public Format {
public:
    using Format::Format;

    Content content() const override { return Content::SENTENCES; }

    void addMessage(const GpsView& message) override {
        const std::string_view* const first =
            message.getTimeStamp() == stamp ? nullptr : timed(message);
        stamp = message.getTimeStamp();
        if (first != nullptr) {
            write(*first);
        }
        for (const std::string_view& sentence : message.getSentences()) {
            if (&sentence != first) {
                write(sentence);
            }
        }
    }

    void passOver(const GpsView& message) override {
        for (const std::string_view sentence : message.getSentences()) {
            talkers.judge(sentence, message.getTimeStamp());
        }
    }

    void endTrace() override {
        talkers.endTrace();
        stamp.reset();
    }

private:
    void write(std::string_view sentence) {
        constexpr size_t TALKER = 2;  // behind "$G"
        if (const char talker = talkers.judge(sentence, *stamp).talker; talker != 'P') {
            out.write(sentence.substr(0, TALKER));
            out.write({&talker, 1});
            sentence.remove_prefix(TALKER + 1);
        }
        out.write(sentence);
    }

    // The first sentence that tells the time; null where none does.
    static const std::string_view* timed(const GpsView& message) {
        for (const std::string_view& sentence : message.getSentences()) {
            if (timeOf(sentence)) {
                return &sentence;
            }
        }
        return nullptr;
    }

    TalkerMemory talkers;
    std::optional<timeStamp_t> stamp;  // of the message before, in this trace
};

}  // namespace

std::unique_ptr<Format> makeNmea(OutputFile& output) {
    return std::make_unique<Nmea>(output);
}

}  // namespace vextrace::tools
