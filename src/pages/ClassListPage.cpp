#include "pages/ClassListPage.h"

#include <QBoxLayout>
#include <QFont>
#include <QFontMetrics>
#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <cmath>

#include "engine/Session.h"
#include "platform/runtime/Convert.h"
#include "platform/runtime/Text.h"

namespace halvane::pages {
namespace {

// The design-time layout and the one refreshGrid gives, in twips.
constexpr int kDesignClassWidth = 500;
constexpr int kDesignZoneWidth = 850;
constexpr int kClassWidth = 600;
constexpr int kZoneWidth = 4000;
// A flexible grid is made with one header row and one body row.
constexpr int kDesignRows = 2;

QTableWidgetItem& CellAt(QTableWidget& grid, int row, int col) {
    QTableWidgetItem* item = grid.item(row, col);
    if (!item) {
        item = new QTableWidgetItem;
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        grid.setItem(row, col, item);
    }
    return *item;
}

void SetBold(QTableWidgetItem& cell, bool bold) {
    QFont font = cell.font();
    font.setBold(bold);
    cell.setFont(font);
}

// The header row looks like one, though it is a row of the grid's own.
void SetHeaderCell(QTableWidget& grid, int col, const char* text, Qt::Alignment alignment) {
    QTableWidgetItem& cell = CellAt(grid, 0, col);
    cell.setText(QString::fromLatin1(text));
    cell.setTextAlignment(static_cast<int>(alignment | Qt::AlignVCenter));
    cell.setBackground(grid.palette().button());
}

}  // namespace

int TwipsToPixels(int twips) { return static_cast<int>(std::lround(twips / 15.0)); }

ClassListPage::ClassListPage(PageSlot& slot, const char* module) : Page(slot, module) {}

QBoxLayout* ClassListPage::NewClassList() {
    auto* column = new QVBoxLayout;
    Label27 = NewLabel("Label27", QStringLiteral("Final Classification Schema"), column);
    QFont bold = Label27->font();
    bold.setBold(true);
    Label27->setFont(bold);
    GridList = new QTableWidget(kDesignRows, 2, this);
    GridList->setObjectName(QStringLiteral("GridList"));
    GridList->horizontalHeader()->hide();
    GridList->verticalHeader()->hide();
    GridList->setEditTriggers(QAbstractItemView::NoEditTriggers);
    GridList->setSelectionMode(QAbstractItemView::SingleSelection);
    GridList->setWordWrap(false);
    GridList->setTextElideMode(Qt::ElideNone);
    // The small type of a classic grid, in which "Class" fits its 600 twips,
    // and rows as close, so that a dozen classes show at once.
    QFont small = GridList->font();
    small.setPointSizeF(small.pointSizeF() - 1);
    GridList->setFont(small);
    const int rowHeight = QFontMetrics(small).height() + 6;
    GridList->verticalHeader()->setMinimumSectionSize(rowHeight);
    GridList->verticalHeader()->setDefaultSectionSize(rowHeight);
    GridList->setMinimumSize(TwipsToPixels(kClassWidth + kZoneWidth) + 24, 13 * rowHeight + 8);
    column->addWidget(GridList, 1);
    return column;
}

void ClassListPage::DesignGridLayout() {
    GridList->setColumnWidth(0, TwipsToPixels(kDesignClassWidth));
    GridList->setColumnWidth(1, TwipsToPixels(kDesignZoneWidth));
    SetHeaderCell(*GridList, 0, "Class", Qt::AlignHCenter);
    SetHeaderCell(*GridList, 1, "Description", Qt::AlignLeft);
}

void ClassListPage::refreshGrid() {
    Guarded({"refreshGrid", module_, kPassOn}, [&] {
        GridList->setColumnWidth(0, TwipsToPixels(kClassWidth));
        GridList->setColumnWidth(1, TwipsToPixels(kZoneWidth));
        SetHeaderCell(*GridList, 0, "Class", Qt::AlignHCenter);
        SetHeaderCell(*GridList, 1, "Description", Qt::AlignHCenter);
        SetBold(CellAt(*GridList, 0, 1), true);
    });
}

void ClassListPage::FillForm() {
    Guarded({"FillForm", module_, kPassOn}, [&] {
        ui::Services().SetMousePointer(ui::vbHourglass);
        refreshGrid();
        const classification::clsClassificationRecs& records =
            runtime::Deref(runtime::Deref(m_prjFile).Classifications);
        m_iClassCount = runtime::CInt(static_cast<double>(records.Count()));
        // Without records the grid keeps the rows, and texts, it had.
        if (m_iClassCount > 0) {
            GridList->setRowCount(m_iClassCount + 1);
            for (std::int16_t i = 1; i <= m_iClassCount; ++i) {
                const classification::clsClassificationRec& record =
                    runtime::Deref(records.Item(i));
                QTableWidgetItem& number = CellAt(*GridList, i, 0);
                number.setText(QString::number(record.Class));
                SetBold(number, false);
                QTableWidgetItem& zone = CellAt(*GridList, i, 1);
                zone.setText(QString::fromStdString(record.Zone));
                SetBold(zone, false);
            }
        }
        GridList->setCurrentCell(0, 0);
        GridList->setCurrentCell(0, 1);
        ui::Services().SetMousePointer(ui::vbDefault);
    });
}

void ClassListPage::LoadXMLFile() {
    Guarded({"LoadXMLFile", module_, kPassOn}, [&] {
        // The file name of an earlier pick stays: a cancelled dialog leaves it.
        dlgXML.InitDir.clear();
        dlgXML.Filter = "XML File(*.xml)|*.xml";
        dlgXML.DialogTitle = "<name> File to Import";
        dlgXML.FilterIndex = 1;
        dlgXML.Flags = ui::cdlOFNHideReadOnly | ui::cdlOFNFileMustExist;
        dlgXML.ShowOpen();
        if (!dlgXML.FileName.empty()) {
            m_sDictPath = runtime::Trim(dlgXML.FileName);
            runtime::Deref(m_prjFile).XML(m_sDictPath);
            FillForm();
        }
    });
}

void ClassListPage::NewDictionary() {
    m_prjFile = std::make_shared<classification::clsXMLPrjFile>();
}

void ClassListPage::LoadSessionDictionary() {
    // An empty path, or one that does not load, lists nothing and says nothing.
    m_sDictPath = runtime::Trim(g_s_ClassDictionary_Path);
    runtime::Deref(m_prjFile).XML(m_sDictPath);
    FillForm();
}

}  // namespace halvane::pages
