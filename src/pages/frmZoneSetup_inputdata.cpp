#include "pages/frmZoneSetup_inputdata.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QToolButton>

#include "engine/RasterAccess.h"
#include "engine/Session.h"
#include "pages/GridBrowse.h"

namespace halvane::pages {

Slot<frmZoneSetup_inputdataPage> frmZoneSetup_inputdata("frmZoneSetup_inputdata");

namespace {

constexpr const char* kModule = "frmZoneSetup_inputdata";

std::string TextOf(const QLineEdit* box) { return box->text().toStdString(); }

}  // namespace

frmZoneSetup_inputdataPage::frmZoneSetup_inputdataPage(PageSlot& slot) : Page(slot, kModule) {
    NewBanner(QStringLiteral("Halvane Classification Setup"), QStringLiteral("Input Data"));

    QGridLayout* form = NewForm();
    Label2 = NewLabel("Label2", QStringLiteral("First, select working directory:"), nullptr);
    g_s_WorkingDir = NewBox("g_s_WorkingDir");
    cmdOpenWS = NewBrowseButton("cmdOpenWS");
    form->addWidget(Label2, 0, 0, 1, 3);
    form->addWidget(g_s_WorkingDir, 1, 0, 1, 2);
    form->addWidget(cmdOpenWS, 1, 2);
    form->setRowMinimumHeight(2, 10);

    Label3 = NewLabel("Label3", QStringLiteral("Next, select one of the following two options:"),
                      nullptr);
    form->addWidget(Label3, 3, 0, 1, 3);

    // The entire run: an option button captioned by the label beside it.
    InputOption[1] = NewOption("InputOption(1)");
    InputOption[1]->setChecked(true);
    Label4 = NewLabel("Label4",
                      QStringLiteral("Run an entire zonal classification session. Please specify "
                                     "input bathymetric data set."),
                      nullptr);
    auto* entire = new QHBoxLayout;
    entire->addWidget(InputOption[1], 0, Qt::AlignTop);
    entire->addWidget(Label4, 1);
    form->addLayout(entire, 4, 0, 1, 3);
    g_s_InputDataSet = NewBox("g_s_InputDataSet");
    cmdInputBrowse = NewBrowseButton("cmdInputBrowse");
    form->addWidget(g_s_InputDataSet, 5, 0, 1, 2);
    form->addWidget(cmdInputBrowse, 5, 2);
    form->setRowMinimumHeight(6, 10);

    // The run on grids made before.
    InputOption[0] = NewOption("InputOption(0)");
    Label5 = NewLabel("Label5",
                      QStringLiteral("Use previously created BATHYMETRIC and STANDARDIZED BPI "
                                     "GRIDS in session. Please specify input BPI GRIDS."),
                      nullptr);
    auto* previous = new QHBoxLayout;
    previous->addWidget(InputOption[0], 0, Qt::AlignTop);
    previous->addWidget(Label5, 1);
    form->addLayout(previous, 7, 0, 1, 3);
    Label6 = NewLabel("Label6", QStringLiteral("Fine Scale:  "), nullptr);
    g_s_LargeScaleBPI = NewBox("g_s_LargeScaleBPI");
    cmdInputLrgScaleBPIBrowse = NewBrowseButton("cmdInputLrgScaleBPIBrowse");
    Label7 = NewLabel("Label7", QStringLiteral("Broad Scale:"), nullptr);
    g_s_SmallScaleBPI = NewBox("g_s_SmallScaleBPI");
    cmdInputSmlScaleBPIBrowse = NewBrowseButton("cmdInputSmlScaleBPIBrowse");
    Label9 = NewLabel("Label9", QStringLiteral("Bathymetric Grid:"), nullptr);
    txtInputDataSet2 = NewBox("txtInputDataSet2");
    cmdInputDSBrowse = NewBrowseButton("cmdInputDSBrowse");
    int row = 8;
    for (auto [label, box, browse] :
         {std::tuple{Label6, g_s_LargeScaleBPI, cmdInputLrgScaleBPIBrowse},
          std::tuple{Label7, g_s_SmallScaleBPI, cmdInputSmlScaleBPIBrowse},
          std::tuple{Label9, txtInputDataSet2, cmdInputDSBrowse}}) {
        label->setWordWrap(false);
        label->setIndent(24);
        form->addWidget(label, row, 0);
        form->addWidget(box, row, 1);
        form->addWidget(browse, row, 2);
        ++row;
    }

    cmdWhyResample = NewHelpButton("cmdWhyResample", "cmdWhyResample_Click",
                                   QStringLiteral("More about Halvane methods..."), "process.htm");
    NewButtonRow();
    resize(560, 520);

    OnClick(cmdOpenWS, "cmdOpenWS_Click", kTopLevel, [this] { cmdOpenWS_Click(); });
    OnClick(cmdInputBrowse, "cmdInputBrowse_Click", kTopLevel, [this] {
        BrowseProjectedGrid(*this, "Input Bathymetric Data Set", *g_s_InputDataSet, StoreInputGrid);
    });
    OnClick(cmdInputDSBrowse, "cmdInputDSBrowse_Click", kTopLevel, [this] {
        BrowseProjectedGrid(*this, "Input Bathymetric Data Set", *txtInputDataSet2, StoreInputGrid);
    });
    OnClick(cmdInputLrgScaleBPIBrowse, "cmdInputLrgScaleBPIBrowse_Click", kTopLevel,
            [this] { cmdInputLrgScaleBPIBrowse_Click(); });
    OnClick(cmdInputSmlScaleBPIBrowse, "cmdInputSmlScaleBPIBrowse_Click", kTopLevel,
            [this] { cmdInputSmlScaleBPIBrowse_Click(); });

    // The option logic: these handlers set each other's boxes and options and
    // so run inside one another, as often as the changes go.
    OnChange(g_s_InputDataSet, "g_s_InputDataSet_Change", kTopLevel, [this] {
        InputOption[1]->setChecked(true);
        InputOption[0]->setChecked(false);
        g_s_SmallScaleBPI->setText({});
        g_s_LargeScaleBPI->setText({});
    });
    const auto selectPreviousGrids = [this] {
        InputOption[1]->setChecked(false);
        InputOption[0]->setChecked(true);
        g_s_InputDataSet->setText({});
    };
    OnChange(g_s_LargeScaleBPI, "g_s_LargeScaleBPI_Change", kTopLevel, selectPreviousGrids);
    OnChange(g_s_SmallScaleBPI, "g_s_SmallScaleBPI_Change", kTopLevel, selectPreviousGrids);
    for (QRadioButton* option : InputOption) {
        OnOptionClick(option, "InputOption_Click", kTopLevel, [this] { InputOption_Click(); });
    }

    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [this] { cmdNext_Click(); });
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] { GoBack(); });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmZoneSetup_inputdataPage::Form_Load() {
    // The boxes keep their design defaults, whatever the session holds.
    Event("Form_Load", kTopLevel, [this] { m_frmPrevious = g_frm_PreviousPage; });
}

