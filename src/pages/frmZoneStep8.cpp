#include "pages/frmZoneStep8.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "classification/ZoneClassification.h"
#include "engine/Session.h"
#include "pages/frmZoneStep8_comp.h"

namespace halvane::pages {

Slot<frmZoneStep8Page> frmZoneStep8("frmZoneStep8");

namespace {

constexpr const char* kModule = "frmZoneStep8";
// The box takes no more; Finish tests no length of its own.
constexpr int kLongestTypedName = 11;

QString Text(const std::string& text) { return QString::fromStdString(text); }

}  // namespace

QString ShortenedDictionaryPath(const std::string& path) {
    const QString text = Text(path);
    return text.left(10) + QStringLiteral("...") + text.right(15);
}

frmZoneStep8Page::frmZoneStep8Page(PageSlot& slot) : ClassListPage(slot, kModule) {
    auto* columns = new QHBoxLayout;
    columns->setSpacing(24);
    Body()->addLayout(columns);

    auto* inputs = new QVBoxLayout;
    columns->addLayout(inputs, 1);
    auto* facts = new QGridLayout;
    facts->setHorizontalSpacing(8);
    facts->setColumnStretch(1, 1);
    int row = 0;
    const auto addFact = [&](QLabel*& caption, const char* name, const char* text, QLabel*& value,
                             const char* valueName) {
        caption = NewLabel(name, QString::fromLatin1(text), nullptr);
        caption->setWordWrap(false);
        value = Bold(NewLabel(valueName, {}, nullptr));
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        // A long path is cut at the page's edge rather than widen the page.
        value->setWordWrap(false);
        value->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        facts->addWidget(caption, row, 0, Qt::AlignTop);
        facts->addWidget(value, row, 1, Qt::AlignTop);
        ++row;
    };
    addFact(lbl_wd, "lbl_wd", "Working Directory:", lblWorkingDir, "lblWorkingDir");
    facts->setRowMinimumHeight(row++, 10);
    Label2 = Bold(NewLabel("Label2", QStringLiteral("Input Data"), nullptr));
    facts->addWidget(Label2, row++, 0, 1, 2);
    addFact(Label3, "Label3", "Bathymetric data set:", lblInputDataset, "lblInputDataset");
    addFact(Label5, "Label5", "Fine scale standardized BPI:", lblLSBPI_STD, "lblLSBPI_STD");
    addFact(Label7, "Label7", "Broad scale standardized BPI:", lblSSBPI_STD, "lblSSBPI_STD");
    addFact(Label4, "Label4", "Classification Dictionary:", lblClassDictDisp, "lblClassDictDisp");
    // A label of the design that nothing writes.
    lblClassDict = NewLabel("lblClassDict", {}, nullptr);
    facts->addWidget(lblClassDict, row++, 1);
    inputs->addLayout(facts);
    inputs->addSpacing(16);
    Label1 = Bold(NewLabel("Label1", QStringLiteral("Output parameters"), inputs));
    Label67 =
        NewLabel("Label67", QStringLiteral("Please specify an output data set name:"), inputs);
    g_s_OutputDataSet = NewBox("g_s_OutputDataSet", kLongestTypedName);
    g_s_OutputDataSet->setMinimumWidth(160);
    auto* name = new QHBoxLayout;
    name->addWidget(g_s_OutputDataSet);
    name->addStretch(1);
    inputs->addLayout(name);
    inputs->addStretch(1);

    columns->addLayout(NewClassList(), 0);

    cmdBack = NewButton("cmdBack", QStringLiteral("<- Back"), ButtonRow());
    cmdFinish = NewButton("cmdFinish", QStringLiteral("Finish"), ButtonRow());
    cmdCancel = NewButton("cmdCancel", QStringLiteral("Cancel"), ButtonRow());
    resize(920, 440);

    OnChange(g_s_OutputDataSet, "g_s_OutputDataSet_Change", kPassOn,
             [this] { halvane::g_s_OutputDataSet = g_s_OutputDataSet->text().toStdString(); });
    OnClick(cmdFinish, "cmdFinish_Click", kTopLevel, [this] { cmdFinish_Click(); });
    // Back unloads, so that the next visit loads the page, and the
    // dictionary, afresh.
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] {
        Unload();
        runtime::Deref(m_frmPrevious).Show();
    });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmZoneStep8Page::Form_Load() {
    Event("Form_Load", kTopLevel, [this] {
        m_frmPrevious = g_frm_PreviousPage;
        DesignGridLayout();
        NewDictionary();
        lblWorkingDir->setText(Text(halvane::g_s_WorkingDir));
        // The grid the run really uses, which after resampling is not the input.
        lblInputDataset->setText(Text(g_s_BPI_DataSet));
        lblSSBPI_STD->setText(Text(g_s_Save_SmScale_Std_Grid));
        lblLSBPI_STD->setText(Text(g_s_Save_LgScale_Std_Grid));
        lblClassDictDisp->setText(ShortenedDictionaryPath(g_s_ClassDictionary_Path));
        g_s_OutputDataSet->setText(halvane::g_s_OutputDataSet.empty()
                                       ? QStringLiteral("ZONES")
                                       : Text(halvane::g_s_OutputDataSet));
        LoadSessionDictionary();
    });
}

void frmZoneStep8Page::cmdFinish_Click() {
    classification::ZoneRunPage run;
    run.g_s_OutputDataSet = g_s_OutputDataSet->text().toStdString();
    // The run releases the dictionary it is given; the page keeps whatever
    // the run leaves, so that a refused name can be corrected and run again.
    run.m_prjFile = std::move(m_prjFile);
    run.m_iClassCount = m_iClassCount;
    run.m_pApp = m_pApp;
    run.m_pDoc = m_pDoc;
    run.m_pMap = m_pMap;
    const bool finished = classification::cmdFinish_Click(run);
    m_prjFile = std::move(run.m_prjFile);
    m_pDoc = std::move(run.m_pDoc);
    m_pMap = std::move(run.m_pMap);
    // No hand-over: the completion page and the rugosity page after it go
    // back to the page that handed over last.
    if (!finished) return;
    Hide();
    frmZoneStep8_comp.Show();
}

}  // namespace halvane::pages
