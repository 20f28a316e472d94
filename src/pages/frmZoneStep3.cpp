#include "pages/frmZoneStep3.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "engine/Analysis.h"
#include "engine/RasterAccess.h"
#include "engine/Session.h"
#include "pages/frmZoneStep1.h"
#include "platform/raster/Storage.h"

namespace halvane::pages {

Slot<frmZoneStep3Page> frmZoneStep3("frmZoneStep3");

namespace {

constexpr const char* kModule = "frmZoneStep3";
constexpr const char* kProgressTitle = "Processing";
constexpr const char* kProgressMessage = "Creating Output files";
constexpr int kLongestTypedName = 12;
constexpr const char* kNameTitle = "Please Specify An Output Data Set..";
constexpr const char* kTooLongTitle = "Output name too long..";
constexpr const char* kExistsTitle = "File Exists";

std::string TextOf(const QLineEdit* box) { return box->text().toStdString(); }

QString Text(const std::string& text) { return QString::fromStdString(text); }

bool HasBlank(const std::string& text) { return text.find(' ') != std::string::npos; }

void Stop(const std::string& text, const char* title) {
    ui::Services().MsgBox(text, ui::vbCritical, title);
}

std::string ExistsMessage(const std::string& name) {
    return name + " already exists in the working directory. Please try using a different name.";
}

std::string BlankNameMessage(const std::string& name) {
    return "'" + name +
           "' contains a space. Spaces are not allowed in Raster Data Set names. Please rename "
           "with out spaces.";
}

std::string BlankFolderMessage(const std::string& folder) {
    return "'" + folder +
           "' contains a space. Spaces are not allowed in Raster Data working directories. Please "
           "change your working directory to one with out spaces.";
}

QLabel* NewTabLabel(QWidget* tab, const char* name, const char* text, bool bold = false) {
    auto* label = new QLabel(QString::fromLatin1(text), tab);
    label->setObjectName(QString::fromLatin1(name));
    return bold ? Bold(label) : label;
}

// Both tabs are laid out alike; only the names and the texts differ.
struct ScaleTabNames {
    const char* page;
    const char* caption;
    const char* frame;
    const char* frameCaption;
    std::array<const char*, 4> captions;  // Label1 to Label4
    std::array<const char*, 3> values;    // grid, mean, deviation
    std::array<const char*, 3> designTexts;
    std::array<const char*, 2> options;
    const char* box;
    const char* button;
    const char* buttonCaption;
};

const ScaleTabNames kFineTab{
    "tabStandardizeBPIgrids(0)",
    "Fine Scale",
    "Frame1(0)",
    "Fine scale BPI grid statistics",
    {"Label1(0)", "Label2(0)", "Label3(0)", "Label4(0)"},
    {"lbl_LgScale_BPI_Grid(0)", "lbl_Lg_ScaleBPI_Mean(0)", "lbl_Lg_ScaleBPI_StDev(0)"},
    {"[lbpigrid]", "[Mean]", "[stDev]"},
    {"optSave_LS_StdGrid(0)", "optSave_LS_StdGrid(1)"},
    "g_s_Save_LgScale_Std_Grid",
    "cmdNext_This",
    "Next ->"};

const ScaleTabNames kBroadTab{
    "tabStandardizeBPIgrids(1)",
    "Broad Scale",
    "Frame1(1)",
    "Broad scale BPI grid statistics",
    {"Label1(1)", "Label2(1)", "Label3(1)", "Label4(1)"},
    {"lbl_SmScale_BPI_Grid(1)", "lbl_SmScale_BPIStat_Mean(1)", "lbl_SmScale_BPIStat_StDev(1)"},
    {"[sbpigrid]", "[Mean]", "[stdDev]"},
    {"optSave_SS_StdGrid(0)", "optSave_SS_StdGrid(1)"},
    "g_s_Save_SmScale_Std_Grid",
    "cmdSubmit(1)",
    "Submit"};

}  // namespace

frmZoneStep3Page::frmZoneStep3Page(PageSlot& slot) : Page(slot, kModule) {
    NewBanner(QStringLiteral("Standardize the BPI grids"), {});

    tabStandardizeBPIgrids = new QTabWidget(this);
    tabStandardizeBPIgrids->setObjectName(QStringLiteral("tabStandardizeBPIgrids"));
    Body()->addWidget(tabStandardizeBPIgrids);

    struct Built {
        QLabel* grid;
        QLabel* mean;
        QLabel* deviation;
        std::array<QRadioButton*, 2> options;
        QLineEdit* box;
        QPushButton* button;
    };
    const auto buildTab = [this](int index, const ScaleTabNames& names) {
        auto* tab = new QWidget;
        tab->setObjectName(QString::fromLatin1(names.page));
        tabPage[index] = tab;
        auto* column = new QVBoxLayout(tab);
        column->setContentsMargins(12, 12, 12, 12);

        Frame1[index] = new QGroupBox(QString::fromLatin1(names.frameCaption), tab);
        Frame1[index]->setObjectName(QString::fromLatin1(names.frame));
        auto* statistics = new QGridLayout(Frame1[index]);
        statistics->setHorizontalSpacing(12);
        Label1[index] = NewTabLabel(tab, names.captions[0], "Grid:");
        Label2[index] = NewTabLabel(tab, names.captions[1], "Mean:");
        Label3[index] = NewTabLabel(tab, names.captions[2], "Standard Deviation:");
        Built built{};
        built.grid = NewTabLabel(tab, names.values[0], names.designTexts[0], true);
        built.mean = NewTabLabel(tab, names.values[1], names.designTexts[1], true);
        built.deviation = NewTabLabel(tab, names.values[2], names.designTexts[2], true);
        int row = 0;
        for (auto [caption, value] : {std::pair{Label1[index], built.grid},
                                      {Label2[index], built.mean},
                                      {Label3[index], built.deviation}}) {
            statistics->addWidget(caption, row, 0);
            statistics->addWidget(value, row, 1);
            ++row;
        }
        statistics->setColumnStretch(1, 1);
        column->addWidget(Frame1[index]);
        column->addSpacing(10);

        Label4[index] =
            NewTabLabel(tab, names.captions[3], "Would you like to save the standardized grid?");
        column->addWidget(Label4[index]);
        built.options[0] = NewOption(names.options[0], QStringLiteral("No thanks."));
        built.options[1] = NewOption(
            names.options[1], QStringLiteral("Yes. Please specify output data set directory."));
        built.options[1]->setChecked(true);
        built.box = NewBox(names.box, kLongestTypedName);
        auto* choices = new QGridLayout;
        choices->setColumnMinimumWidth(0, 16);
        choices->addWidget(built.options[0], 0, 1, 1, 2);
        choices->addWidget(built.options[1], 1, 1, 1, 2);
        choices->setColumnMinimumWidth(1, 20);
        choices->addWidget(built.box, 2, 2);
        choices->setColumnStretch(3, 1);
        column->addLayout(choices);
        column->addStretch(1);

        auto* runRow = new QHBoxLayout;
        runRow->addStretch(1);
        built.button = NewButton(names.button, QString::fromLatin1(names.buttonCaption), runRow);
        column->addLayout(runRow);
        tabStandardizeBPIgrids->addTab(tab, QString::fromLatin1(names.caption));
        return built;
    };

    const Built fine = buildTab(0, kFineTab);
    lbl_LgScale_BPI_Grid = fine.grid;
    lbl_Lg_ScaleBPI_Mean = fine.mean;
    lbl_Lg_ScaleBPI_StDev = fine.deviation;
    optSave_LS_StdGrid = fine.options;
    g_s_Save_LgScale_Std_Grid = fine.box;
    cmdNext_This = fine.button;

    const Built broad = buildTab(1, kBroadTab);
    lbl_SmScale_BPI_Grid = broad.grid;
    lbl_SmScale_BPIStat_Mean = broad.mean;
    lbl_SmScale_BPIStat_StDev = broad.deviation;
    optSave_SS_StdGrid = broad.options;
    g_s_Save_SmScale_Std_Grid = broad.box;
    cmdSubmit = broad.button;

    cmdAboutBPIGridStandardization =
        NewHelpButton("cmdAboutBPIGridStandardization", "cmdAboutBPIGridStandardization_Click",
                      QStringLiteral("More about BPI grid standardization..."), "bpistd.htm");
    NewButtonRow();
    cmdNext->setEnabled(false);
    resize(640, 520);

    OnChange(g_s_Save_LgScale_Std_Grid, "g_s_Save_LgScale_Std_Grid_Change", kPassOn,
             [this] { halvane::g_s_Save_LgScale_Std_Grid = TextOf(g_s_Save_LgScale_Std_Grid); });
    OnChange(g_s_Save_SmScale_Std_Grid, "g_s_Save_SmScale_Std_Grid_Change", kPassOn,
             [this] { halvane::g_s_Save_SmScale_Std_Grid = TextOf(g_s_Save_SmScale_Std_Grid); });

    // "No thanks." leaves the run a temporary name, in lower case here and
    // in the engine's spelling when the checks look for it: one grid on a
    // case-blind folder.
    const auto saveOptionClick = [](const std::array<QRadioButton*, 2>& option, QLineEdit& box,
                                    std::string& name, const char* temporary,
                                    const std::string& bpiGrid) {
        if (option[0]->isChecked()) {
            box.setEnabled(false);
            box.setVisible(false);
            box.setText({});
            name = temporary;
        } else {
            box.setEnabled(true);
            box.setVisible(true);
            box.setText(Text(bpiGrid + "std"));
        }
    };
    for (QRadioButton* option : optSave_LS_StdGrid) {
        OnOptionClick(option, "optSave_LS_StdGrid_Click", kPassOn, [this, saveOptionClick] {
            saveOptionClick(optSave_LS_StdGrid, *g_s_Save_LgScale_Std_Grid,
                            halvane::g_s_Save_LgScale_Std_Grid, "tmpfinestd",
                            g_s_LS_BPI_InputDataSet);
        });
    }
    for (QRadioButton* option : optSave_SS_StdGrid) {
        OnOptionClick(option, "optSave_SS_StdGrid_Click", kPassOn, [this, saveOptionClick] {
            saveOptionClick(optSave_SS_StdGrid, *g_s_Save_SmScale_Std_Grid,
                            halvane::g_s_Save_SmScale_Std_Grid, "tmpbroadstd",
                            g_s_SS_BPI_InputDataSet);
        });
    }

    OnClick(cmdNext_This, "cmdNext_This_Click", kTopLevel, [this] { cmdNext_This_Click(); });
    OnClick(cmdSubmit, "cmdSubmit_Click", kTopLevel, [this] { cmdSubmit_Click(); });
    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [this] { cmdNext_Click(); });
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] { GoBack(); });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmZoneStep3Page::Form_Load() {
    Event("Form_Load", kTopLevel, [this] {
        tabStandardizeBPIgrids->setCurrentIndex(0);
        const bool haveInputs = !g_s_SS_BPI_InputDataSet.empty() &&
                                !g_s_LS_BPI_InputDataSet.empty() &&
                                !halvane::g_s_WorkingDir.empty();
        if (!HasInputElse(haveInputs, frmZoneStep3_reqdata)) return;
        ApplyRunMode();
        m_frmPrevious = g_frm_PreviousPage;

        // A grid that does not open ends the load here, and the labels keep
        // their design texts.
        calcRasterStats(runtime::Deref(g_p_LS_BPI_RasterDataset).CreateDefaultRaster(), "Large");
        lbl_LgScale_BPI_Grid->setText(Text(g_s_LS_BPI_InputDataSet));
        lbl_Lg_ScaleBPI_Mean->setText(Text(runtime::CStr(g_d_LS_BPI_Mean)));
        lbl_Lg_ScaleBPI_StDev->setText(Text(runtime::CStr(g_d_LS_BPI_StdDev)));
        g_s_Save_LgScale_Std_Grid->setText(Text(g_s_LS_BPI_InputDataSet + "std"));
        halvane::g_s_Save_LgScale_Std_Grid = TextOf(g_s_Save_LgScale_Std_Grid);

        calcRasterStats(runtime::Deref(g_p_SS_BPI_RasterDataset).CreateDefaultRaster(), "Small");
        lbl_SmScale_BPI_Grid->setText(Text(g_s_SS_BPI_InputDataSet));
        lbl_SmScale_BPIStat_Mean->setText(Text(runtime::CStr(g_d_SS_BPI_Mean)));
        lbl_SmScale_BPIStat_StDev->setText(Text(runtime::CStr(g_d_SS_BPI_StdDev)));
        g_s_Save_SmScale_Std_Grid->setText(Text(g_s_SS_BPI_InputDataSet + "std"));
        halvane::g_s_Save_SmScale_Std_Grid = TextOf(g_s_Save_SmScale_Std_Grid);
    });
}

