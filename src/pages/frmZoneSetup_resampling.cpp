#include "pages/frmZoneSetup_resampling.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "engine/Analysis.h"
#include "engine/RasterAccess.h"
#include "engine/Session.h"
#include "platform/raster/Storage.h"

namespace halvane::pages {

Slot<frmZoneSetup_resamplingPage> frmZoneSetup_resampling("frmZoneSetup_resampling");

namespace {

constexpr const char* kModule = "frmZoneSetup_resampling";
constexpr const char* kProgressTitle = "Processing";
constexpr const char* kProgressMessage = "Resampling Input Grid";

// The input's cell size as the labels show it: the mean of X and Y.
std::string MeanCellSizeText(raster::RasterDataset& dataset) {
    const raster::Pnt size = dataset.CreateDefaultRaster()->MeanCellSize();
    return runtime::CStr((size.Y + size.X) / 2);
}

}  // namespace

frmZoneSetup_resamplingPage::frmZoneSetup_resamplingPage(PageSlot& slot) : Page(slot, kModule) {
    NewBanner(QStringLiteral("Halvane Classification Setup"), QStringLiteral("Resampling"));

    auto* input = new QGridLayout;
    input->setHorizontalSpacing(8);
    Body()->addLayout(input);
    Label2[0] = NewLabel("Label2(0)", QStringLiteral("Input data set:"), nullptr);
    lbl_InputDataSet = NewLabel("lbl_InputDataSet", {}, nullptr);
    Label2[1] = NewLabel("Label2(1)", QStringLiteral("cell size:"), nullptr);
    lbl_InputDataCellSize = NewLabel("lbl_InputDataCellSize", {}, nullptr);
    for (QLabel* value : {lbl_InputDataSet, lbl_InputDataCellSize}) {
        QFont bold = value->font();
        bold.setBold(true);
        value->setFont(bold);
    }
    input->addWidget(Label2[0], 0, 0);
    input->addWidget(lbl_InputDataSet, 0, 1);
    input->addWidget(Label2[1], 1, 0);
    input->addWidget(lbl_InputDataCellSize, 1, 1);
    input->setColumnStretch(1, 1);
    Body()->addSpacing(12);

    Label3 = NewLabel("Label3", QStringLiteral("Would you like to resample the input dataset?"));
    auto* answers = new QHBoxLayout;
    g_b_Resample[0] = NewOption("g_b_Resample(0)", QStringLiteral("Yes"));
    g_b_Resample[1] = NewOption("g_b_Resample(1)", QStringLiteral("No"));
    g_b_Resample[1]->setChecked(true);
    answers->addSpacing(16);
    answers->addWidget(g_b_Resample[0]);
    answers->addWidget(g_b_Resample[1]);
    answers->addStretch(1);
    Body()->addLayout(answers);
    Body()->addSpacing(8);

    QGridLayout* form = NewForm();
    form->setColumnStretch(1, 0);
    form->setColumnStretch(2, 1);
    Label4 = NewLabel("Label4", QStringLiteral("Output cell size:"), nullptr);
    g_i_OutputCellSize = NewBox("g_i_OutputCellSize");
    g_i_OutputCellSize->setText(QStringLiteral("10"));
    Label5 = NewLabel("Label5", QStringLiteral("Resampling Method:"), nullptr);
    // The misspelt entry is the text the resampling compares with.
    g_s_ResampleMethod = NewCombo(
        "g_s_ResampleMethod",
        {QStringLiteral("Nearest Neighbor"), QStringLiteral("Bilinear Interoplation"),
         QStringLiteral("Cubic Convolution")},
        QStringLiteral("Cubic Convolution"));
    Label6 = NewLabel("Label6", QStringLiteral("Please specify an output dataset:"), nullptr);
    g_s_OutputDataSet = NewBox("g_s_OutputDataSet", 12);
    cmdSubmitResampleData = NewButton("cmdSubmitResampleData", QStringLiteral("Submit"), nullptr);
    int row = 0;
    for (auto [label, field] : {std::pair<QLabel*, QWidget*>{Label4, g_i_OutputCellSize},
                                {Label5, g_s_ResampleMethod},
                                {Label6, g_s_OutputDataSet}}) {
        label->setWordWrap(false);
        form->addWidget(label, row, 0);
        form->addWidget(field, row, 1);
        ++row;
    }
    g_i_OutputCellSize->setMinimumWidth(120);
    g_s_OutputDataSet->setMinimumWidth(120);
    form->addWidget(cmdSubmitResampleData, row - 1, 2, Qt::AlignLeft);

    cmdWhyResample = NewHelpButton("cmdWhyResample", "cmdWhyResample_Click",
                                   QStringLiteral("More about resampling..."), "resample.htm");
    NewButtonRow();
    resize(520, 400);

    for (QRadioButton* option : g_b_Resample) {
        OnOptionClick(option, "g_b_Resample_Click", kTopLevel, [this] {
            cmdSubmitResampleData->setEnabled(g_b_Resample[0]->isChecked());
        });
    }
    OnClick(cmdSubmitResampleData, "cmdSubmitResampleData_Click", kTopLevel,
            [this] { cmdSubmitResampleData_Click(); });
    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [this] { cmdNext_Click(); });
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] { GoBack(); });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmZoneSetup_resamplingPage::Form_Load() {
    // No handler of its own: a failure here goes to whoever showed the page.
    if (!HasInputElse(!g_s_InputDataSet.empty(), frmZoneSetup_resampling_reqdata)) return;
    ApplyRunMode();
    m_frmPrevious = g_frm_PreviousPage;
    lbl_InputDataSet->setText(QString::fromStdString(g_s_InputDataSet));
    cmdSubmitResampleData->setEnabled(false);

    g_p_CellSizeRasterDataset =
        OpenDatasetInWorkspace(GetRasterWorkspace(g_s_InputDataPath), g_s_InputDataSet);
    // Without the grid the labels and the box keep their design texts.
    if (!g_p_CellSizeRasterDataset) return;
    lbl_InputDataCellSize->setText(
        QString::fromStdString(MeanCellSizeText(*g_p_CellSizeRasterDataset)));
    g_s_InputDataCellSize = MeanCellSizeText(*g_p_CellSizeRasterDataset);
    g_i_OutputCellSize->setText(QString::fromStdString(g_s_InputDataCellSize));
}

