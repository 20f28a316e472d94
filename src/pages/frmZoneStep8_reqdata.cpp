#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include "engine/RasterAccess.h"
#include "engine/Session.h"
#include "pages/GridBrowse.h"
#include "pages/frmZoneStep8.h"

namespace halvane::pages {

Slot<frmZoneStep8_reqdataPage> frmZoneStep8_reqdata("frmZoneStep8_reqdata");

namespace {

constexpr const char* kModule = "frmZoneStep8_reqdata";
constexpr int kLongestTypedName = 11;
constexpr const char* kSelectInput = "Please Select Input Dataset..";

bool Filled(const QLineEdit* box, const char* message, const char* title) {
    if (!box->text().isEmpty()) return true;
    ui::Services().MsgBox(message, ui::vbCritical, title);
    return false;
}

}  // namespace

frmZoneStep8_reqdataPage::frmZoneStep8_reqdataPage(PageSlot& slot) : ClassListPage(slot, kModule) {
    auto* columns = new QHBoxLayout;
    columns->setSpacing(24);
    Body()->addLayout(columns);

    // Left, what the wizard would have built; each caption stands over its box.
    auto* inputs = new QGridLayout;
    inputs->setHorizontalSpacing(6);
    inputs->setColumnStretch(0, 1);
    int row = 0;
    const auto addPath = [&](QLabel* caption, QLineEdit* box, QToolButton* browse) {
        caption->setWordWrap(false);
        inputs->addWidget(caption, row++, 0, 1, 2);
        inputs->addWidget(box, row, 0);
        inputs->addWidget(browse, row++, 1);
    };
    lblWorkingDir = Bold(NewLabel("lblWorkingDir", QStringLiteral("Working Directory:"), nullptr));
    inputs->addWidget(lblWorkingDir, row++, 0, 1, 2);
    Label8 = NewLabel("Label8", QStringLiteral("First, select working directory:"), nullptr);
    g_s_WorkingDir = NewBox("g_s_WorkingDir");
    cmdOpenWS = NewBrowseButton("cmdOpenWS");
    addPath(Label8, g_s_WorkingDir, cmdOpenWS);
    inputs->setRowMinimumHeight(row++, 10);
    Label2 = Bold(NewLabel("Label2", QStringLiteral("Input Data"), nullptr));
    inputs->addWidget(Label2, row++, 0, 1, 2);
    Label3 = NewLabel("Label3", QStringLiteral("Bathymetric data set:"), nullptr);
    g_s_InputDataSet = NewBox("g_s_InputDataSet");
    cmdInputBrowse = NewBrowseButton("cmdInputBrowse");
    addPath(Label3, g_s_InputDataSet, cmdInputBrowse);
    Label5 = NewLabel("Label5", QStringLiteral("Fine scale standardized BPI:"), nullptr);
    g_lbpi_std = NewBox("g_lbpi_std");
    cmdInputLSBPISTD = NewBrowseButton("cmdInputLSBPISTD");
    addPath(Label5, g_lbpi_std, cmdInputLSBPISTD);
    Label7 = NewLabel("Label7", QStringLiteral("Broad scale standardized BPI:"), nullptr);
    g_sbpi_std = NewBox("g_sbpi_std");
    cmdInputSSBPISTD = NewBrowseButton("cmdInputSSBPISTD");
    addPath(Label7, g_sbpi_std, cmdInputSSBPISTD);
    Label4 = NewLabel("Label4", QStringLiteral("Classification Dictionary:"), nullptr);
    txt_Classification_Dictionary = NewBox("txt_Classification_Dictionary");
    cmd_ClassDictionary_Browse = NewBrowseButton("cmd_ClassDictionary_Browse");
    addPath(Label4, txt_Classification_Dictionary, cmd_ClassDictionary_Browse);
    inputs->setRowStretch(row, 1);
    columns->addLayout(inputs, 1);

    // Right, the output and the classes.
    auto* output = new QVBoxLayout;
    Label1 = Bold(NewLabel("Label1", QStringLiteral("Output parameters"), output));
    Label67 =
        NewLabel("Label67", QStringLiteral("Please specify an output data set name:"), output);
    g_s_OutputDataSet = NewBox("g_s_OutputDataSet", kLongestTypedName);
    g_s_OutputDataSet->setMinimumWidth(160);
    auto* name = new QHBoxLayout;
    name->addWidget(g_s_OutputDataSet);
    name->addStretch(1);
    output->addLayout(name);
    output->addSpacing(10);
    output->addLayout(NewClassList(), 1);
    columns->addLayout(output, 1);

    NewButtonRow();
    cmdNext->setText(QStringLiteral("Next"));
    resize(820, 480);

    OnClick(cmdOpenWS, "cmdOpenWS_Click", kTopLevel,
            [this] { BrowseWorkingDir(*this, *g_s_WorkingDir); });
    OnClick(cmdInputBrowse, "cmdInputBrowse_Click", kTopLevel, [this] {
        // The raster the run uses, and the input as well; the wizard's own
        // input dataset stays unset here.
        BrowseProjectedGrid(*this, "Input Bathymetric Data Set", *g_s_InputDataSet,
                            [](const std::string& name, const std::string& folder) {
                                halvane::g_s_InputDataSet = name;
                                g_s_InputDataPath = folder;
                                g_p_BPI_RasterDataset = OpenInFolder(folder, name);
                                g_s_BPI_DataSet = name;
                                g_s_BPI_DataPath = folder;
                            });
    });
    // The dialogs' titles name the scales crosswise to the captions over the
    // boxes; the grids themselves go where the captions say.
    OnClick(cmdInputLSBPISTD, "cmdInputLSBPISTD_Click", kTopLevel, [this] {
        BrowseProjectedGrid(*this, "Broad scale standardized BPI Data Set", *g_lbpi_std,
                            [](const std::string& name, const std::string& folder) {
                                g_s_Save_LgScale_Std_Grid = name;
                                g_s_LgScale_Std_GridPath = folder;
                                g_p_LgScale_Std_RasterDataset = OpenInFolder(
                                    g_s_LgScale_Std_GridPath, g_s_Save_LgScale_Std_Grid);
                            });
    });
    OnClick(cmdInputSSBPISTD, "cmdInputSSBPISTD_Click", kTopLevel, [this] {
        BrowseProjectedGrid(*this, "Fine scale standardized BPI Data Set", *g_sbpi_std,
                            [](const std::string& name, const std::string& folder) {
                                g_s_Save_SmScale_Std_Grid = name;
                                g_s_SmScale_Std_GridPath = folder;
                                g_p_SmScale_Std_RasterDataset = OpenInFolder(
                                    g_s_SmScale_Std_GridPath, g_s_Save_SmScale_Std_Grid);
                            });
    });
    OnClick(cmd_ClassDictionary_Browse, "cmd_ClassDictionary_Browse_Click", kPassOn, [this] {
        LoadXMLFile();
        // After a Cancel the dialog still holds the name of the last pick.
        txt_Classification_Dictionary->setText(QString::fromStdString(dlgXML.FileName));
        g_s_ClassDictionary_Path = dlgXML.FileName;
    });
    OnChange(g_s_OutputDataSet, "g_s_OutputDataSet_Change", kPassOn,
             [this] { halvane::g_s_OutputDataSet = g_s_OutputDataSet->text().toStdString(); });

    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [this] { cmdNext_Click(); });
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] {
        Unload();
        runtime::Deref(m_frmPrevious).Show();
    });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmZoneStep8_reqdataPage::Form_Load() {
    Event("Form_Load", kTopLevel, [this] {
        m_frmPrevious = g_frm_PreviousPage;
        DesignGridLayout();
        cmdBack->setVisible(false);
        NewDictionary();
        // Whatever name the session holds; the change handler takes it over.
        g_s_OutputDataSet->setText(QStringLiteral("ZONES"));
        if (!halvane::g_s_WorkingDir.empty()) {
            g_s_WorkingDir->setText(QString::fromStdString(halvane::g_s_WorkingDir));
        }
        LoadSessionDictionary();
    });
}

void frmZoneStep8_reqdataPage::cmdNext_Click() {
    // Only the boxes are tested: a path typed by hand passes, though the
    // session then lacks what a browse would have stored. The fine and broad
    // messages stand crosswise to the boxes, as the dialogs' titles do.
    if (!Filled(g_s_WorkingDir, "Please specify a Working Directory before continuing.",
                "Please Select Working Directory..") ||
        !Filled(g_s_InputDataSet, "Please specify an input dataset before continuing.",
                kSelectInput) ||
        !Filled(g_sbpi_std, "Please specify a Fine scale standardized dataset before continuing.",
                kSelectInput) ||
        !Filled(g_lbpi_std, "Please specify a Broad scale standardized dataset before continuing.",
                kSelectInput) ||
        !Filled(txt_Classification_Dictionary,
                "Please specify a Classification Dictionary before continuing.", kSelectInput) ||
        !Filled(g_s_OutputDataSet, "Please specify an output data set name before continuing.",
                kSelectInput)) {
        return;
    }
    g_frm_PreviousPage = &Self();
    halvane::g_s_OutputDataSet = g_s_OutputDataSet->text().toStdString();
    Hide();
    frmZoneStep8.Show();
}

}  // namespace halvane::pages
