#include "tools/report/markup.h"

#include <gtest/gtest.h>

using namespace vextrace;
using namespace vextrace::tools;
using nlohmann::json;

TEST(MarkupTest, ShowsTextAsText) {
    EXPECT_EQ(html("<script>alert('a' & \"b\")</script>"),
              "&lt;script&gt;alert(&#39;a&#39; &amp; &quot;b&quot;)&lt;/script&gt;");
    EXPECT_EQ(html("48°7.038 N"), "48°7.038 N");
}

TEST(MarkupTest, LeavesNoMarkupInJson) {
    const json value = {{"</script>", {"<!--", "]]>", "a&b", "\"\\"}}};
    EXPECT_EQ(jsonInPage(value),
              R"({"\u003c/script\u003e":["\u003c!--","]]\u003e","a\u0026b","\"\\"]})");
    EXPECT_EQ(json::parse(jsonInPage(value)), value);
}

TEST(MarkupTest, LeavesNoLineEndsOfScriptsInJson) {
    EXPECT_EQ(jsonInPage("\u2028\u2029\n\x7f°"), R"("\u2028\u2029\n\u007f\u00b0")");
}

TEST(MarkupTest, ReplacesWhatIsNoUtf8InJson) {
    EXPECT_EQ(jsonInPage("a\xff"), "\"a\\ufffd\"");
}
