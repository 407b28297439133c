// TextStream must pass a failure of memory on, where a stream of the standard library swallows it
// or makes something else of it.
#include "libvextrace/internal/TextStream.h"

#include <gtest/gtest.h>

#include <iomanip>

#include "tests/memory/failingMemory.h"

using vextrace::internal::TextStream;

namespace {

const std::string LONG_TEXT(100, 'x');

// Writes with every allocation failing once; each failure must come through as it is.
template <class Write>
void expectPassedOn(const Write& write) {
    EXPECT_GT(failEachAllocation([&] {
                  TextStream text;
                  write(text.os);
              }),
              0U);
}

}  // namespace

TEST(FailingTextStreamTest, PassesAFailureOnFromATextOfAnyKind) {
    expectPassedOn([](std::ostream& os) { os << LONG_TEXT; });
    expectPassedOn([](std::ostream& os) { os << LONG_TEXT.c_str(); });
    expectPassedOn([](std::ostream& os) { os << std::string_view(LONG_TEXT); });
    expectPassedOn([](std::ostream& os) { os.write(LONG_TEXT.data(), 100); });
}

TEST(FailingTextStreamTest, PassesAFailureOnFromCharactersAndNumbers) {
    expectPassedOn([](std::ostream& os) {
        for (int i = 0; i < 100; ++i) {
            os << 'x';
        }
    });
    expectPassedOn([](std::ostream& os) {
        for (int i = 0; i < 100; ++i) {
            os.put('x');
        }
    });
    expectPassedOn([](std::ostream& os) { os << std::setw(100) << 255; });
    expectPassedOn([](std::ostream& os) { os << std::fixed << std::setprecision(60) << 1.5; });
}

TEST(FailingTextStreamTest, IsWithoutFlawUntilThen) {
    TextStream text;
    text.os << "abc";
    EXPECT_TRUE(text.os.good());
    EXPECT_EQ(text.takeText(), "abc");
}
