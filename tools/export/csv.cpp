#include "tools/export/Format.h"
#include "tools/export/columns.h"

namespace vextrace::tools {

namespace {

/// Comma-separated values by RFC 4180: a header, then a row per fix; empty where a value is
/// missing. No value needs quotes.
class Csv : public Format {
public:
    using Format::Format;

    Content content() const override { return Content::ALL_FIXES; }

    void begin() override {
        for (const Column& column : COLUMNS) {
            beginValue(column);
            out.pending() += column.name;
        }
        endRow();
    }

    void addFix(const Fix& fix, const GpsView& /*message*/) override {
        for (const Column& column : COLUMNS) {
            beginValue(column);
            column.append(out.pending(), fix);
        }
        endRow();
    }

private:
    void beginValue(const Column& column) {
        if (&column != &COLUMNS.front()) {
            out.pending() += ',';
        }
    }

    void endRow() {
        out.pending() += "\r\n";
        out.flushWhenFull();
    }
};

}  // namespace

std::unique_ptr<Format> makeCsv(OutputFile& output) {
    return std::make_unique<Csv>(output);
}

}  // namespace vextrace::tools
