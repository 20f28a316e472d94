#include <gtest/gtest.h>

#include <cmath>

#include "platform/runtime/Convert.h"
#include "platform/runtime/Failure.h"

namespace halvane::runtime {
namespace {

std::int32_t FailureNumber(auto&& call) {
    try {
        call();
    } catch (const Failure& failure) {
        return failure.number;
    }
    return 0;
}

TEST(CIntTest, RoundsHalfToEven) {
    EXPECT_EQ(CInt(0.5), 0);
    EXPECT_EQ(CInt(1.5), 2);
    EXPECT_EQ(CInt(2.5), 2);
    EXPECT_EQ(CInt(3.5), 4);
    EXPECT_EQ(CInt(-2.5), -2);
    EXPECT_EQ(CInt(-3.5), -4);
    EXPECT_EQ(CInt(2.4999), 2);
    EXPECT_EQ(CInt(-32768.5), -32768);  // rounds to an even number inside the range
}

TEST(CIntTest, OverflowsOutsideSixteenBits) {
    EXPECT_EQ(FailureNumber([] { CInt(32767.5); }), kOverflow);
    EXPECT_EQ(FailureNumber([] { CInt(-32769.0); }), kOverflow);
    EXPECT_EQ(FailureNumber([] { CInt(std::nan("")); }), kOverflow);
    EXPECT_EQ(FailureNumber([] { CInt("40000"); }), kOverflow);
    EXPECT_EQ(CInt(32767.49), 32767);
}

TEST(CIntTest, ConvertsTextOrFailsWithTypeMismatch) {
    EXPECT_EQ(CInt("1.4"), 1);
    EXPECT_EQ(CInt(" 2.5 "), 2);
    EXPECT_EQ(CInt("-7"), -7);
    EXPECT_EQ(CInt("1E3"), 1000);
    EXPECT_EQ(FailureNumber([] { CInt(""); }), kTypeMismatch);
    EXPECT_EQ(FailureNumber([] { CInt("abc"); }), kTypeMismatch);
    EXPECT_EQ(FailureNumber([] { CInt("   "); }), kTypeMismatch);
}

TEST(CDblTest, ReadsDecimalNumbers) {
    EXPECT_EQ(CDbl("-0.25"), -0.25);
    EXPECT_EQ(CDbl(".5"), 0.5);
    EXPECT_EQ(CDbl("5."), 5.0);
    EXPECT_EQ(CDbl("+3"), 3.0);
    EXPECT_EQ(CDbl("1E-05"), 1e-05);
    EXPECT_EQ(CDbl("  12.5  "), 12.5);
}

TEST(CDblTest, RefusesWhatIsNoNumber) {
    for (const char* text :
         {"", "abc", "inf", "nan", "--1", "+-1", "1.2.3", "1,5", "0x10", "5 m", "- 5"}) {
        EXPECT_EQ(FailureNumber([&] { CDbl(text); }), kTypeMismatch) << '"' << text << '"';
    }
    EXPECT_EQ(FailureNumber([] { CDbl("1E999"); }), kOverflow);
}

TEST(CStrTest, GeneralFormat) {
    EXPECT_EQ(CStr(0.0), "0");
    EXPECT_EQ(CStr(-0.0), "0");
    EXPECT_EQ(CStr(-0.25), "-0.25");
    EXPECT_EQ(CStr(100.0), "100");
    EXPECT_EQ(CStr(1.5), "1.5");
    EXPECT_EQ(CStr(0.1 + 0.2), "0.3");
    EXPECT_EQ(CStr(std::sqrt(200.0)), "14.142135623731");
    EXPECT_EQ(CStr(0.0001), "0.0001");
    EXPECT_EQ(CStr(-0.00012345), "-0.00012345");
    EXPECT_EQ(CStr(123456789012345.0), "123456789012345");
    EXPECT_EQ(CStr(2.0 / 3.0), "0.666666666666667");
}

TEST(CStrTest, ScientificFormBelowOneTenThousandthAndFromOneE15) {
    EXPECT_EQ(CStr(0.00001), "1E-05");
    EXPECT_EQ(CStr(2.5e-7), "2.5E-07");
    EXPECT_EQ(CStr(-1.25e-300), "-1.25E-300");
    EXPECT_EQ(CStr(1e15), "1E+15");
    EXPECT_EQ(CStr(1234567890123456.0), "1.23456789012346E+15");
    EXPECT_EQ(CStr(1e100), "1E+100");
    // Rounding to 15 digits carries into the exponent.
    EXPECT_EQ(CStr(999999999999999.9), "1E+15");
    EXPECT_EQ(CStr(0.000099999999999999999), "0.0001");
}

TEST(VbBoolTest, TrueIsMinusOne) {
    EXPECT_EQ(VbBool(true).Value(), -1);
    EXPECT_EQ(VbBool(false).Value(), 0);
    VbBool flag;
    EXPECT_FALSE(flag);
    flag = true;
    EXPECT_TRUE(flag);
}

TEST(FailureTest, StandardFailuresKeepClassicNumbers) {
    auto numberOf = [](auto&& thrower) {
        try {
            thrower();
        } catch (...) {
            return CurrentFailure();
        }
        return Failure(0, "", "");
    };
    EXPECT_EQ(numberOf([] { throw std::bad_alloc(); }).number, kOutOfMemory);
    EXPECT_EQ(numberOf([] { throw std::out_of_range("index 3"); }).description, "index 3");
    EXPECT_EQ(numberOf([] { throw RuntimeFailure(kDivisionByZero); }).description,
              "Division by zero");
    EXPECT_EQ(numberOf([] { throw 42; }).number, kInvalidProcedureCall);
    std::shared_ptr<int> empty;
    EXPECT_EQ(FailureNumber([&] { Deref(empty); }), kObjectNotSet);
}

}  // namespace
}  // namespace halvane::runtime
