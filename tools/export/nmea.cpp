#include "tools/export/Format.h"

namespace vextools {

namespace {

/// The sentences as the messages hold them, line ends included.
class Nmea : public Format {
public:
    using Format::Format;

    Content content() const override { return Content::SENTENCES; }

    void addMessage(const GPSTraceMessage& message) override {
        for (const auto& [code, sentence] : message.getSentences()) {
            out.write(sentence);
        }
    }
};

}  // namespace

std::unique_ptr<Format> makeNmea(OutputFile& output) {
    return std::make_unique<Nmea>(output);
}

}  // namespace vextools
