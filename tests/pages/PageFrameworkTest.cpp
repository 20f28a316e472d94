// What every page gets from the framework: Change and Click events that fire
// on changes made in code too, and the host's answer to a handler that raises.

#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QRadioButton>

#include "support/PageDesktop.h"

namespace halvane {
namespace {

using namespace pages;

class frmTestPage : public Page {
public:
    explicit frmTestPage(PageSlot& slot) : Page(slot, "frmTest") {
        txtName->setObjectName("txtName");
        optYes->setObjectName("optYes");
        OnChange(txtName, "txtName_Change", kTopLevel, [this] { changes.push_back(Text()); });
        OnOptionClick(optYes, "optYes_Click", kPassOn,
                      [] { throw runtime::RuntimeFailure(runtime::kTypeMismatch); });
    }
    std::string Text() const { return txtName->text().toStdString(); }

    QLineEdit* txtName = NewBox("txtName", 12);
    QRadioButton* optYes = new QRadioButton(this);
    std::vector<std::string> changes;
};

Slot<frmTestPage> frmTest("frmTest");

class PageFrameworkTest : public testing::PageDesktop {};

TEST_F(PageFrameworkTest, ChangeFiresForTypingAndForCodeAlike) {
    frmTest.Show();
    Type(frmTest, "txtName", "a name longer than twelve");
    frmTest->txtName->setText("dem_150");
    // The limit holds for typing only: code may set a longer text.
    frmTest->txtName->setText("longinputname_150");
    EXPECT_EQ(frmTest->changes,
              (std::vector<std::string>{"a name longe", "dem_150", "longinputname_150"}));
}

TEST_F(PageFrameworkTest, KeysBeyondTheTypingLimitAreRefusedEvenAfterALongerTextFromCode) {
    frmTest.Show();
    auto press = [](QLineEdit& box, Qt::Key key, const QString& text) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
        QApplication::sendEvent(&box, &event);
    };
    QLineEdit& box = *frmTest->txtName;
    for (char c : std::string("abcdefghijklm")) press(box, Qt::Key_A, QString(QChar(c)));
    EXPECT_EQ(frmTest->Text(), "abcdefghijkl");
    box.setText("longinputname_150");
    box.end(false);
    press(box, Qt::Key_X, "x");
    EXPECT_EQ(frmTest->Text(), "longinputname_150");
    // Deleting works; typing waits until the text is within the limit.
    press(box, Qt::Key_Backspace, {});
    press(box, Qt::Key_X, "x");
    EXPECT_EQ(frmTest->Text(), "longinputname_15");
    box.selectAll();
    press(box, Qt::Key_Y, "y");
    EXPECT_EQ(frmTest->Text(), "y");
}

TEST_F(PageFrameworkTest, AFailureRaisedOutOfAnEventReachesTheHostsRuntime) {
    frmTest.Show();
    frmTest->optYes->setChecked(true);  // set in code: the Click event runs
    ASSERT_EQ(ui.Messages().size(), 1u);
    const ui::Event message = ui.Messages().front();
    EXPECT_EQ(message.kind, "stop");
    EXPECT_EQ(message.text.rfind("Run-time error '13':\r\n\r\n\toptYes_Click frmTest \r\n", 0), 0u);
    // Nothing reported it, so the next report will carry the bare description.
    EXPECT_TRUE(ErrorHandling::m_bErrorTextBuilt);
}

}  // namespace
}  // namespace halvane
