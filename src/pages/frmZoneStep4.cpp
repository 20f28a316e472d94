#include "pages/frmZoneStep4.h"

#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>
#include <array>

#include "engine/Session.h"
#include "platform/reporting/HTMLHelp.h"
#include "pages/DictionaryGrid.h"
#include "platform/runtime/Convert.h"
#include "platform/runtime/Text.h"

namespace halvane::pages {

Slot<frmZoneStep4Page> frmZoneStep4("frmZoneStep4");

namespace {

constexpr const char* kModule = "frmZoneStep4";
constexpr const char* kFilter = "XML File(*.xml)|*.xml";
// The angle brackets are part of the title.
constexpr const char* kDialogTitle = "<name> File to Import";
constexpr const char* kDefaultDictionary = "/def_dict.xml";
constexpr std::uint32_t kOptionalFieldColor = 0xC0FFFF;

// Key codes as the editor's key handlers take them.
constexpr int kKeyReturn = 13;
constexpr int kKeyLeft = 37;
constexpr int kKeyUp = 38;
constexpr int kKeyRight = 39;
constexpr int kKeyDown = 40;
constexpr int kKeyDelete = 46;

int KeyCodeOf(const QKeyEvent& event) {
    switch (event.key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return kKeyReturn;
        case Qt::Key_Left:
            return kKeyLeft;
        case Qt::Key_Up:
            return kKeyUp;
        case Qt::Key_Right:
            return kKeyRight;
        case Qt::Key_Down:
            return kKeyDown;
        case Qt::Key_Delete:
            return kKeyDelete;
        default:
            return 0;
    }
}

constexpr int kColumns = 11;
constexpr int kFirstBodyRow = 2;
constexpr int kLastColumn = kColumns - 1;
constexpr int kFirstOptionalColumn = 7;

struct ColumnLayout {
    int twips;
    const char* heading;
    const char* subHeading;
};

// "Paramaters" is the grid's own spelling.
constexpr std::array<ColumnLayout, kColumns> kGridColumns{{
    {400, "", ""},
    {850, "Classification", "Class"},
    {2200, "Classification", "Zone"},
    {1200, "Broad Scale BPI Paramaters", "Lower Bounds"},
    {1200, "Broad Scale BPI Paramaters", "Upper Bounds"},
    {1200, "Fine Scale BPI Paramaters", "Lower Bounds"},
    {1200, "Fine Scale BPI Paramaters", "Upper Bounds"},
    {1200, "Slope", "Lower Bounds"},
    {1200, "Slope", "Upper Bounds"},
    {1200, "Depth", "Lower Bounds"},
    {1200, "Depth", "Upper Bounds"},
}};

std::string TextOf(const QLineEdit* box) { return box->text().toStdString(); }

QString Text(const std::string& text) { return QString::fromStdString(text); }

QLabel* NewCaption(QWidget* parent, const char* name, const char* text) {
    auto* label = new QLabel(QString::fromLatin1(text), parent);
    label->setObjectName(QString::fromLatin1(name));
    return label;
}

}  // namespace

frmZoneStep4Page::frmZoneStep4Page(PageSlot& slot) : Page(slot, kModule) {
    Label1 = NewBanner(QStringLiteral("Create / edit classification dictionary"), {}, "Label1");

    QGridLayout* form = NewForm();
    Label2 = NewCaption(this, "Label2", "Specify an existing classification dictionary:");
    txt_Classification_Dictionary = NewBox("txt_Classification_Dictionary");
    cmd_ClassDictionary_Browse = NewBrowseButton("cmd_ClassDictionary_Browse");
    form->addWidget(Label2, 0, 0, 1, 3);
    form->addWidget(txt_Classification_Dictionary, 1, 0, 1, 2);
    form->addWidget(cmd_ClassDictionary_Browse, 1, 2);
    Body()->addSpacing(8);

    Frame1 = new QGroupBox(this);
    Frame1->setObjectName(QStringLiteral("Frame1"));
    auto* editor = new QVBoxLayout(Frame1);
    auto* fields = new QGridLayout;
    fields->setHorizontalSpacing(8);
    txtFileName = NewBox("txtFileName");
    g_s_ClassDictionary_Name = NewBox("g_s_ClassDictionary_Name");
    g_s_ClassDictionary_Description = NewBox("g_s_ClassDictionary_Description");
    int row = 0;
    for (auto [name, caption, box] :
         {std::tuple{"lblFileName", "File Name:", txtFileName},
          std::tuple{"lblTitle", "Title:", g_s_ClassDictionary_Name},
          std::tuple{"lblDescription", "Description:", g_s_ClassDictionary_Description}}) {
        fields->addWidget(NewCaption(Frame1, name, caption), row, 0);
        box->setParent(Frame1);
        fields->addWidget(box, row, 1);
        ++row;
    }
    fields->setColumnStretch(1, 1);
    editor->addLayout(fields);

    Frame2 = new QFrame(Frame1);
    Frame2->setObjectName(QStringLiteral("Frame2"));
    auto* gridHolder = new QVBoxLayout(Frame2);
    gridHolder->setContentsMargins(0, 0, 0, 0);
    grdClass = new DictionaryGrid(Frame2, kColumns, 3, 2, 1);
    grdClass->setObjectName(QStringLiteral("grdClass"));
    gridHolder->addWidget(grdClass);
    // The cell editor floats over the grid, outside any layout.
    txtActiveCell = new QLineEdit(Frame2);
    txtActiveCell->setObjectName(QStringLiteral("txtActiveCell"));
    txtActiveCell->hide();
    editor->addWidget(Frame2, 1);

    auto* records = new QHBoxLayout;
    Shape1 = new QFrame(Frame1);
    Shape1->setObjectName(QStringLiteral("Shape1"));
    Shape1->setFrameShape(QFrame::Box);
    Shape1->setFixedSize(16, 16);
    Shape1->setAutoFillBackground(true);
    QPalette swatch = Shape1->palette();
    swatch.setColor(QPalette::Window, ColorOfBgr(kOptionalFieldColor));
    Shape1->setPalette(swatch);
    Label5 = NewCaption(Frame1, "Label5", "Optional Fields");
    records->addWidget(Shape1);
    records->addWidget(Label5);
    records->addStretch(1);
    cmdAddRecord = NewButton("cmdAddRecord", QStringLiteral("Add Record"), records);
    cmdDelRecord = NewButton("cmdDelRecord", QStringLiteral("Delete Record"), records);
    cmdSave = NewButton("cmdSave", QStringLiteral("Save Dictionary"), records);
    editor->addLayout(records);
    Body()->addWidget(Frame1, 1);

    cmdAbout_ClassDictionary =
        NewButton("cmdAbout_ClassDictionary",
                  QStringLiteral("More about classification dictionaries..."), ButtonRow());
    ButtonRow()->removeWidget(cmdAbout_ClassDictionary);
    ButtonRow()->insertWidget(0, cmdAbout_ClassDictionary);
    NewButtonRow();
    LayOutGrid();
    // All columns side by side, and the default dictionary's rows without
    // scrolling.
    grdClass->setMinimumSize(grdClass->horizontalHeader()->length() + 24,
                             grdClass->verticalHeader()->defaultSectionSize() * 14 + 4);
    resize(minimumSizeHint().width() + 24, 700);

    // This help handler passes its failures on, unlike the other pages' ones.
    OnClick(cmdAbout_ClassDictionary, "cmdAbout_ClassDictionary_Click", kPassOn,
            [this] { ShowHelp("classdict.htm"); });
    OnClick(cmd_ClassDictionary_Browse, "cmd_ClassDictionary_Browse_Click", kPassOn,
            [this] { cmd_ClassDictionary_Browse_Click(); });
    OnClick(cmdAddRecord, "cmdAddRecord_Click", kTopLevel, [this] { cmdAddRecord_Click(); });
    OnClick(cmdDelRecord, "cmdDelRecord_Click", kTopLevel, [this] { cmdDelRecord_Click(); });
    OnClick(cmdSave, "cmdSave_Click", kTopLevel, [this] { cmdSave_Click(); });
    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [this] { HandOver(frmZoneStep8); });
    OnClick(cmdBack, "cmdBack_Click", kTopLevel, [this] { GoBack(); });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });

    // What was typed in the cell editor and not committed is dropped when the
    // user turns to another part of the page.
    OnChange(g_s_ClassDictionary_Description, "g_s_ClassDictionary_Description_Change", kPassOn,
             [this] { CloseCellEditor(); });
    OnChange(txt_Classification_Dictionary, "txt_Classification_Dictionary_Change", kPassOn,
             [this] { CloseCellEditor(); });
    for (QObject* watched : std::initializer_list<QObject*>{
             Frame1, Frame2, g_s_ClassDictionary_Name, txtFileName, grdClass, txtActiveCell}) {
        watched->installEventFilter(this);
    }

    connect(grdClass, &QTableWidget::cellClicked, this, [this] {
        Event("grdClass_Click", kTopLevel, [this] {
            if (m_bGridLoaded) OpenCellEditor();
        });
    });
    connect(grdClass, &QTableWidget::cellDoubleClicked, this, [this] {
        Event("grdClass_DblClick", kTopLevel, [this] {
            if (m_bGridLoaded) OpenCellEditor();
        });
    });
}

