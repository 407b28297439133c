#include "tools/report/Page.h"

#include <gtest/gtest.h>

#include <string>

#include "tools/report/pageTemplate.h"

using namespace vextrace;
using namespace vextrace::tools;

namespace {

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

}  // namespace

TEST(PageTest, HasItsStyleAndScriptsInIt) {
    const std::string form(pageTemplate());
    EXPECT_TRUE(holds(form, "dygraphs/blob/v"));
    EXPECT_TRUE(holds(form, "prefers-color-scheme: dark"));
    EXPECT_TRUE(holds(form, "JSON.parse"));
    EXPECT_FALSE(holds(form, "sourceMappingURL"));
    EXPECT_FALSE(holds(form, "{{style"));
    EXPECT_FALSE(holds(form, "{{script"));
}

TEST(PageTest, HasAPlaceForEachOfItsTexts) {
    Page page;
    page.title = "<title>";
    page.span = "<span>";
    page.notes = {"<note>"};
    page.facts = {{"<name>", "<value>", "<detail>", true}};
    page.track = "<svg>";
    page.extent = "<extent>";
    page.sentences = {{"<code>", "<count>", "<wrong>", "<first>", "<last>", true}};
    page.sentencesLeftOut = "<rest>";
    page.data = "[1]";
    const std::string text = page.text();
    for (const std::string name : {"title", "span", "note", "name", "value", "detail", "extent",
                                   "code", "count", "wrong", "first", "last", "rest"}) {
        EXPECT_TRUE(holds(text, "&lt;" + name + "&gt;")) << name;
    }
    EXPECT_TRUE(holds(text, "<title>&lt;title&gt;</title>"));
    EXPECT_TRUE(holds(text, "<svg>"));
    EXPECT_TRUE(holds(text, "id=\"data\">[1]</script>"));
}

TEST(PageTest, DoesNotLookAtWhatWasPutIn) {
    Page page;
    page.title = "{{data}}";
    page.data = "{{title}}";
    EXPECT_TRUE(holds(page.text(), "<h1>{{data}}</h1>"));
    EXPECT_TRUE(holds(page.text(), "id=\"data\">{{title}}</script>"));
}
