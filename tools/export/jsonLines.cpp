#include "tools/export/Format.h"
#include "tools/export/columns.h"

namespace vextrace::tools {

namespace {

/// A JSON object per line for each fix, with the names and values of the CSV columns; null where a
/// value is missing. Names and values are made here and hold nothing that JSON wants escaped.
class JsonLines : public Format {
public:
    using Format::Format;

    Content content() const override { return Content::ALL_FIXES; }

    void begin() override {
        for (size_t i = 0; i < COLUMNS.size(); ++i) {
            names[i] = (i == 0 ? "{\"" : ",\"") + std::string(COLUMNS[i].name) + "\":";
        }
    }

    void addFix(const Fix& fix, const GpsView& /*message*/) override {
        TextBuffer& line = out.pending();
        for (size_t i = 0; i < COLUMNS.size(); ++i) {
            line += names[i];
            appendValue(line, COLUMNS[i], fix);
        }
        line += "}\n";
        out.flushWhenFull();
    }

private:
    static void appendValue(TextBuffer& line, const Column& column, const Fix& fix) {
        const size_t begin = line.size();
        if (column.isText) {
            line += '"';
        }
        if (!column.append(line, fix)) {
            line.truncate(begin);
            line += "null";
        } else if (column.isText) {
            line += '"';
        }
    }

    std::array<std::string, COLUMNS.size()> names;
};

}  // namespace

std::unique_ptr<Format> makeJsonLines(OutputFile& output) {
    return std::make_unique<JsonLines>(output);
}

}  // namespace vextrace::tools