void frmZoneStep4Page::Form_Load() {
    Event("Form_Load", kTopLevel, [this] {
        ApplyRunMode();
        m_frmPrevious = g_frm_PreviousPage;
        LoadnewXMLFile(kDefaultDictionary);
        txt_Classification_Dictionary->setText(Text(dlgXML.FileName));
        g_s_ClassDictionary_Path = dlgXML.FileName;
        ShowFileName();
        txtActiveCell->hide();
    });
}

bool frmZoneStep4Page::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const int keyCode = KeyCodeOf(static_cast<QKeyEvent&>(*event));
        if (watched == grdClass && (keyCode == kKeyReturn || keyCode == kKeyDelete)) {
            Event("grdClass_KeyDown", kTopLevel, [this, keyCode] { grdClass_KeyDown(keyCode); });
            return true;
        }
        if (watched == txtActiveCell && keyCode != 0 && keyCode != kKeyDelete) {
            Event("txtActiveCell_KeyDown", kTopLevel,
                  [this, keyCode] { txtActiveCell_KeyDown(keyCode); });
            return true;
        }
    } else if (event->type() == QEvent::MouseButtonRelease) {
        if (watched == Frame1) {
            Event("Frame1_Click", kTopLevel, [this] { CloseCellEditor(); });
        } else if (watched == Frame2) {
            Event("Frame2_Click", kTopLevel, [this] { CloseCellEditor(); });
        } else if (watched == g_s_ClassDictionary_Name) {
            Event("g_s_ClassDictionary_Name_Click", kPassOn, [this] { CloseCellEditor(); });
        } else if (watched == txtFileName) {
            Event("txtFileName_Click", kTopLevel, [this] { CloseCellEditor(); });
        }
    }
    return Page::eventFilter(watched, event);
}

