#include <string>

#include "tools/export/Format.h"
#include "tools/export/columns.h"
#include "tools/export/text.h"
#include "tools/io/escape.h"
#include "tools/io/json.h"

namespace vextrace::tools {

namespace {

/// A JSON object per line for each fix, with the names and values of the CSV columns; null where a
/// value is missing. All but the name of the trace is made here, and holds nothing that JSON wants
/// escaped.
class JsonLines : public Format {
public:
    using Format::Format;

    Content content() const override { return Content::ALL_FIXES; }

    void begin() override {
        for (size_t i = 0; i < COLUMNS.size(); ++i) {
            names[i] = ",\"" + std::string(COLUMNS[i].name) + (COLUMNS[i].isText ? "\":\"" : "\":");
        }
    }

    void beginTrace(const std::string& name) override {
        trace = "{\"trace\":" + Json(utf8Name(name)).text() + ",\"message\":";
    }

    void addFix(const Fix& fix, const GpsView& /*message*/, uint64_t number) override {
        TextBuffer& line = out.pending();
        line += trace;
        appendNumber(line, number);
        for (size_t i = 0; i < COLUMNS.size(); ++i) {
            line += names[i];
            appendValue(line, COLUMNS[i], fix);
        }
        line += "}\n";
        out.flushWhenFull();
    }

private:
    // Behind its name.
    static void appendValue(TextBuffer& line, const Column& column, const Fix& fix) {
        const size_t begin = line.size();
        if (!column.append(line, fix)) {
            line.truncate(begin - (column.isText ? 1 : 0));
            line += "null";
        } else if (column.isText) {
            line += '"';
        }
    }

    std::string trace;                              // how its lines begin
    std::array<std::string, COLUMNS.size()> names;  // with the quotation mark of a text
};

}  // namespace

std::unique_ptr<Format> makeJsonLines(OutputFile& output) {
    return std::make_unique<JsonLines>(output);
}

}  // namespace vextrace::tools