void frmZoneStep3Page::cmdNext_This_Click() {
    bool check = true;
    const bool named = optSave_LS_StdGrid[1]->isChecked();
    if (named && g_s_Save_LgScale_Std_Grid->text().isEmpty()) {
        Stop("Please specify an 'Output data set' for the Fine Scale BPI before submitting.",
             kNameTitle);
        check = false;
    }
    // Whatever the test above found.
    const std::string folder = halvane::g_s_WorkingDir;
    if (named) {
        const std::string name = TextOf(g_s_Save_LgScale_Std_Grid);
        if (RasterExists(folder + "/" + name)) {
            Stop(ExistsMessage(name), kExistsTitle);
            check = false;
        } else if (HasBlank(name)) {
            Stop(BlankNameMessage(name), kExistsTitle);
            check = false;
        }
    } else if (RasterExists(folder + "/tmpFinestd")) {
        Stop(
            "'tmpFinestd' already exists in the working directory. Please try using a different "
            "name.",
            kExistsTitle);
        check = false;
    } else if (HasBlank(folder)) {
        Stop(BlankFolderMessage(folder), kExistsTitle);
        check = false;
    }
    if (check) tabStandardizeBPIgrids->setCurrentIndex(1);
}

bool frmZoneStep3Page::SubmitChecksPass() {
    const std::string fine = TextOf(g_s_Save_LgScale_Std_Grid);
    const std::string broad = TextOf(g_s_Save_SmScale_Std_Grid);
    // In these four the scale words stand crosswise to the boxes tested.
    if (optSave_LS_StdGrid[1]->isChecked() && fine.empty()) {
        Stop("Please specify an 'Output data set' for the Broad Scale BPI before submitting.",
             kNameTitle);
        return false;
    }
    if (optSave_SS_StdGrid[1]->isChecked() && broad.empty()) {
        Stop("Please specify an 'Output data set' for the Fine Scale BPI before submitting.",
             kNameTitle);
        return false;
    }
    if (g_s_Save_SmScale_Std_Grid->text().size() >= 13) {
        Stop(
            "Output grid names must be 12 characters or less. Please rename your Fine Scale "
            "Standardized output data set.",
            kTooLongTitle);
        return false;
    }
    if (g_s_Save_LgScale_Std_Grid->text().size() >= 13) {
        Stop(
            "Output grid names must be 12 characters or less. Please rename your Broad Scale "
            "Standardized output data set.",
            kTooLongTitle);
        return false;
    }

    // The fine tab's choice alone decides what is tested next.
    const std::string folder = halvane::g_s_WorkingDir;
    if (optSave_LS_StdGrid[1]->isChecked()) {
        // With "No thanks." on the broad tab its box is empty, and the test
        // looks for the folder itself, which is no grid.
        if (RasterExists(folder + "/" + fine)) {
            Stop(ExistsMessage(fine), kExistsTitle);
        } else if (HasBlank(fine)) {
            Stop(BlankNameMessage(fine), kExistsTitle);
        } else if (RasterExists(folder + "/" + broad)) {
            Stop(ExistsMessage(broad), kExistsTitle);
        } else if (HasBlank(broad)) {
            Stop(BlankNameMessage(broad), kExistsTitle);
        } else {
            return true;
        }
        return false;
    }
    // A name typed on the broad tab goes untested here.
    if (RasterExists(folder + "/tmpFinestd")) {
        Stop(
            "'tmpFinestd' already exists in the working directory. Please try using a different  "
            "working directory.",
            kExistsTitle);
    } else if (HasBlank(folder)) {
        Stop(BlankFolderMessage(folder), kExistsTitle);
    } else if (RasterExists(folder + "/tmpBroadstd")) {
        Stop(
            "'tmpBroadstd' already exists in the working directory. Please try using a different "
            "working directory.",
            kExistsTitle);
    } else {
        return true;
    }
    return false;
}

