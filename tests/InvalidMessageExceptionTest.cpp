#include "libvextrace/InvalidMessageException.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>

#include "tests/support/detected.h"

namespace {

struct NamedCause {
    invalidMessageCause_t cause;
    int value;
};

constexpr NamedCause CAUSES[] = {
    {IM_INVALID_MSGID, 1}, {IM_INVALID_ENUM_VALUE, 2},
    {IM_INVALID_LEN, 3},   {IM_INVALID_PARAMETER, 4},
    {IM_MISC, 5},
};

template <class Type>
using CastDown = decltype(static_cast<Type*>(std::declval<std::exception*>()));

}  // namespace

TEST(InvalidMessageExceptionTest, NumbersTheCauses) {
    for (const NamedCause& named : CAUSES) {
        EXPECT_EQ(static_cast<int>(named.cause), named.value);
    }
}

TEST(InvalidMessageExceptionTest, IsMiscWithoutTextAndValueByDefault) {
    const InvalidMessageException error;
    EXPECT_EQ(error.getCause(), IM_MISC);
    EXPECT_STREQ(error.what(), "");
    EXPECT_EQ(error.getInvalidValue(), 0U);
}

TEST(InvalidMessageExceptionTest, HasValue0WhenBuiltFromCauseAndText) {
    const InvalidMessageException error(IM_INVALID_PARAMETER, "The parameter is odd.");
    EXPECT_EQ(error.getCause(), IM_INVALID_PARAMETER);
    EXPECT_STREQ(error.what(), "The parameter is odd.");
    EXPECT_EQ(error.getInvalidValue(), 0U);
}

TEST(InvalidMessageExceptionTest, CarriesCauseTextAndValue) {
    const InvalidMessageException error(IM_INVALID_ENUM_VALUE, "No such value.", 0xFEDC);
    EXPECT_EQ(error.getCause(), IM_INVALID_ENUM_VALUE);
    EXPECT_STREQ(error.what(), "No such value.");
    EXPECT_EQ(error.getInvalidValue(), 0xFEDCU);
}

TEST(InvalidMessageExceptionTest, KeepsEveryCause) {
    for (const NamedCause& named : CAUSES) {
        EXPECT_EQ(InvalidMessageException(named.cause, "").getCause(), named.cause);
    }
}

TEST(InvalidMessageExceptionTest, OwnsItsText) {
    char text[] = "before";
    const InvalidMessageException error(IM_MISC, text);
    text[0] = 'X';
    EXPECT_STREQ(error.what(), "before");
}

TEST(InvalidMessageExceptionTest, TakesNullForAnEmptyText) {
    EXPECT_STREQ(InvalidMessageException(IM_MISC, nullptr).what(), "");
    EXPECT_STREQ(InvalidMessageException(IM_MISC, nullptr, 1).what(), "");
}

TEST(InvalidMessageExceptionTest, ChangesTheValueAlone) {
    InvalidMessageException error(IM_INVALID_LEN, "Too long.", 0x1234);
    error.setInvalidValue(0xABCD);
    EXPECT_EQ(error.getInvalidValue(), 0xABCDU);
    EXPECT_EQ(error.getCause(), IM_INVALID_LEN);
    EXPECT_STREQ(error.what(), "Too long.");
}

TEST(InvalidMessageExceptionTest, CopiesAllOfItself) {
    InvalidMessageException error(IM_INVALID_MSGID, "No such id.", 0x4321);
    const InvalidMessageException copy(error);
    error = InvalidMessageException(IM_INVALID_LEN, "Too short.", 0x5678);
    EXPECT_EQ(copy.getCause(), IM_INVALID_MSGID);
    EXPECT_STREQ(copy.what(), "No such id.");
    EXPECT_EQ(copy.getInvalidValue(), 0x4321U);
    EXPECT_EQ(error.getCause(), IM_INVALID_LEN);
    EXPECT_STREQ(error.what(), "Too short.");
    EXPECT_EQ(error.getInvalidValue(), 0x5678U);
}

TEST(InvalidMessageExceptionTest, AssignsAllOfItself) {
    const InvalidMessageException error(IM_INVALID_PARAMETER, "Assigned.", 0xFEDC);
    InvalidMessageException assigned;
    assigned = error;
    EXPECT_EQ(assigned.getCause(), IM_INVALID_PARAMETER);
    EXPECT_STREQ(assigned.what(), "Assigned.");
    EXPECT_EQ(assigned.getInvalidValue(), 0xFEDCU);
    EXPECT_STREQ(error.what(), "Assigned.");
}

TEST(InvalidMessageExceptionTest, MovesAllOfItselfWithoutFail) {
    static_assert(std::is_nothrow_move_constructible_v<InvalidMessageException>);
    static_assert(std::is_nothrow_move_assignable_v<InvalidMessageException>);
    InvalidMessageException error(IM_INVALID_PARAMETER, "A text that a string allocates.", 0xFEDC);
    InvalidMessageException moved(std::move(error));
    EXPECT_EQ(moved.getCause(), IM_INVALID_PARAMETER);
    EXPECT_STREQ(moved.what(), "A text that a string allocates.");
    EXPECT_EQ(moved.getInvalidValue(), 0xFEDCU);
    InvalidMessageException assigned;
    assigned = std::move(moved);
    EXPECT_EQ(assigned.getCause(), IM_INVALID_PARAMETER);
    EXPECT_STREQ(assigned.what(), "A text that a string allocates.");
    EXPECT_EQ(assigned.getInvalidValue(), 0xFEDCU);
}

TEST(InvalidMessageExceptionTest, IsCaughtAsStandardException) {
    std::string text;
    try {
        throw InvalidMessageException(IM_MISC, "caught", 7);
    } catch (const std::exception& error) {
        text = error.what();
    }
    EXPECT_EQ(text, "caught");
}

TEST(InvalidMessageExceptionTest, IsAStandardExceptionForEveryoneAndOnce) {
    EXPECT_TRUE((std::is_convertible_v<InvalidMessageException*, std::exception*>));
    // What is derived virtually cannot be cast down without a look at the object.
    EXPECT_TRUE((isDetected<CastDown, InvalidMessageException>));
}

TEST(InvalidMessageExceptionTest, DeclaresItsResults) {
    using Error = const InvalidMessageException&;
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<Error>().what()), const char*>));
    EXPECT_TRUE(
        (std::is_same_v<decltype(std::declval<Error>().getCause()), invalidMessageCause_t>));
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<Error>().getInvalidValue()), uint16_t>));
}

TEST(InvalidMessageExceptionTest, NeverThrowsFromWhat) {
    const InvalidMessageException error;
    EXPECT_TRUE(noexcept(error.what()));
    EXPECT_TRUE(std::has_virtual_destructor_v<InvalidMessageException>);
}
