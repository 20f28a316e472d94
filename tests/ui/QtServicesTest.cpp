// The Qt services as a user meets them: the boxes, pointer, progress dialog,
// error window, browse and file dialogs and help window they put up.

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QTimer>
#include <functional>

#include "platform/reporting/ErrorHandling.h"
#include "platform/reporting/HTMLHelp.h"
#include "platform/reporting/modProgDialog.h"
#include "platform/runtime/Failure.h"
#include "platform/ui/qt/QtBrowse.h"
#include "platform/ui/qt/QtDialogs.h"
#include "platform/ui/qt/QtServices.h"

namespace halvane {
namespace {

using namespace ui;
using namespace ui::qt;

class QtServicesTest : public ::testing::Test {
protected:
    void TearDown() override {
        CloseProgress();
        ErrorHandling::ReleaseErrorWindow();
        ErrorHandling::m_bErrorTextBuilt = false;
        services.SetMousePointer(vbDefault);
    }

    // Acts on the next modal window once its loop runs, as a user would; a
    // window of another kind is closed so that the test cannot hang.
    template <class Window>
    static void WhenModal(std::function<void(Window*)> act) {
        QTimer::singleShot(0, [act] {
            QWidget* modal = QApplication::activeModalWidget();
            if (auto* window = dynamic_cast<Window*>(modal)) {
                act(window);
            } else {
                ADD_FAILURE() << "no modal window of the expected kind";
                if (modal) modal->close();
            }
        });
    }

    static void Press(QWidget* window, int key) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(window, &press);
    }

    QtServices services;
    ServicesScope scope{services};
};

TEST_F(QtServicesTest, MessageBoxesHaveTheIconButtonsAndDefaultOfTheirKind) {
    struct Kind {
        int flags;
        QMessageBox::Icon icon;
        QMessageBox::StandardButtons buttons;
        QMessageBox::StandardButton defaultButton;
    };
    const Kind kinds[] = {
        {vbCritical, QMessageBox::Critical, QMessageBox::Ok, QMessageBox::Ok},
        {vbOKOnly, QMessageBox::NoIcon, QMessageBox::Ok, QMessageBox::Ok},
        {vbYesNo, QMessageBox::NoIcon, QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes},
        {vbYesNo + vbDefaultButton2, QMessageBox::NoIcon, QMessageBox::Yes | QMessageBox::No,
         QMessageBox::No},
        {vbOKOnly + vbExclamation, QMessageBox::Warning, QMessageBox::Ok, QMessageBox::Ok},
        {vbOKCancel + vbQuestion, QMessageBox::Question, QMessageBox::Ok | QMessageBox::Cancel,
         QMessageBox::Ok},
    };
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(kind.flags);
        auto box = MakeMessageBox("first\r\nsecond", kind.flags, "Title");
        EXPECT_EQ(box->icon(), kind.icon);
        EXPECT_EQ(box->standardButtons(), kind.buttons);
        EXPECT_EQ(box->standardButton(box->defaultButton()), kind.defaultButton);
        EXPECT_EQ(box->windowTitle(), "Title");
        EXPECT_EQ(box->text(), "first\nsecond");
    }
    EXPECT_EQ(MakeMessageBox("no title", vbOKOnly, "")->windowTitle(), "Halvane");
}

TEST_F(QtServicesTest, MsgBoxAnswersWhatTheUserPressed) {
    WhenModal<QMessageBox>([](QMessageBox* box) { box->button(QMessageBox::No)->click(); });
    EXPECT_EQ(services.MsgBox("Exit?", vbYesNo, "Exit?"), vbNo);

    WhenModal<QMessageBox>([](QMessageBox* box) { Press(box, Qt::Key_Return); });
    EXPECT_EQ(services.MsgBox("Exit?", vbYesNo, "Exit?"), vbYes);  // the first button's

    WhenModal<QMessageBox>([](QMessageBox* box) { Press(box, Qt::Key_Escape); });
    EXPECT_EQ(services.MsgBox("Stop", vbCritical, "Stop"), vbOK);
}

