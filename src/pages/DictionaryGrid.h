#pragma once
// The spreadsheet grid of the dictionary pages. Its fixed rows and column are
// ordinary rows and a column of the table, styled as headings, so that row
// numbers in code are the grid's own (the first body row is 2 under two
// heading rows) and code may move the current cell onto a heading and write
// there. The current cell is the table's current index; a row or column
// outside the grid, and removing the last body row, fail as the grid does.

#include <QColor>
#include <QTableWidget>
#include <cstdint>
#include <string>

namespace halvane::pages {

// Colours are kept as the grid takes them: 0x00BBGGRR.
QColor ColorOfBgr(std::uint32_t bgr);

class DictionaryGrid : public QTableWidget {
public:
    // Failure numbers of the grid itself.
    static constexpr std::int32_t kInvalidRow = 30009;
    static constexpr std::int32_t kInvalidCol = 30010;
    static constexpr std::int32_t kLastBodyRow = 30015;

    DictionaryGrid(QWidget* parent, int cols, int rows, int fixedRows, int fixedCols);

    int Rows() const { return rowCount(); }
    // New rows come empty and white but for their fixed cells; rows beyond
    // the new count go with their texts. Never fewer than the fixed rows + 1.
    void Rows(int rows);
    int Cols() const { return columnCount(); }
    int FixedRows() const { return fixedRows_; }
    int FixedCols() const { return fixedCols_; }

    int Row() const;
    void Row(int row);
    int Col() const;
    void Col(int col);

    // The current cell's text and back colour.
    std::string Text() const;
    void Text(const std::string& text);
    void CellBackColor(std::uint32_t bgr);

    std::string TextMatrix(int row, int col) const;
    void TextMatrix(int row, int col, const std::string& text);

    // Width of a column in twips, at 15 twips a pixel.
    void ColWidth(int col, int twips);
    // Row 0 shows equal neighbouring texts as one cell.
    void MergeRow0();
    // Widens columns whose fixed rows' texts would not show in full.
    void FitHeadings();
    // Adds an empty row at the end.
    void AddItem();
    // Removes a row; the last body row stays.
    void RemoveItem(int row);

    // Where the current cell lies, in `widget`'s coordinates.
    QRect CellRect(QWidget& widget) const;

private:
    void MoveTo(int row, int col);
    void MakeCells(int fromRow);
    void StyleFixed(QTableWidgetItem& item) const;
    bool IsFixed(int row, int col) const { return row < fixedRows_ || col < fixedCols_; }
    QTableWidgetItem& Cell(int row, int col) const;

    int fixedRows_;
    int fixedCols_;
};

}  // namespace halvane::pages
