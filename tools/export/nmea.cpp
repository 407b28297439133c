#include <optional>
#include <string_view>

#include "libvexstream/sentence.h"
#include "tools/export/Format.h"

namespace vextrace::tools {

namespace {

/// The sentences as the messages hold them, line ends included. Where the stamp changes, one that
/// tells the time comes first, so that no other sentence seems to belong to the epoch before.
class Nmea : public Format {
public:
    using Format::Format;

    Content content() const override { return Content::SENTENCES; }

    void addMessage(const GpsView& message) override {
        const std::string_view* const first =
            message.getTimeStamp() == stamp ? nullptr : timed(message);
        stamp = message.getTimeStamp();
        if (first != nullptr) {
            out.write(*first);
        }
        for (const std::string_view& sentence : message.getSentences()) {
            if (&sentence != first) {
                out.write(sentence);
            }
        }
    }

private:
    // The first sentence that tells the time; null where none does.
    static const std::string_view* timed(const GpsView& message) {
        for (const std::string_view& sentence : message.getSentences()) {
            if (timeOf(sentence)) {
                return &sentence;
            }
        }
        return nullptr;
    }

    std::optional<timeStamp_t> stamp;  // of the message before
};

}  // namespace

std::unique_ptr<Format> makeNmea(OutputFile& output) {
    return std::make_unique<Nmea>(output);
}

}  // namespace vextrace::tools
