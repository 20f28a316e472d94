#include "pages/BpiPage.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "engine/Analysis.h"
#include "engine/RasterAccess.h"
#include "engine/Session.h"
#include "platform/raster/Storage.h"

namespace halvane::pages {

namespace {

constexpr const char* kProgressTitle = "Processing";
constexpr const char* kProgressMessage = "Creating Output files";

bool HasBlank(const std::string& text) { return text.find(' ') != std::string::npos; }

}  // namespace

BpiPage::BpiPage(PageSlot& slot, const BpiScale& scale) : Page(slot, scale.module), scale_(scale) {
    NewBanner(QString::fromUtf8(scale.heading), QString::fromUtf8(scale.subHeading));

    auto* input = new QHBoxLayout;
    input->setSpacing(8);
    lblCurrentInput = NewLabel("lblCurrentInput", QStringLiteral("Currently selected  input data set:"),
                               input);
    lblCurrentInput->setWordWrap(false);
    lbl_InputDataSet = NewLabel("lbl_InputDataSet", {}, input);
    QFont bold = lbl_InputDataSet->font();
    bold.setBold(true);
    lbl_InputDataSet->setFont(bold);
    input->addStretch(1);
    Body()->addLayout(input);

    fraScale = new QGroupBox(QString::fromUtf8(scale.frame), this);
    fraScale->setObjectName(QStringLiteral("fraScale"));
    auto* radii = new QGridLayout(fraScale);
    radii->setHorizontalSpacing(8);
    innerBox = NewBox(scale.innerBox);
    innerBox->setText(QStringLiteral("10"));
    outerBox = NewBox(scale.outerBox);
    outerBox->setText(QString::fromUtf8(scale.fine ? "30" : "50"));
    scaleLabel = NewLabel(scale.scaleLabel, QString::fromUtf8(scale.fine ? "300" : "500"), nullptr);
    scaleLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    int row = 0;
    for (auto [caption, field] : {std::pair<const char*, QWidget*>{"Inner radius:", innerBox},
                                  {"Outer radius:", outerBox},
                                  {"Scale factor:", scaleLabel}}) {
        auto* label = new QLabel(QString::fromUtf8(caption), fraScale);
        label->setObjectName(QStringLiteral("lblRadius(%1)").arg(row));
        radii->addWidget(label, row, 0);
        radii->addWidget(field, row, 1);
        ++row;
    }
    for (QLineEdit* box : {innerBox, outerBox}) {
        box->setAlignment(Qt::AlignRight);
        box->setMinimumWidth(80);
        box->setMaximumWidth(100);
    }
    scaleLabel->setMaximumWidth(100);
    radii->setColumnStretch(2, 1);
    Body()->addWidget(fraScale);
    Body()->addSpacing(8);

    lblSaveQuestion = NewLabel("lblSaveQuestion",
                               QStringLiteral("Would you like to save the output data set?"));
    const std::string option = scale.saveOption;
    saveOption[0] = NewOption((option + "(0)").c_str(), QStringLiteral("No thanks."));
    saveOption[1] = NewOption((option + "(1)").c_str(), QString::fromUtf8(scale.namedCaption));
    saveOption[1]->setChecked(true);
    nameBox = NewBox(scale.nameBox, 12);
    nameBox->setMinimumWidth(160);
    nameBox->setMaximumWidth(240);
    auto* choices = new QGridLayout;
    choices->setHorizontalSpacing(8);
    choices->setColumnMinimumWidth(0, 16);
    choices->setColumnMinimumWidth(1, 16);
    choices->addWidget(saveOption[0], 0, 1, 1, 2);
    choices->addWidget(saveOption[1], 1, 1, 1, 2);
    choices->addWidget(nameBox, 2, 2);
    choices->setColumnStretch(3, 1);
    Body()->addLayout(choices);

    auto* run = new QHBoxLayout;
    run->addStretch(1);
    runButton = NewButton(scale.runButton, QStringLiteral("Generate Grid"), run);
    Body()->addLayout(run);

    cmdAboutBathymPositionIndexGrids = NewHelpButton(
        "cmdAboutBathymPositionIndexGrids", "cmdAboutBathymPositionIndexGrids_Click",
        QStringLiteral("More about Bathymetric Position Index grids..."), "bpi.htm");
    NewButtonRow();
    cmdNext->setEnabled(false);
    resize(540, 440);

    OnChange(innerBox, Procedure(scale.innerBox, "Change"), kTopLevel, [this] { InnerChange(); });
    OnChange(outerBox, Procedure(scale.outerBox, "Change"), kTopLevel, [this] { OuterChange(); });
    for (QRadioButton* choice : saveOption) {
        OnOptionClick(choice, Procedure(scale.saveOption, "Click"), kTopLevel,
                      [this] { SaveOptionClick(); });
    }
    OnClick(runButton, Procedure(scale.runButton, "Click"), kTopLevel, [this] { RunButtonClick(); });
    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [this] { NextClick(); });
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] { GoBack(); });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