TEST_F(QtServicesTest, TheBusyPointerIsOneSettingNotAStack) {
    services.SetMousePointer(vbHourglass);
    services.SetMousePointer(vbHourglass);
    ASSERT_NE(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
    services.SetMousePointer(vbDefault);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(QtServicesTest, TheProgressDialogShowsTheJobAndHearsCancelWhileItRuns) {
    ShowProgress("Resampling Input Grid", "Processing", 0, 6, 2, 0);
    auto* dialog = dynamic_cast<ProgressDialog*>(g_p_ProgressDialog.get());
    ASSERT_NE(dialog, nullptr);
    QPointer<ProgressDialog> watch(dialog);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(dialog->windowTitle(), "Processing");
    EXPECT_EQ(dialog->description->text(), "Processing...Please be patient.");
    EXPECT_EQ(dialog->message->text(), "Resampling Input Grid");
    EXPECT_EQ(dialog->bar->maximum(), 6);
    EXPECT_EQ(dialog->bar->value(), 2);
    EXPECT_TRUE(dialog->cancelButton->isEnabled());
    EXPECT_TRUE(g_b_Continue);

    // A position beyond the range stands at the bar's end.
    ShowProgress("Step\r\nsecond line", "Other", 0, 16, 20, 0);
    EXPECT_EQ(dialog->bar->value(), 16);
    EXPECT_EQ(dialog->windowTitle(), "Processing");
    EXPECT_EQ(dialog->message->text(), "Step\nsecond line");

    // The click arrives while the job runs on this thread; the next step sees it.
    QMetaObject::invokeMethod(dialog->cancelButton, "click", Qt::QueuedConnection);
    ShowProgress("Step 3", "Processing", 0, 16, 3, 0);
    EXPECT_FALSE(g_b_Continue);

    CloseProgress();
    EXPECT_TRUE(watch.isNull());
}

TEST_F(QtServicesTest, TheErrorWindowShowsTheReportAsSelectableTextUntilClosed) {
    QString shown;
    bool selectable = false;
    WhenModal<ErrorWindow>([&](ErrorWindow* window) {
        shown = window->report->toPlainText();
        selectable = window->report->isReadOnly() &&
                     (window->report->textInteractionFlags() & Qt::TextSelectableByMouse);
        window->closeButton->click();
    });
    Guarded({"cmdNext_Click", "frmZoneStep1", kTopLevel},
            [] { throw runtime::RuntimeFailure(runtime::kDivisionByZero); });

    EXPECT_TRUE(selectable);
    EXPECT_EQ(shown,
              "Record Call Stack Sequence - Bottom line is error line.\n\n"
              "\tcmdNext_Click frmZoneStep1 \n\nError Number \n\t11\nDescription\n"
              "\tDivision by zero\n\n");
    auto* window = dynamic_cast<ErrorWindow*>(ErrorHandling::m_pErrorWindow.get());
    ASSERT_NE(window, nullptr);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(QtServicesTest, FileDialogsFollowTheCommonDialogsSettings) {
    CommonDialog open;
    open.Filter = "XML File(*.xml)|*.xml|All Files(*.*)|*.*";
    open.FilterIndex = 2;
    open.DialogTitle = "<name> File to Import";
    open.Flags = cdlOFNFileMustExist + cdlOFNHideReadOnly;
    QFileDialog dialog;
    ConfigureFileDialog(dialog, open, FileDialogMode::Open);
    EXPECT_EQ(dialog.windowTitle(), "<name> File to Import");
    EXPECT_EQ(dialog.acceptMode(), QFileDialog::AcceptOpen);
    EXPECT_EQ(dialog.fileMode(), QFileDialog::ExistingFile);
    EXPECT_EQ(dialog.nameFilters(),
              (QStringList{"XML File(*.xml) (*.xml)", "All Files(*.*) (*.*)"}));
    EXPECT_EQ(dialog.selectedNameFilter(), "All Files(*.*) (*.*)");

    CommonDialog save = open;
    save.FilterIndex = 1;
    save.DefaultExt = ".xml";
    save.Flags = cdlOFNOverwritePrompt + cdlOFNHideReadOnly;
    QFileDialog saving;
    ConfigureFileDialog(saving, save, FileDialogMode::Save);
    EXPECT_EQ(saving.acceptMode(), QFileDialog::AcceptSave);
    EXPECT_EQ(saving.fileMode(), QFileDialog::AnyFile);
    EXPECT_FALSE(saving.testOption(QFileDialog::DontConfirmOverwrite));
    EXPECT_EQ(saving.defaultSuffix(), "xml");
    EXPECT_EQ(saving.selectedNameFilter(), "XML File(*.xml) (*.xml)");
}

TEST_F(QtServicesTest, AFileDialogSetsTheFileNameOnlyWhenAccepted) {
    QTemporaryDir folder;
    const QString chosen = folder.filePath("dict.xml");
    CommonDialog save;
    save.FileName = "before.xml";
    save.Filter = "XML File(*.xml)|*.xml";
    save.FilterIndex = 1;
    save.Flags = cdlOFNOverwritePrompt;

    WhenModal<QFileDialog>([](QFileDialog* dialog) { dialog->reject(); });
    save.ShowSave();
    EXPECT_EQ(save.FileName, "before.xml");

    WhenModal<QFileDialog>([&](QFileDialog* dialog) {
        dialog->selectFile(chosen);
        static_cast<QDialog*>(dialog)->accept();
    });
    save.ShowSave();
    EXPECT_EQ(save.FileName, chosen.toStdString());
    EXPECT_EQ(save.FilterIndex, 1);
}

class RasterFolderTest : public QtServicesTest {
protected:
    void SetUp() override {
        ASSERT_TRUE(folder.isValid());
        QDir dir(folder.path());
        Write("dem.asc",
              "ncols 2\nnrows 2\nxllcorner 0\nyllcorner 0\ncellsize 30\n-10 -11\n-12 -13\n");
        Write("notes.txt", "not a raster\n");
        dir.mkpath("Bathy");
        Write("Bathy/hdr.adf", "");
        dir.mkpath("survey");
    }
    void Write(const QString& name, const QByteArray& text) {
        QFile file(QDir(folder.path()).filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    std::string Path(const char* name) const {
        return QDir(folder.path()).filePath(name).toStdString();
    }
    QTemporaryDir folder;
};

TEST_F(RasterFolderTest, TheRasterBrowserListsRastersAndGridFoldersAndFoldersToEnter) {
    EXPECT_EQ(ListRasterFolder(folder.path().toStdString()),
              (std::vector<FolderEntry>{{"Bathy", EntryKind::GridFolder},
                                        {"dem.asc", EntryKind::RasterFile},
                                        {"survey", EntryKind::Folder}}));
}

TEST_F(RasterFolderTest, BrowsingForARasterGivesItsFullPathAndCancelGivesNothing) {
    GxDialog dialog{"Input Bathymetric Data Set", false, GxObjectFilter::RasterDatasets};
    bool okWithFolder = true;
    WhenModal<RasterBrowser>([&](RasterBrowser* browser) {
        EXPECT_EQ(browser->windowTitle(), "Input Bathymetric Data Set");
        browser->Open(folder.path().toStdString());
        browser->entries->setCurrentRow(2);  // a plain folder is not a raster
        okWithFolder = browser->okButton->isEnabled();
        browser->entries->setCurrentRow(0);
        browser->okButton->click();
    });
    std::vector<std::string> selection;
    EXPECT_TRUE(dialog.DoModalOpen(0, selection));
    EXPECT_FALSE(okWithFolder);
    EXPECT_EQ(selection, std::vector<std::string>{Path("Bathy")});

    WhenModal<RasterBrowser>([](RasterBrowser* browser) { browser->reject(); });
    EXPECT_FALSE(dialog.DoModalOpen(0, selection));
    EXPECT_TRUE(selection.empty());
}

TEST_F(QtServicesTest, HelpShowsATopicOrNothingAtAll) {
    const std::string help = GetHelpFilePath(1);
    EXPECT_EQ(services.HtmlHelp(0, help + ".moved", HH_DISPLAY_TOPIC, "wizard.htm"), 0);
    EXPECT_EQ(services.HtmlHelp(0, help, HH_DISPLAY_TOPIC, "nosuchtopic.htm"), 0);
    EXPECT_TRUE(services.Help() == nullptr || !services.Help()->isVisible());

    EXPECT_NE(services.HtmlHelp(0, help, HH_DISPLAY_TOPIC, "rugosity.htm"), 0);
    ASSERT_NE(services.Help(), nullptr);
    EXPECT_TRUE(services.Help()->isVisible());
    EXPECT_EQ(services.Help()->browser->documentTitle(), "Rugosity");
    EXPECT_NE(services.HtmlHelp(0, help, HH_DISPLAY_TOPIC, "bpi.htm"), 0);
    EXPECT_EQ(services.Help()->browser->documentTitle(), "Bathymetric Position Index grids");
}

}  // namespace
}  // namespace halvane