void frmZoneStep4Page::mouseReleaseEvent(QMouseEvent* event) {
    Event("Form_Click", kTopLevel, [this] { CloseCellEditor(); });
    Page::mouseReleaseEvent(event);
}

// --- loading

void frmZoneStep4Page::LoadnewXMLFile(const std::string& name) {
    Guarded({"LoadnewXMLFile", kModule, kPassOn}, [&] {
        // The name goes straight after the folder: it brings its own "/",
        // and a full path gets the folder in front of it all the same.
        dlgXML.FileName = ResourceFolder() + name;
        m_prjFile = std::make_shared<classification::clsXMLPrjFile>();
        if (!dlgXML.FileName.empty()) {
            m_sDictPath = runtime::Trim(dlgXML.FileName);
            m_prjFile->XML(m_sDictPath);
            FillForm();
        }
    });
}

void frmZoneStep4Page::LoadXMLFile() {
    Guarded({"LoadXMLFile", kModule, kPassOn}, [&] {
        dlgXML.FileName.clear();
        dlgXML.Filter = kFilter;
        dlgXML.DialogTitle = kDialogTitle;
        dlgXML.FilterIndex = 1;
        dlgXML.Flags = ui::cdlOFNFileMustExist + ui::cdlOFNHideReadOnly;
        dlgXML.ShowOpen();
        if (!dlgXML.FileName.empty()) {
            m_sDictPath = runtime::Trim(dlgXML.FileName);
            runtime::Deref(m_prjFile).XML(m_sDictPath);
            FillForm();
        }
    });
}

