#include <gtest/gtest.h>

#include "platform/reporting/ErrorHandling.h"
#include "platform/runtime/Failure.h"
#include "support/ScriptedDesktop.h"

namespace halvane {
namespace {

using runtime::Failure;
using runtime::RuntimeFailure;

constexpr const char* kHeading = "Record Call Stack Sequence - Bottom line is error line.";

// The dressed tail of a report, written out by hand.
std::string Dressing(int number, const std::string& description) {
    return "\r\nError Number \r\n\t" + std::to_string(number) + "\r\nDescription\r\n\t" +
           description + "\r\n\r\n";
}

void Innermost() {
    Guarded({"Innermost", "modC", kPassOn}, [] { throw RuntimeFailure(runtime::kDivisionByZero); });
}
void Middle() {
    Guarded({"Middle", "modB", kPassOn}, [] { Innermost(); });
}
bool Outer() {
    return Guarded({"Outer", "frmA", kTopLevel}, [] {
        Middle();
        return true;
    });
}

class ErrorHandlingTest : public testing::ScriptedDesktop {
protected:
    void SetUp() override {
        ErrorHandling::m_bErrorTextBuilt = false;
        ErrorHandling::ReleaseErrorWindow();
    }
    void TearDown() override {
        ErrorHandling::ReleaseErrorWindow();
        ScriptedDesktop::TearDown();
    }
};

TEST(GetErrorLineNumberStringTest, EmptyForLineZero) {
    EXPECT_EQ(GetErrorLineNumberString(0), "");
    EXPECT_EQ(GetErrorLineNumberString(120), "Line : 120");
    EXPECT_EQ(GetErrorLineNumberString(-3), "Line : -3");
}

TEST(LocationOfTest, EndsInTheBlankAfterTheModuleForLineZero) {
    EXPECT_EQ(LocationOf({"cmdNext_Click", "frmRugosity", kTopLevel}),
              "cmdNext_Click frmRugosity ");
    EXPECT_EQ(LocationOf({"BPI_Build", "modUtil", kTopLevel}, 7), "BPI_Build modUtil Line : 7");
}

TEST_F(ErrorHandlingTest, ThreeLevelsReportOutermostFirstAndDressOnce) {
    EXPECT_FALSE(Outer());  // the top level returns its default result
    ASSERT_EQ(Reports().size(), 1u);
    EXPECT_EQ(Reports()[0], std::string(kHeading) + "\r\n\r\n" + "\tOuter frmA \r\n" +
                                "\tMiddle modB \r\n" + "\tInnermost modC \r\n" +
                                Dressing(11, "Division by zero"));
    EXPECT_FALSE(ErrorHandling::m_bErrorTextBuilt);
}

TEST_F(ErrorHandlingTest, OneLevelReportIsDressed) {
    const int result = Guarded({"Alone", "modUtil", kTopLevel}, []() -> int {
        throw Failure(-2147467259, "RasterEngine", "Grid 'zones' already exists");
    });
    EXPECT_EQ(result, 0);
    ASSERT_EQ(Reports().size(), 1u);
    EXPECT_EQ(Reports()[0], std::string(kHeading) + "\r\n\r\n\tAlone modUtil \r\n" +
                                Dressing(-2147467259, "Grid 'zones' already exists"));
}

TEST_F(ErrorHandlingTest, PassOnFailureRaisedOutOfTheTopLeavesTheNextReportBare) {
    // An event handler that passes on raises into the host's runtime.
    try {
        Middle();
        FAIL() << "Middle should raise";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.number, runtime::kDivisionByZero);
        EXPECT_EQ(failure.description,
                  "\tMiddle modB \r\n\tInnermost modC \r\n" + Dressing(11, "Division by zero"));
    }
    EXPECT_TRUE(ErrorHandling::m_bErrorTextBuilt);

    Guarded({"Next", "frmZoneStep1", kTopLevel}, [] { throw RuntimeFailure(runtime::kOverflow); });
    ASSERT_EQ(Reports().size(), 1u);
    EXPECT_EQ(Reports()[0], std::string(kHeading) + "\r\n\r\n\tNext frmZoneStep1 \r\nOverflow");
    EXPECT_FALSE(ErrorHandling::m_bErrorTextBuilt);

    // The report reset the flag, so the failure after it is dressed again.
    Guarded({"Again", "frmZoneStep1", kTopLevel}, [] { throw RuntimeFailure(runtime::kOverflow); });
    EXPECT_EQ(Reports().back(), std::string(kHeading) + "\r\n\r\n\tAgain frmZoneStep1 \r\n" +
                                    Dressing(6, "Overflow"));
}

TEST_F(ErrorHandlingTest, TheErrorWindowIsMadeOnceAndReused) {
    Outer();
    Outer();
    EXPECT_EQ(Reports().size(), 2u);
    EXPECT_EQ(ui.ErrorWindowsMade(), 1);
}

TEST_F(ErrorHandlingTest, OtherModesBeepAndShowTheMessageBox) {
    HandleError(true, "Proc modX ", 5, "src", "Bad call", 2, 0);
    ASSERT_EQ(ui.Events().size(), 2u);
    EXPECT_EQ(ui.Events()[0].kind, "beep");
    const ui::Event& box = ui.Events()[1];
    EXPECT_EQ(box.kind, "exclamation");
    EXPECT_EQ(box.flags, ui::vbOKOnly + ui::vbExclamation);
    EXPECT_EQ(box.title, "Unexpected Program Error");
    EXPECT_EQ(box.text,
              "An error has occured in the application.   Record the call stack sequence\r\n"
              "and the description of the error.\r\n\r\nError Call Stack Sequence \r\n"
              "\tProc modX \r\n" +
                  Dressing(5, "Bad call"));
    EXPECT_TRUE(Reports().empty());
}

TEST_F(ErrorHandlingTest, ForeignExceptionsReportWithAClassicNumber) {
    const std::string name =
        Guarded({"Alloc", "modUtil", kTopLevel}, []() -> std::string { throw std::bad_alloc(); });
    EXPECT_EQ(name, "");
    ASSERT_EQ(Reports().size(), 1u);
    EXPECT_NE(Reports()[0].find(Dressing(7, "Out of memory")), std::string::npos);
}

}  // namespace
}  // namespace halvane
