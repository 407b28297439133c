#include <array>
#include <cstring>
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
            const Column& column = COLUMNS[i];
            const std::string name =
                ",\"" + std::string(column.name) + (column.isText ? "\":\"" : "\":");
            names[i].size = name.copy(names[i].text.data(), names[i].text.size());
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
            appendName(line, names[i]);
            appendValue(line, COLUMNS[i], fix);
        }
        line += "}\n";
        out.flushWhenFull();
    }

private:
    struct Name {
        std::array<char, 32> text = {};
        size_t size = 0;
    };

    // All of the array is copied, since that takes no call.
    static void appendName(TextBuffer& line, const Name& name) {
        char* const dest = line.room(name.text.size());
        std::memcpy(dest, name.text.data(), name.text.size());
        line.endAt(dest + name.size);
    }

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

    std::string trace;                       // how its lines begin
    std::array<Name, COLUMNS.size()> names;  // with the quotation mark of a text
};

}  // namespace

std::unique_ptr<Format> makeJsonLines(OutputFile& output) {
    return std::make_unique<JsonLines>(output);
}

}  // namespace vextrace::tools