void frmZoneSetup_resamplingPage::Form_Unload() {
    Event("Form_Unload", kTopLevel, [this] { m_pApp = nullptr; });
}

void frmZoneSetup_resamplingPage::cmdSubmitResampleData_Click() {
    bool check = true;
    const std::string name = g_s_OutputDataSet->text().toStdString();
    if (g_i_OutputCellSize->text().isEmpty()) {
        ui::Services().MsgBox("Please specify an 'Output cell size' before continuing.",
                              ui::vbCritical, "Please Set Output Cell Size..");
        check = false;
    } else if (name.empty()) {
        ui::Services().MsgBox("Please name the 'Output Dataset' before submitting.", ui::vbCritical,
                              "Please Name the Output..");
        check = false;
    } else if (name.size() >= 13) {
        ui::Services().MsgBox(
            "Output grid names must be 12 characters or less. Please rename your Resampled "
            "output data set.",
            ui::vbCritical, "Output name too long..");
        check = false;
    }
    // Whatever the checks above found.
    if (RasterExists(g_s_WorkingDir + "/" + name)) {
        check = false;
        ui::Services().MsgBox(
            name + " already exists in the working directory. Please try using a different name.",
            ui::vbCritical, "File Exists");
    } else if (name.find(' ') != std::string::npos) {
        check = false;
        ui::Services().MsgBox("'" + name +
                                  "' contains a space. Spaces are not allowed in Raster Data Set "
                                  "names. Please rename with out spaces.",
                              ui::vbCritical, "File Exists");
    }

    if (check) {
        ui::Services().SetMousePointer(ui::vbHourglass);
        ShowProgress(kProgressMessage, kProgressTitle, 0, 6, 0, hWnd());
        // A resampling that fails reports on its own; the page goes on as
        // if it had worked.
        ResampleRas(runtime::Deref(g_p_CellSizeRasterDataset).CreateDefaultRaster(),
                    g_i_OutputCellSize->text().toStdString(),
                    g_s_ResampleMethod->currentText().toStdString(), name);
        g_s_ResampledDataSet = name;
        g_s_BPI_DataSet = name;
        g_s_BPI_DataPath = g_s_WorkingDir;
        ShowProgress(kProgressMessage, kProgressTitle, 0, 6, 6, hWnd());
        CloseProgress();
        ui::Services().SetMousePointer(ui::vbDefault);

        if (ui::Services().MsgBox("Calculation complete. Would you like to add data to the map?",
                                  ui::vbYesNo, "Add Data to Map?") == ui::vbYes) {
            AddToFocusMap({g_p_BPI_RasterDataset});
        }
        // A second submission takes a new click on "Yes".
        cmdNext->setEnabled(true);
        cmdSubmitResampleData->setEnabled(false);
    }
    Show();
}

void frmZoneSetup_resamplingPage::cmdNext_Click() {
    bool check = true;
    if (g_b_Resample[0]->isChecked() && g_s_ResampledDataSet.empty()) {
        ui::Services().MsgBox(
            "Please resample the input dataset, or select 'No' when asked if you want to Resample "
            "the input dataset.",
            ui::vbCritical, "Please Resample The Input Data..");
        check = false;
    }
    // With or without that message; the grid's folder stays as it was.
    if (g_s_ResampledDataSet.empty()) {
        g_s_BPI_DataSet = g_s_InputDataSet;
        g_p_BPI_RasterDataset = g_p_InputRasterDataset;
    }
    if (check) HandOver(frmZoneStep1);
}

}  // namespace halvane::pages