void frmZoneStep3Page::cmdSubmit_Click() {
    if (!SubmitChecksPass()) return;

    ui::Services().SetMousePointer(ui::vbHourglass);
    ShowProgress(kProgressMessage, kProgressTitle, 0, 6, 0, hWnd());
    // Each return is a cancel seen at a step: the run ends below, with the
    // pointer left as it stands and the buttons as they were.
    const auto standardizeBoth = [this] {
        if (!g_b_Continue) return;
        // A standardization that fails reports on its own, and the run goes on.
        BPI_Standardize(runtime::Deref(g_p_SS_BPI_RasterDataset).CreateDefaultRaster(),
                        g_d_SS_BPI_Mean, g_d_SS_BPI_StdDev, halvane::g_s_Save_SmScale_Std_Grid,
                        "BroadBPI", hWnd());
        ShowProgress(kProgressMessage, kProgressTitle, 0, 6, 6, hWnd());
        if (!g_b_Continue) return;
        // The fine grid gets a dialog of its own.
        CloseProgress();
        ShowProgress(kProgressMessage, kProgressTitle, 0, 6, 0, hWnd());
        if (!g_b_Continue) return;
        BPI_Standardize(runtime::Deref(g_p_LS_BPI_RasterDataset).CreateDefaultRaster(),
                        g_d_LS_BPI_Mean, g_d_LS_BPI_StdDev, halvane::g_s_Save_LgScale_Std_Grid,
                        "FineBPI", hWnd());
        ShowProgress(kProgressMessage, kProgressTitle, 0, 6, 6, hWnd());
        if (!g_b_Continue) return;
        CloseProgress();
        ui::Services().SetMousePointer(ui::vbDefault);

        // The broad tab's choice has no say in the question.
        if (optSave_LS_StdGrid[1]->isChecked() &&
            ui::Services().MsgBox("Calculation complete. Would you like to add data to the map?",
                                  ui::vbYesNo, "Add Data to Map?") == ui::vbYes) {
            AddToFocusMap({g_p_LgScale_Std_RasterDataset, g_p_SmScale_Std_RasterDataset});
        }
        cmdNext->setEnabled(true);
        cmdSubmit->setEnabled(false);
    };
    standardizeBoth();

    CloseProgress();
    // After a cancel in the wizard it is the broad-scale page that is
    // repainted, as on the BPI pages; that makes it if it isn't loaded.
    if (!g_b_StandAloneRun && !g_b_Continue) frmZoneStep1->update();
}

void frmZoneStep3Page::cmdNext_Click() {
    if (halvane::g_s_Save_LgScale_Std_Grid.empty() || halvane::g_s_Save_SmScale_Std_Grid.empty()) {
        Stop("Please Standardize the BPI grids before continuing.",
             "Please Standardize the BPI Grids..");
        return;
    }
    HandOver(frmZoneStep4);
}

}  // namespace halvane::pages