const char* BpiPage::Procedure(const char* control, const char* event) {
    return procedures_.emplace_back(std::string(control) + "_" + event).c_str();
}

void BpiPage::Form_Load() {
    Event("Form_Load", kTopLevel, [this] {
        if (!scale_.fine) m_frmPrevious = g_frm_PreviousPage;
        if (!HasInputElse(!g_s_BPI_DataSet.empty(), *scale_.requiredData)) return;
        ApplyRunMode();
        if (scale_.fine) m_frmPrevious = g_frm_PreviousPage;
        lbl_InputDataSet->setText(QString::fromStdString(g_s_BPI_DataSet));

        // From here a failure ends the load without a word; whatever the page
        // holds by then, design texts included, stays.
        try {
            if (!g_s_ResampledDataSet.empty()) {
                g_p_CellSizeRasterDataset =
                    OpenDatasetInWorkspace(GetRasterWorkspace(g_s_WorkingDir), g_s_BPI_DataSet);
            } else {
                g_p_CellSizeRasterDataset = OpenDatasetInWorkspace(
                    GetRasterWorkspace(g_s_InputDataPath + "/"), g_s_InputDataSet);
            }
            if (!g_p_CellSizeRasterDataset) return;
            const raster::RasterPtr props = g_p_CellSizeRasterDataset->CreateDefaultRaster();
            innerBox->setText(QStringLiteral("1"));
            *scale_.innerRadius = innerBox->text().toStdString();
            const raster::Pnt size = runtime::Deref(props).MeanCellSize();
            g_s_BPI_CellSize = runtime::CStr((size.X + size.Y) / 2);
            outerBox->setText(QString::fromUtf8(scale_.outerOnLoad));
            *scale_.outerRadius = outerBox->text().toStdString();
            scaleLabel->setText(QString::fromStdString(ScaleFactor(outerBox->text().toStdString())));
            nameBox->setText(QString::fromStdString(DefaultName()));
        } catch (const runtime::Failure&) {
        }
    });
}

void BpiPage::Form_Unload() {
    Event("Form_Unload", kTopLevel, [this] { m_pApp = nullptr; });
}

std::string BpiPage::ScaleFactor(const std::string& outerText) const {
    return std::to_string(runtime::CInt(runtime::CDbl(outerText) * runtime::CDbl(g_s_BPI_CellSize)));
}

std::string BpiPage::DefaultName() const {
    return g_s_BPI_DataSet + "_" + scaleLabel->text().toStdString();
}

void BpiPage::InnerChange() {
    if (!scale_.fine) {
        if (g_s_BPI_CellSize.empty()) return;
        *scale_.innerRadius = innerBox->text().toStdString();
        scaleLabel->setText(QString::fromStdString(ScaleFactor(outerBox->text().toStdString())));
        if (!saveOption[0]->isChecked()) nameBox->setText(QString::fromStdString(DefaultName()));
        return;
    }
    // The fine page tests the box itself and leaves the scale factor alone.
    if (innerBox->text().isEmpty()) return;
    *scale_.innerRadius = innerBox->text().toStdString();
    if (saveOption[1]->isChecked()) nameBox->setText(QString::fromStdString(DefaultName()));
}

void BpiPage::OuterChange() {
    if (outerBox->text().isEmpty()) return;
    *scale_.outerRadius = outerBox->text().toStdString();
    scaleLabel->setText(QString::fromStdString(ScaleFactor(outerBox->text().toStdString())));
    const bool named = scale_.fine ? saveOption[1]->isChecked() : !saveOption[0]->isChecked();
    if (named) nameBox->setText(QString::fromStdString(DefaultName()));
}

void BpiPage::SaveOptionClick() {
    const bool temporary = saveOption[0]->isChecked();
    nameBox->setEnabled(!temporary);
    nameBox->setVisible(!temporary);
    if (temporary) {
        nameBox->clear();
    } else {
        nameBox->setText(QString::fromStdString(DefaultName()));
    }
}

