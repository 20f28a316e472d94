// What every page gets from the framework: Change and Click events that fire
// on changes made in code too, and the host's answer to a handler that raises.

#include <gtest/gtest.h>

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
        txtName->setMaxLength(12);
        optYes->setObjectName("optYes");
        OnChange(txtName, "txtName_Change", kTopLevel, [this] { changes.push_back(Text()); });
        OnOptionClick(optYes, "optYes_Click", kPassOn,
                      [] { throw runtime::RuntimeFailure(runtime::kTypeMismatch); });
    }
    std::string Text() const { return txtName->text().toStdString(); }

    QLineEdit* txtName = new QLineEdit(this);
    QRadioButton* optYes = new QRadioButton(this);
    std::vector<std::string> changes;
};

Slot<frmTestPage> frmTest("frmTest");

class PageFrameworkTest : public testing::PageDesktop {};

TEST_F(PageFrameworkTest, ChangeFiresForTypingAndForCodeAlike) {
    frmTest.Show();
    Type(frmTest, "txtName", "a name longer than twelve");
    frmTest->txtName->setText("dem_150");
    EXPECT_EQ(frmTest->changes, (std::vector<std::string>{"a name longe", "dem_150"}));
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
