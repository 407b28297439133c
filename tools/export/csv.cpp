#include <string>

#include "tools/export/Format.h"
#include "tools/export/columns.h"
#include "tools/export/text.h"
#include "tools/io/escape.h"

namespace vextrace::tools {

namespace {

// Between quotation marks where it needs them.
std::string quoted(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string result = "\"";
    for (const char c : text) {
        result.append(c == '"' ? 2 : 1, c);
    }
    return result + '"';
}

/// Comma-separated values by RFC 4180: a header, then a row per fix; empty where a value is
/// missing.
class Csv : public Format {
public:
    using Format::Format;

    Content content() const override { return Content::ALL_FIXES; }

    void begin() override {
        out.pending() += "trace,message";
        for (const Column& column : COLUMNS) {
            out.pending() += ',';
            out.pending() += column.name;
        }
        endRow();
    }

    void beginTrace(const std::string& name) override { trace = quoted(utf8Name(name)) + ','; }

    void addFix(const Fix& fix, const GpsView& /*message*/, uint64_t number) override {
        out.pending() += trace;
        appendNumber(out.pending(), number);
        for (const Column& column : COLUMNS) {
            out.pending() += ',';
            column.append(out.pending(), fix);
        }
        endRow();
    }

private:
    void endRow() {
        out.pending() += "\r\n";
        out.flushWhenFull();
    }

    std::string trace;  // the first value of its rows, with the comma
};

}  // namespace

std::unique_ptr<Format> makeCsv(OutputFile& output) {
    return std::make_unique<Csv>(output);
}

}  // namespace vextrace::tools