void frmZoneSetup_inputdataPage::cmdOpenWS_Click() {
    // The only place the session's working directory comes from: a cancelled
    // dialog empties both, and a folder typed by hand is never stored.
    BrowseWorkingDir(*this, *g_s_WorkingDir);
}

void frmZoneSetup_inputdataPage::cmdInputLrgScaleBPIBrowse_Click() {
    const std::string path = getRasterInput("Input Fine Scale BPI Grid", hWnd());
    g_s_LargeScaleBPI->setText(QString::fromStdString(path));
    const std::size_t separator = LastSeparator(path);
    if (separator == std::string::npos) return;
    // This grid, not the bathymetric one, becomes the session's input when
    // this button was the last used.
    StoreInputGrid(path.substr(separator + 1), path.substr(0, separator));
    TestRasterOpens(path);
}

void frmZoneSetup_inputdataPage::cmdInputSmlScaleBPIBrowse_Click() {
    const std::string path = getRasterInput("Input Broad Scale BPI Grid", hWnd());
    g_s_SmallScaleBPI->setText(QString::fromStdString(path));
    if (LastSeparator(path) != std::string::npos) TestRasterOpens(path);
}

void frmZoneSetup_inputdataPage::InputOption_Click() {
    if (InputOption[0]->isChecked()) {
        g_s_InputDataSet->setText({});
        InputOption[0]->setChecked(true);
    } else if (InputOption[1]->isChecked()) {
        g_s_SmallScaleBPI->setText({});
        g_s_LargeScaleBPI->setText({});
        InputOption[1]->setChecked(true);
    }
}

void frmZoneSetup_inputdataPage::cmdNext_Click() {
    bool check = true;
    if (g_s_WorkingDir->text().isEmpty()) {
        ui::Services().MsgBox("Please specify a Working Directory before continuing.",
                              ui::vbCritical, "Please Select Working Directory..");
        check = false;
    } else if (InputOption[1]->isChecked() && g_s_InputDataSet->text().isEmpty()) {
        ui::Services().MsgBox("Please specify an input dataset before continuing.", ui::vbCritical,
                              "Please Select Input Dataset..");
        check = false;
    }
    if (!check) return;

    g_frm_PreviousPage = &frmZoneSetup_inputdata;
    // Both runs open everything; with an empty box the folder and name are
    // empty and the session's dataset becomes nothing, without a message.
    g_p_InputRasterDataset =
        OpenDatasetInWorkspace(GetRasterWorkspace(g_s_InputDataPath), halvane::g_s_InputDataSet);
    g_s_BPI_DataSet = halvane::g_s_InputDataSet;
    g_s_BPI_DataPath = g_s_InputDataPath;
    g_p_BPI_RasterDataset =
        OpenDatasetInWorkspace(GetRasterWorkspace(g_s_InputDataPath), halvane::g_s_InputDataSet);

    const std::string broad = TextOf(g_s_SmallScaleBPI);
    g_p_SmScale_Std_RasterDataset =
        OpenDatasetInWorkspace(GetRasterWorkspace(PathOfRaster(broad)), NameOfRaster(broad));
    g_s_Save_SmScale_Std_Grid = NameOfRaster(broad);
    g_s_SmScale_Std_GridPath = PathOfRaster(broad);
    const std::string fine = TextOf(g_s_LargeScaleBPI);
    g_p_LgScale_Std_RasterDataset =
        OpenDatasetInWorkspace(GetRasterWorkspace(PathOfRaster(fine)), NameOfRaster(fine));
    g_s_Save_LgScale_Std_Grid = NameOfRaster(fine);
    g_s_LgScale_Std_GridPath = PathOfRaster(fine);

    if (InputOption[0]->isChecked()) {
        Hide();
        frmZoneStep4.Show();
    } else if (InputOption[1]->isChecked()) {
        Hide();
        frmZoneSetup_resampling.Show();
    } else {
        ui::Services().MsgBox("Please select your input data source or existing BPI Grids.",
                              ui::vbCritical, "Please Select Input Data..");
    }
}

}  // namespace halvane::pages
