#include "pages/DictionaryGrid.h"

#include <QFontMetrics>
#include <QHeaderView>
#include <algorithm>
#include <cmath>

#include "platform/runtime/Failure.h"

namespace halvane::pages {
namespace {

constexpr const char* kSource = "DictionaryGrid";
constexpr double kTwipsPerPixel = 15.0;

[[noreturn]] void Fail(std::int32_t number, const char* description) {
    throw runtime::Failure(number, kSource, description);
}

}  // namespace

QColor ColorOfBgr(std::uint32_t bgr) {
    return QColor(static_cast<int>(bgr & 0xFF), static_cast<int>((bgr >> 8) & 0xFF),
                  static_cast<int>((bgr >> 16) & 0xFF));
}

DictionaryGrid::DictionaryGrid(QWidget* parent, int cols, int rows, int fixedRows, int fixedCols)
    : QTableWidget(parent), fixedRows_(fixedRows), fixedCols_(fixedCols) {
    // The headings are cells of the table itself, not the view's headers.
    horizontalHeader()->hide();
    horizontalHeader()->setMinimumSectionSize(1);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectItems);
    setTabKeyNavigation(false);
    setWordWrap(false);
    setColumnCount(cols);
    Rows(rows);
    MoveTo(fixedRows_, fixedCols_);
}

void DictionaryGrid::MoveTo(int row, int col) {
    // Straight to the selection model: the view itself refuses to make a
    // heading, which the user cannot pick, the current cell.
    selectionModel()->setCurrentIndex(model()->index(row, col),
                                      QItemSelectionModel::ClearAndSelect);
}

void DictionaryGrid::Rows(int rows) {
    if (rows <= fixedRows_) Fail(kInvalidRow, "Invalid Row value");
    const int before = rowCount();
    setRowCount(rows);
    MakeCells(before);
}

void DictionaryGrid::MakeCells(int fromRow) {
    for (int row = fromRow; row < rowCount(); ++row) {
        for (int col = 0; col < columnCount(); ++col) {
            auto* item = new QTableWidgetItem;
            if (IsFixed(row, col)) {
                StyleFixed(*item);
            } else {
                item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
            }
            setItem(row, col, item);
        }
    }
}

void DictionaryGrid::StyleFixed(QTableWidgetItem& item) const {
    // A heading is not a cell the user can pick; code still moves onto it.
    item.setFlags(Qt::NoItemFlags);
    item.setBackground(palette().button());
    item.setForeground(palette().buttonText());
    item.setTextAlignment(Qt::AlignCenter);
}

QTableWidgetItem& DictionaryGrid::Cell(int row, int col) const {
    if (row < 0 || row >= rowCount()) Fail(kInvalidRow, "Invalid Row value");
    if (col < 0 || col >= columnCount()) Fail(kInvalidCol, "Invalid Col value");
    return *item(row, col);
}

int DictionaryGrid::Row() const { return currentRow(); }

void DictionaryGrid::Row(int row) {
    if (row < 0 || row >= rowCount()) Fail(kInvalidRow, "Invalid Row value");
    MoveTo(row, std::max(0, currentColumn()));
}

int DictionaryGrid::Col() const { return currentColumn(); }

void DictionaryGrid::Col(int col) {
    if (col < 0 || col >= columnCount()) Fail(kInvalidCol, "Invalid Col value");
    MoveTo(std::max(0, currentRow()), col);
}

std::string DictionaryGrid::Text() const { return TextMatrix(Row(), Col()); }

void DictionaryGrid::Text(const std::string& text) { TextMatrix(Row(), Col(), text); }

void DictionaryGrid::CellBackColor(std::uint32_t bgr) {
    Cell(Row(), Col()).setBackground(ColorOfBgr(bgr));
}

std::string DictionaryGrid::TextMatrix(int row, int col) const {
    return Cell(row, col).text().toStdString();
}

void DictionaryGrid::TextMatrix(int row, int col, const std::string& text) {
    Cell(row, col).setText(QString::fromStdString(text));
}

void DictionaryGrid::ColWidth(int col, int twips) {
    if (col < 0 || col >= columnCount()) Fail(kInvalidCol, "Invalid Col value");
    setColumnWidth(col, static_cast<int>(std::lround(twips / kTwipsPerPixel)));
}

void DictionaryGrid::MergeRow0() {
    for (int col = 0; col < columnCount();) {
        int end = col + 1;
        const QString text = item(0, col)->text();
        while (end < columnCount() && !text.isEmpty() && item(0, end)->text() == text) ++end;
        if (end - col > 1 || columnSpan(0, col) > 1) setSpan(0, col, 1, end - col);
        col = end;
    }
}

void DictionaryGrid::FitHeadings() {
    // The widths were chosen for a smaller font than most desktops use: a
    // column grows, never shrinks, until its headings read in full.
    constexpr int kPadding = 8;
    const QFontMetrics metrics(font());
    const auto needs = [&](int row, int col) {
        return metrics.horizontalAdvance(item(row, col)->text()) + kPadding;
    };
    for (int row = 0; row < fixedRows_; ++row) {
        for (int col = 0; col < columnCount(); col += std::max(1, columnSpan(row, col))) {
            const int span = std::max(1, columnSpan(row, col));
            int width = 0;
            for (int i = 0; i < span; ++i) width += columnWidth(col + i);
            const int missing = needs(row, col) - width;
            if (missing <= 0) continue;
            for (int i = 0; i < span; ++i) {
                setColumnWidth(col + i, columnWidth(col + i) + (missing + span - 1) / span);
            }
        }
    }
}

void DictionaryGrid::AddItem() { Rows(rowCount() + 1); }

void DictionaryGrid::RemoveItem(int row) {
    if (row < 0 || row >= rowCount()) Fail(kInvalidRow, "Invalid Row value");
    if (rowCount() <= fixedRows_ + 1) {
        Fail(kLastBodyRow, "Cannot remove last non-fixed row");
    }
    removeRow(row);
}

QRect DictionaryGrid::CellRect(QWidget& widget) const {
    const QRect cell = visualRect(currentIndex());
    return QRect(viewport()->mapTo(&widget, cell.topLeft()), cell.size());
}

}  // namespace halvane::pages
