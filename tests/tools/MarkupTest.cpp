#include "tools/io/markup.h"

#include <gtest/gtest.h>

using namespace vextrace;
using namespace vextrace::tools;

TEST(MarkupTest, ShowsTextAsText) {
    EXPECT_EQ(html("<script>alert('a' & \"b\")</script>"),
              "&lt;script&gt;alert(&#39;a&#39; &amp; &quot;b&quot;)&lt;/script&gt;");
    EXPECT_EQ(html("48°7.038 N"), "48°7.038 N");
}
