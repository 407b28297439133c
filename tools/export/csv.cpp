#include "tools/export/Format.h"
#include "tools/export/columns.h"

namespace vextools {

namespace {

/// Comma-separated values by RFC 4180: a header, then a row per fix; empty where a value is
/// missing. No value needs quotes.
class Csv : public Format {
public:
    using Format::Format;

    Content content() const override { return Content::ALL_FIXES; }

    void begin() override {
        for (const Column& column : COLUMNS) {
            row += column.name;
            row += ',';
        }
        writeRow();
    }

    void addFix(const Fix& fix, const GPSTraceMessage& /*message*/) override {
        for (const Column& column : COLUMNS) {
            column.append(row, fix);
            row += ',';
        }
        writeRow();
    }

private:
    void writeRow() {
        row.pop_back();  // the last comma
        row += "\r\n";
        out.write(row);
        row.clear();
    }

    std::string row;
};

}  // namespace

std::unique_ptr<Format> makeCsv(OutputFile& output) {
    return std::make_unique<Csv>(output);
}

}  // namespace vextools
