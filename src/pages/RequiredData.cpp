#include "pages/RequiredData.h"

#include <QFont>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>

#include "engine/RasterAccess.h"
#include "engine/Session.h"
#include "pages/GridBrowse.h"

namespace halvane::pages {

Slot<frmZoneSetup_resampling_reqdataPage> frmZoneSetup_resampling_reqdata(
    "frmZoneSetup_resampling_reqdata");
Slot<frmZoneStep1_reqdataPage> frmZoneStep1_reqdata("frmZoneStep1_reqdata");
Slot<frmZoneStep2_reqdataPage> frmZoneStep2_reqdata("frmZoneStep2_reqdata");
Slot<frmZoneStep3_reqdataPage> frmZoneStep3_reqdata("frmZoneStep3_reqdata");

namespace {

}  // namespace

// --- the family

RequiredDataPage::RequiredDataPage(PageSlot& slot, const char* module, const char* caption,
                                   const char* inputPrompt, bool fillsWorkingDir)
    : Page(slot, module), fillsWorkingDir_(fillsWorkingDir) {
    setWindowTitle(QString::fromLatin1(caption));
    Label1 = Bold(NewLabel("Label1", QStringLiteral("Working Directory")));
    Label2 = NewLabel("Label2", QStringLiteral("Please select working directory:"));
    g_s_WorkingDir = NewBox("g_s_WorkingDir");
    cmdOpenWS = NewBrowseButton("cmdOpenWS");
    auto* folder = new QHBoxLayout;
    folder->addWidget(g_s_WorkingDir, 1);
    folder->addWidget(cmdOpenWS);
    Body()->addLayout(folder);
    Body()->addSpacing(12);
    lblInputData = Bold(NewLabel("lblInputData", QStringLiteral("Input Data")));
    lblInputData2 = NewLabel("lblInputData2", QString::fromLatin1(inputPrompt));
    form_ = NewForm();
    cmdOK = NewButton("cmdOK", QStringLiteral("OK"), ButtonRow());
    cmdOK->setDefault(true);
    resize(440, 300);

    OnClick(cmdOpenWS, "cmdOpenWS_Click", kTopLevel,
            [this] { BrowseWorkingDir(*this, *g_s_WorkingDir); });
}

void RequiredDataPage::Form_Load() {
    Event("Form_Load", kTopLevel, [this] {
        if (fillsWorkingDir_ && !halvane::g_s_WorkingDir.empty()) {
            g_s_WorkingDir->setText(QString::fromStdString(halvane::g_s_WorkingDir));
        }
    });
}

void RequiredDataPage::AddGridRow(QLabel* label, QLineEdit* box, QToolButton* browse) {
    if (label) {
        label->setWordWrap(false);
        form_->addWidget(label, nextRow_, 0);
    }
    form_->addWidget(box, nextRow_, 1);
    form_->addWidget(browse, nextRow_, 2);
    ++nextRow_;
}

bool RequiredDataPage::Filled(const QLineEdit* box, const char* message, const char* title) const {
    if (!box->text().isEmpty()) return true;
    ui::Services().MsgBox(message, ui::vbCritical, title);
    return false;
}

// --- the bathymetric dialogs

BathymetryRequiredDataPage::BathymetryRequiredDataPage(PageSlot& slot, const char* module,
                                                       const char* caption, PageSlot& stage,
                                                       bool fillsWorkingDir,
                                                       bool browseSetsBpiGrid)
    : RequiredDataPage(slot, module, caption, "Please specify an input bathymetic data set below:",
                       fillsWorkingDir),
      stage_(stage) {
    g_s_InputDataSet = NewBox("g_s_InputDataSet");
    cmdInputBrowse = NewBrowseButton("cmdInputBrowse");
    AddGridRow(nullptr, g_s_InputDataSet, cmdInputBrowse);

    OnClick(cmdInputBrowse, "cmdInputBrowse_Click", kTopLevel, [this, browseSetsBpiGrid] {
        BrowseProjectedGrid(*this, "Input Bathymetric Data Set", *g_s_InputDataSet,
                            [browseSetsBpiGrid](const std::string& name, const std::string& folder) {
                                StoreInputGrid(name, folder);
                                if (browseSetsBpiGrid) g_s_BPI_DataSet = name;
                            });
    });
    OnClick(cmdOK, "cmdOK_Click", kTopLevel, [this] { cmdOK_Click(); });
}

void BathymetryRequiredDataPage::cmdOK_Click() {
    if (!Filled(g_s_WorkingDir, "Please specify a Working Directory before continuing.",
                "Please Select Working Directory..") ||
        !Filled(g_s_InputDataSet, "Please specify an input dataset before continuing.",
                "Please Select Input Dataset..")) {
        return;
    }
    // The session's working directory is only what the browse stored.
    g_frm_PreviousPage = &Self();
    g_p_InputRasterDataset = OpenInFolder(g_s_InputDataPath, halvane::g_s_InputDataSet);
    g_s_BPI_DataSet = halvane::g_s_InputDataSet;
    g_s_BPI_DataPath = g_s_InputDataPath;
    g_p_BPI_RasterDataset = OpenInFolder(g_s_InputDataPath, halvane::g_s_InputDataSet);
    Hide();
    stage_.Show();
}

frmZoneSetup_resampling_reqdataPage::frmZoneSetup_resampling_reqdataPage(PageSlot& slot)
    : BathymetryRequiredDataPage(slot, "frmZoneSetup_resampling_reqdata",
                                 "Resample - Required Data", frmZoneSetup_resampling, false,
                                 false) {}

frmZoneStep1_reqdataPage::frmZoneStep1_reqdataPage(PageSlot& slot)
    : BathymetryRequiredDataPage(slot, "frmZoneStep1_reqdata", "Broad Scale - Required Data",
                                 frmZoneStep1, true, true) {}

frmZoneStep2_reqdataPage::frmZoneStep2_reqdataPage(PageSlot& slot)
    : BathymetryRequiredDataPage(slot, "frmZoneStep2_reqdata", "Fine Scale - Required Data",
                                 frmZoneStep2, true, true) {}

// --- the standardization's dialog

frmZoneStep3_reqdataPage::frmZoneStep3_reqdataPage(PageSlot& slot)
    : RequiredDataPage(slot, "frmZoneStep3_reqdata", "Standardize BPI - Required",
                       "Please specify the required BPI data sets below:", true) {
    Label3[1] = NewLabel("Label3(1)", QStringLiteral("Fine Scale:"), nullptr);
    g_s_LS_BPI_InputDataSet = NewBox("g_s_LS_BPI_InputDataSet");
    cmdLSBPI_Input_Browse = NewBrowseButton("cmdLSBPI_Input_Browse");
    AddGridRow(Label3[1], g_s_LS_BPI_InputDataSet, cmdLSBPI_Input_Browse);
    Label3[0] = NewLabel("Label3(0)", QStringLiteral("Broad Scale:"), nullptr);
    g_s_SS_BPI_InputDataSet = NewBox("g_s_SS_BPI_InputDataSet");
    cmdSSBPI_Input_Browse = NewBrowseButton("cmdSSBPI_Input_Browse");
    AddGridRow(Label3[0], g_s_SS_BPI_InputDataSet, cmdSSBPI_Input_Browse);

    OnClick(cmdLSBPI_Input_Browse, "cmdLSBPI_Input_Browse_Click", kTopLevel, [this] {
        BrowseProjectedGrid(*this, "Fine Scale BPI Data Set", *g_s_LS_BPI_InputDataSet,
                            [](const std::string& name, const std::string& folder) {
                                halvane::g_s_LS_BPI_InputDataSet = name;
                                g_s_LS_BPI_InputDataPath = folder;
                            });
    });
    OnClick(cmdSSBPI_Input_Browse, "cmdSSBPI_Input_Browse_Click", kTopLevel, [this] {
        BrowseProjectedGrid(*this, "Broad Scale BPI Data Set", *g_s_SS_BPI_InputDataSet,
                            [](const std::string& name, const std::string& folder) {
                                halvane::g_s_SS_BPI_InputDataSet = name;
                                g_s_SS_BPI_InputDataPath = folder;
                            });
    });
    OnClick(cmdOK, "cmdOK_Click", kTopLevel, [this] { cmdOK_Click(); });
}

void frmZoneStep3_reqdataPage::cmdOK_Click() {
    if (!Filled(g_s_SS_BPI_InputDataSet, "Please specify a broad scale BPI dataset before continuing.",
                "Please Select a Broad Scale BPI Dataset..") ||
        !Filled(g_s_LS_BPI_InputDataSet, "Please specify a fine scale BPI dataset before continuing.",
                "Please Select a Fine Scale BPI Dataset..") ||
        !Filled(g_s_WorkingDir, "Please specify a Working Directory before continuing.",
                "Please Select a Working Directory Dataset..")) {
        return;
    }
    g_frm_PreviousPage = &frmZoneStep3_reqdata;
    g_p_SS_BPI_RasterDataset =
        OpenInFolder(g_s_SS_BPI_InputDataPath, halvane::g_s_SS_BPI_InputDataSet);
    g_p_LS_BPI_RasterDataset =
        OpenInFolder(g_s_LS_BPI_InputDataPath, halvane::g_s_LS_BPI_InputDataSet);
    // Unlike its siblings, this dialog stores the folder as typed.
    halvane::g_s_WorkingDir = g_s_WorkingDir->text().toStdString();
    Hide();
    frmZoneStep3.Show();
}

}  // namespace halvane::pages
