#include "pages/frmRugosity.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include "engine/RasterAccess.h"
#include "engine/ResultLayers.h"
#include "engine/Rugosity.h"
#include "engine/Session.h"
#include "pages/GridBrowse.h"
#include "pages/frmIntro.h"
#include "platform/runtime/Text.h"

namespace halvane::pages {

Slot<frmRugosityPage> frmRugosity("frmRugosity");

const char* const kRugosityExplanation =
    "The output grid is a function of the total surface area divided by the planar area. This "
    "data can be used to better identify areas of high biodiversity.";

namespace {

constexpr const char* kModule = "frmRugosity";
// The box takes no more; Finish tests no length of its own.
constexpr int kLongestTypedName = 12;

std::string TextOf(const QLineEdit* box) { return box->text().toStdString(); }

QString Text(const std::string& text) { return QString::fromStdString(text); }

}  // namespace

frmRugosityPage::frmRugosityPage(PageSlot& slot) : Page(slot, kModule) {
    Label1 = NewBanner(QStringLiteral("Create Rugosity Grid"), {}, "Label1");

    auto* columns = new QHBoxLayout;
    columns->setSpacing(12);
    Body()->addLayout(columns);
    Picture1 = NewLabel("Picture1", {}, columns);
    Picture1->setPixmap(DrawSeafloorPicture(110, 250));
    Picture1->setAlignment(Qt::AlignTop);

    Frame1 = new QGroupBox(this);
    Frame1->setObjectName(QStringLiteral("Frame1"));
    columns->addWidget(Frame1, 1);
    auto* inside = new QVBoxLayout(Frame1);
    lbl_InputDataSet =
        NewLabel("lbl_InputDataSet", QString::fromLatin1(kRugosityExplanation), inside);
    inside->addSpacing(8);
    auto* form = new QGridLayout;
    form->setHorizontalSpacing(6);
    form->setColumnStretch(0, 1);
    inside->addLayout(form);
    inside->addStretch(1);
    int row = 0;
    // Each prompt on a row of its own, over its box.
    const auto addPrompt = [&](const char* name, const char* text) {
        QLabel* prompt = NewLabel(name, QString::fromLatin1(text), nullptr);
        prompt->setWordWrap(false);
        form->addWidget(prompt, row++, 0, 1, 2);
        return prompt;
    };
    const auto addPath = [&](const char* boxName, QLineEdit*& box, const char* browseName,
                             QToolButton*& browse) {
        box = NewBox(boxName);
        browse = NewBrowseButton(browseName);
        form->addWidget(box, row, 0);
        form->addWidget(browse, row++, 1);
        form->setRowMinimumHeight(row++, 8);
    };
    Label2[0] = addPrompt("Label2(0)", "Please specify an input data set:    ");
    addPath("g_s_InputDataSet", g_s_InputDataSet, "cmdInputBrowse", cmdInputBrowse);
    Label2[1] = addPrompt("Label2(1)", "Please specify a working directory:");
    addPath("g_s_WorkingDir", g_s_WorkingDir, "cmdOpenWS", cmdOpenWS);
    Label7 = addPrompt("Label7", "Please specify an output data set name.");
    g_s_SaveRugosity_OutputData = NewBox("g_s_SaveRugosity_OutputData", kLongestTypedName);
    g_s_SaveRugosity_OutputData->setMinimumWidth(160);
    g_s_SaveRugosity_OutputData->setMaximumWidth(200);
    form->addWidget(g_s_SaveRugosity_OutputData, row++, 0, Qt::AlignLeft);

    cmdAboutBathymPositionIndexGrids =
        NewHelpButton("cmdAboutBathymPositionIndexGrids", "cmdAboutBathymPositionIndexGrids_Click",
                      QStringLiteral("More about Rugosity..."), "rugosity.htm");
    NewButtonRow();
    cmdNext->setText(QStringLiteral("Finish"));
    resize(600, 420);

    OnClick(cmdInputBrowse, "cmdInputBrowse_Click", kTopLevel, [this] { cmdInputBrowse_Click(); });
    OnClick(cmdOpenWS, "cmdOpenWS_Click", kTopLevel,
            [this] { BrowseWorkingDir(*this, *g_s_WorkingDir); });
    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [this] { cmdNext_Click(); });
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] { GoBack(); });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmRugosityPage::Form_Load() {
    // Once per page object: a page that comes back keeps what its boxes hold.
    Event("Form_Load", kTopLevel, [this] {
        m_frmPrevious = g_frm_PreviousPage;
        if (!halvane::g_s_WorkingDir.empty()) {
            g_s_WorkingDir->setText(Text(halvane::g_s_WorkingDir));
        }
        // After a wizard run, the grid the position indices were built on.
        if (!g_s_BPI_DataSet.empty()) {
            g_s_InputDataSet->setText(
                Text(g_s_BPI_DataPath + runtime::kPathSeparator + g_s_BPI_DataSet));
        }
    });
}