void frmZoneStep4Page::FillForm() {
    Guarded({"FillForm", kModule, kPassOn}, [&] {
        ui::Services().SetMousePointer(ui::vbHourglass);
        refreshGrid();
        const classification::clsXMLPrjFile& dictionary = runtime::Deref(m_prjFile);
        g_s_ClassDictionary_Name->setText(Text(dictionary.PrjName));
        g_s_ClassDictionary_Description->setText(Text(dictionary.PRJDescription));
        // Long descriptions read from their beginning.
        g_s_ClassDictionary_Name->setCursorPosition(0);
        g_s_ClassDictionary_Description->setCursorPosition(0);
        const classification::clsClassificationRecs& records =
            runtime::Deref(dictionary.Classifications);
        m_iClassCount = runtime::CInt(static_cast<double>(records.Count()));
        if (m_iClassCount >= 1) {
            grdClass->Rows(m_iClassCount + kFirstBodyRow);
            // A record goes to the row its ID names, whatever its place in
            // the list: rows no ID names stay empty.
            for (const classification::ClassificationRecPtr& record : records.NewEnum()) {
                const classification::clsClassificationRec& rec = runtime::Deref(record);
                grdClass->Row(rec.ID);
                grdClass->TextMatrix(rec.ID, 1, std::to_string(rec.Class));
                grdClass->TextMatrix(rec.ID, 2, rec.Zone);
                int col = 3;
                for (const auto& field : classification::clsClassificationRec::kTextFields) {
                    if (field.second == &classification::clsClassificationRec::Zone) continue;
                    grdClass->TextMatrix(rec.ID, col++, rec.*field.second);
                }
                ColourOptionalFields(rec.ID);
            }
            m_bGridLoaded = true;
        }
        ui::Services().SetMousePointer(ui::vbDefault);
    });
}

void frmZoneStep4Page::refreshGrid() {
    Guarded({"refreshGrid", kModule, kPassOn}, [&] { LayOutGrid(); });
}

void frmZoneStep4Page::LayOutGrid() {
    for (int col = 0; col < kColumns; ++col) {
        grdClass->ColWidth(col, kGridColumns[col].twips);
        grdClass->TextMatrix(0, col, kGridColumns[col].heading);
        grdClass->TextMatrix(1, col, kGridColumns[col].subHeading);
    }
    grdClass->MergeRow0();
    grdClass->FitHeadings();
    ColourOptionalFields(kFirstBodyRow);
}

// The colour goes on cell by cell through the current cell, which is left
// in the row's last column.
void frmZoneStep4Page::ColourOptionalFields(int row) {
    grdClass->Row(row);
    for (int col = kFirstOptionalColumn; col <= kLastColumn; ++col) {
        grdClass->Col(col);
        grdClass->CellBackColor(kOptionalFieldColor);
    }
}

void frmZoneStep4Page::ShowFileName() {
    txtFileName->setText(Text(runtime::SplitAtLastSeparator(dlgXML.FileName).after));
}

void frmZoneStep4Page::cmd_ClassDictionary_Browse_Click() {
    m_bGridLoaded = false;
    LoadXMLFile();
    // A cancelled dialog empties both: the session then names no dictionary.
    txt_Classification_Dictionary->setText(Text(dlgXML.FileName));
    g_s_ClassDictionary_Path = dlgXML.FileName;
    ShowFileName();
    txtActiveCell->hide();
    txtFileName->setFocus();
}

// --- the cell editor

void frmZoneStep4Page::OpenCellEditor() {
    grdClass->scrollToItem(grdClass->currentItem());
    txtActiveCell->setGeometry(grdClass->CellRect(*Frame2));
    txtActiveCell->setText(Text(grdClass->Text()));
    txtActiveCell->selectAll();
    txtActiveCell->show();
    txtActiveCell->raise();
    txtActiveCell->setFocus();
}

void frmZoneStep4Page::KeyMoveUpdate() {
    Guarded({"KeyMoveUpdate", kModule, kPassOn}, [&] { OpenCellEditor(); });
}

void frmZoneStep4Page::CommitCell() { grdClass->Text(TextOf(txtActiveCell)); }

void frmZoneStep4Page::CloseCellEditor() { txtActiveCell->hide(); }

void frmZoneStep4Page::grdClass_KeyDown(int keyCode) {
    if (keyCode == kKeyReturn) {
        if (m_bGridLoaded) OpenCellEditor();
    } else if (keyCode == kKeyDelete) {
        grdClass->Text("");
    }
}