bool BpiPage::Checked() {
    bool check = true;
    auto stop = [&check](const std::string& text, const char* title) {
        ui::Services().MsgBox(text, ui::vbCritical, title);
        check = false;
    };
    // The first failure ends this chain; box texts are read at each test.
    if (innerBox->text().isEmpty()) {
        stop("Please specify an 'Inner radius' before continuing.", "Please Specify An Inner Radius..");
    } else if (outerBox->text().isEmpty()) {
        stop("Please specify an 'Outer radius' before submitting.", "Please Specify An Outer Radius..");
    } else if (saveOption[1]->isChecked() && nameBox->text().isEmpty()) {
        stop(scale_.noNameText, scale_.noNameTitle);
    } else if (!nameBox->text().isEmpty() && nameBox->text().size() > 13) {
        stop("Output grid names must be 13 characters or less. Please rename your output data set.",
             "Output name too long..");
    } else if (runtime::CInt(outerBox->text().toStdString()) <=
               runtime::CInt(innerBox->text().toStdString())) {
        // Equal radii fail too, whatever the words say.
        ui::Services().MsgBox(scale_.outerNotGreaterText, ui::vbOKOnly, "Invalid Outer Radius");
        check = false;
    }

    // The names and the folder, whatever the chain found: one click may show two messages.
    const std::string name = nameBox->text().toStdString();
    const std::string blankInName = "'" + name +
                                    "' contains a space. Spaces are not allowed in Raster Data Set "
                                    "names. Please rename with out spaces.";
    if (saveOption[1]->isChecked()) {
        if (RasterExists(g_s_WorkingDir + "/" + name)) {
            stop(name + " already exists in the working directory. Please try using a different name.",
                 "File Exists");
        } else if (HasBlank(name)) {
            stop(blankInName, "File Exists");
        }
    } else if (!scale_.fine) {
        if (RasterExists(g_s_WorkingDir + "/" + scale_.temporary)) {
            // The box is empty here, so the message begins with a blank.
            stop(name + " already exists in the working directory. Please try using a different "
                        "working directory.",
                 "File Exists");
        } else if (HasBlank(name)) {
            stop(blankInName, "File Exists");
        }
    } else {
        if (RasterExists(g_s_WorkingDir + "/" + scale_.temporary)) {
            stop(std::string("'") + scale_.temporary +
                     "' already exists in the working directory. Please try using a different "
                     "working directory.",
                 "File Exists");
        } else if (HasBlank(g_s_WorkingDir)) {
            stop("'" + g_s_WorkingDir +
                     "' contains a space. Spaces are not allowed in Raster Data working "
                     "directories. Please change your working directory to one with out spaces.",
                 "File Exists");
        }
    }
    return check;
}

void BpiPage::RunButtonClick() {
    const bool check = Checked();
    const auto build = [this] {
        // A failed build reports on its own; the page goes on as if it had
        // worked, and Next then finds no grid.
        BPI_Build(runtime::Deref(g_p_BPI_RasterDataset).CreateDefaultRaster(), *scale_.innerRadius,
                  *scale_.outerRadius, nameBox->text().toStdString(), scale_.tag, hWnd());
        ShowProgress(kProgressMessage, kProgressTitle, 0, 6, 6, hWnd());
    };
    const auto finish = [this] {
        ui::Services().SetMousePointer(ui::vbDefault);
        cmdNext->setEnabled(true);
        runButton->setEnabled(false);
        // A temporary grid is never offered to the map.
        if (saveOption[1]->isChecked() &&
            ui::Services().MsgBox("Calculation complete. Would you like to add data to the map?",
                                  ui::vbYesNo, "Add Data to Map?") == ui::vbYes) {
            AddToFocusMap({*scale_.gridDataset});
        }
    };

    if (!scale_.fine) {
        if (check) {
            ui::Services().SetMousePointer(ui::vbHourglass);
            ShowProgress(kProgressMessage, kProgressTitle, 0, 6, 0, hWnd());
            // A cancel here leaves the hourglass on.
            if (g_b_Continue) {
                build();
                CloseProgress();
                finish();
            }
        }
    } else {
        // The fine page flashes the dialog even for a click that failed its
        // checks, and keeps it open over the question.
        ShowProgress(kProgressMessage, kProgressTitle, 0, 6, 0, hWnd());
        if (check && g_b_Continue) {
            ui::Services().SetMousePointer(ui::vbHourglass);
            build();
            if (g_b_Continue) finish();
        }
    }
    CloseProgress();
    // Either page refreshes the broad one, which makes it if it is not loaded.
    if (!g_b_Continue) frmZoneStep1.Get().update();
}

void BpiPage::NextClick() {
    if (scale_.grid->empty()) {
        ui::Services().MsgBox(scale_.notBuiltText, ui::vbCritical, scale_.notBuiltTitle);
        return;
    }
    HandOver(*scale_.next);
    if (scale_.fine) scale_.next->Get().update();
}

}  // namespace halvane::pages