void frmRugosityPage::cmdInputBrowse_Click() {
    const std::string path = getRasterInput("Input Bathymetric Data Set", hWnd());
    // A cancelled dialog empties the box too.
    g_s_InputDataSet->setText(Text(path));
    const std::size_t separator = LastSeparator(path);
    if (separator == std::string::npos) return;
    g_s_Rugosity_InputDataSet = path.substr(separator + 1);
    g_s_Rugosity_InputDataPath = path.substr(0, separator);
    // Unlike the other input browsers, no projection test: any grid will do.
    // The layer only makes a path that is no raster fail here rather than at
    // Finish.
    TestRasterOpens(path);
}

void frmRugosityPage::cmdNext_Click() {
    bool bOK = true;
    const auto stop = [&bOK](const std::string& text, const char* title) {
        ui::Services().MsgBox(text, ui::vbCritical, title);
        bOK = false;
    };
    const std::string name = TextOf(g_s_SaveRugosity_OutputData);
    const std::string input = TextOf(g_s_InputDataSet);
    const std::string folder = TextOf(g_s_WorkingDir);

    // Every check runs, so one click may show several boxes. The three boxes
    // for an empty field carry the words of the fine-scale BPI page.
    for (const std::string* field : {&name, &input, &folder}) {
        if (field->empty()) {
            stop("Please build a Large Scale BPI grid before continuing.",
                 "Please build a Large Scale BPI..");
        }
    }
    if (RasterExists(folder + runtime::kPathSeparator + name)) {
        stop(name + " already exists in the working directory. Please try using a different name.",
             "File Exists");
    } else if (name.find(' ') != std::string::npos) {
        stop("'" + name +
                 "' contains a space. Spaces are not allowed in Raster Data Set names. Please "
                 "rename with out spaces.",
             "File Exists");
    }

    // The session takes the page as it stands, whatever the checks said.
    halvane::g_s_SaveRugosity_OutputData = name;
    halvane::g_s_WorkingDir = folder;
    g_s_Rugosity_InputDataSet = NameOfRaster(input);
    g_s_Rugosity_InputDataPath = PathOfRaster(input);
    g_p_Rugosity_RasterDataset =
        OpenInFolder(g_s_Rugosity_InputDataPath, g_s_Rugosity_InputDataSet);
    if (!bOK) return;

    // A failed run is reported by this handler and leaves the hourglass on.
    ui::Services().SetMousePointer(ui::vbHourglass);
    BuildRugosity();
    ui::Services().SetMousePointer(ui::vbDefault);
    // The grid goes on the map as it is, without a renderer of its own.
    if (AskToAddDataToMap()) AddToFocusMap({g_p_Rugosity_OutputRasterDataset});
    // No hand-over: the completion page goes back where this page goes back.
    Hide();
    frmRugosity_comp.Show();
}

}  // namespace halvane::pages