// The wraps at the edges are uneven and stay so: Right wraps to the first
// bound, not to Class; Up walks forward through the columns no further than
// the fine-scale bounds; Down past the last row lands in the heading row of
// the column before, whose text the next commit overwrites.
void frmZoneStep4Page::txtActiveCell_KeyDown(int keyCode) {
    const int last = grdClass->Rows() - 1;
    switch (keyCode) {
        case kKeyReturn:
            CommitCell();
            CloseCellEditor();
            break;
        case kKeyLeft:
            CommitCell();
            CloseCellEditor();
            if (grdClass->Col() >= 2) grdClass->Col(grdClass->Col() - 1);
            KeyMoveUpdate();
            break;
        case kKeyUp:
            CommitCell();
            if (grdClass->Row() >= 3) {
                grdClass->Row(grdClass->Row() - 1);
            } else if (grdClass->Col() < 6) {
                grdClass->Col(grdClass->Col() + 1);
                grdClass->Row(last);
            }
            KeyMoveUpdate();
            break;
        case kKeyRight:
            CommitCell();
            CloseCellEditor();
            if (grdClass->Col() < kLastColumn) {
                grdClass->Col(grdClass->Col() + 1);
                KeyMoveUpdate();
            } else if (grdClass->Row() < last) {
                grdClass->Row(grdClass->Row() + 1);
                grdClass->Col(3);
                KeyMoveUpdate();
            }
            break;
        case kKeyDown:
            CommitCell();
            CloseCellEditor();
            if (grdClass->Row() < last) {
                grdClass->Row(grdClass->Row() + 1);
            } else if (grdClass->Col() >= 2) {
                grdClass->Row(1);
                grdClass->Col(grdClass->Col() - 1);
            }
            KeyMoveUpdate();
            break;
        default:
            break;
    }
}

// --- records

void frmZoneStep4Page::cmdAddRecord_Click() {
    grdClass->AddItem();
    grdClass->Row(grdClass->Rows() - 1);
    ColourOptionalFields(grdClass->Row());
    grdClass->Col(1);
    KeyMoveUpdate();
    grdClass->viewport()->update();
}

void frmZoneStep4Page::cmdDelRecord_Click() {
    // Always the last row: the selection plays no part.
    grdClass->RemoveItem(grdClass->Rows() - 1);
    const int last = grdClass->Rows() - 1;
    ColourOptionalFields(last);
    if (grdClass->Row() >= 3) {
        grdClass->Row(grdClass->Row() - 1);
        grdClass->Col(1);
    } else if (grdClass->Col() < kLastColumn) {
        grdClass->Row(last);
        grdClass->Col(1);
    } else {
        grdClass->Col(1);
    }
    KeyMoveUpdate();
    grdClass->viewport()->update();
}

// --- saving

void frmZoneStep4Page::cmdSave_Click() {
    auto dictionary = std::make_shared<classification::clsXMLPrjFile>();
    dictionary->PrjName = TextOf(g_s_ClassDictionary_Name);
    dictionary->PRJDescription = TextOf(g_s_ClassDictionary_Description);
    dictionary->Classifications = std::make_shared<classification::clsClassificationRecs>();
    for (int row = kFirstBodyRow; row <= grdClass->Rows() - 1; ++row) {
        auto record = std::make_shared<classification::clsClassificationRec>();
        if (grdClass->TextMatrix(row, 1).empty()) {
            ui::Services().MsgBox(
                "You have entered a record without an ID, please correct in order to continue.",
                ui::vbCritical);
            return;
        }
        // Rows are taken as they stand, so IDs run from 2 without a gap.
        record->ID = runtime::CInt(static_cast<double>(row));
        record->Class = runtime::CInt(grdClass->TextMatrix(row, 1));
        record->Zone = grdClass->TextMatrix(row, 2);
        int col = 3;
        for (const auto& field : classification::clsClassificationRec::kTextFields) {
            if (field.second == &classification::clsClassificationRec::Zone) continue;
            (*record).*field.second = grdClass->TextMatrix(row, col++);
        }
        dictionary->Classifications->Add(record);
    }
    // Through the XML text: a title or zone holding ".xml" makes that text
    // read as a file name, and the empty dictionary it leaves is what is saved.
    m_prjSaveFile = std::make_shared<classification::clsXMLPrjFile>();
    m_prjSaveFile->XML(dictionary->XML());

    dlgXML.FileName.clear();
    dlgXML.Filter = kFilter;
    dlgXML.DialogTitle = kDialogTitle;
    dlgXML.FilterIndex = 1;
    dlgXML.DefaultExt = ".xml";
    dlgXML.Flags = ui::cdlOFNOverwritePrompt + ui::cdlOFNHideReadOnly;
    // The proposal stands even when the dialog is dismissed.
    dlgXML.FileName = TextOf(txtFileName);
    dlgXML.ShowSave();
    if (!dlgXML.FileName.empty()) {
        m_prjSaveFile->SaveFile(dlgXML.FileName);
        g_s_ClassDictionary_Path = dlgXML.FileName;
        txt_Classification_Dictionary->setText(Text(dlgXML.FileName));
        // The program's folder goes in front of this full path, so nothing
        // loads: title and description go blank while the grid keeps its rows.
        LoadnewXMLFile(dlgXML.FileName);
    }
}

}  // namespace halvane::pages
