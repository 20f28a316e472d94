// The dictionary editor on the scripted desktop: the grid's columns and what
// the default dictionary puts where, the colours of the optional fields, the
// file dialogs it asks, and what its saves write.

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QTableWidget>
#include <filesystem>

#include "classification/clsXMLPrjFile.h"
#include "pages/frmZoneStep4.h"
#include "support/GridFiles.h"
#include "support/PageDesktop.h"

namespace halvane {
namespace {

using namespace pages;
namespace fs = std::filesystem;

// Pale yellow, as the grid shows it.
const QColor kOptional(0xFF, 0xFF, 0xC0);

class DictionaryEditorTest : public testing::PageDesktop {
protected:
    static QTableWidget& Grid() { return *Find<QTableWidget>(frmZoneStep4, "grdClass"); }

    static std::string Cell(int row, int col) {
        return Grid().item(row, col)->text().toStdString();
    }

    static classification::clsXMLPrjFile Read(const std::string& path) {
        classification::clsXMLPrjFile file;
        file.XML(path);
        return file;
    }

    // The ten fields of a record in the grid's column order, 1 to 10.
    static std::vector<std::string> Fields(const classification::clsClassificationRec& rec) {
        return {std::to_string(rec.Class), rec.Zone,
                rec.SSB_LowerBounds,       rec.SSB_UpperBounds,
                rec.LSB_LowerBounds,       rec.LSB_UpperBounds,
                rec.Slope_LowerBounds,     rec.Slope_UpperBounds,
                rec.Depth_LowerBounds,     rec.Depth_UpperBounds};
    }

    std::vector<ui::Event> Dialogs() const {
        std::vector<ui::Event> dialogs;
        for (const ui::Event& event : ui.Events()) {
            if (event.kind.rfind("file-", 0) == 0) dialogs.push_back(event);
        }
        return dialogs;
    }
};

TEST_F(DictionaryEditorTest, DefaultDictionaryFillsTheRowsItsIDsName) {
    g_b_StandAloneRun = true;
    frmZoneStep4.Show();
    QTableWidget& grid = Grid();

    // Twips at 15 a pixel, rounded: 400, 850, 2200, then 1200 eight times;
    // the columns of the bounds may grow for their headings.
    const int widths[] = {27, 57, 147, 80, 80, 80, 80, 80, 80, 80, 80};
    ASSERT_EQ(grid.columnCount(), 11);
    for (int col = 0; col < 3; ++col) EXPECT_EQ(grid.columnWidth(col), widths[col]) << col;
    for (int col = 3; col < 11; ++col) EXPECT_GE(grid.columnWidth(col), widths[col]) << col;
    // Each pair of columns from 1 on shares one heading.
    for (int col = 1; col < 11; col += 2) {
        EXPECT_EQ(grid.columnSpan(0, col), 2) << col;
        EXPECT_EQ(Cell(0, col), Cell(0, col + 1));
    }
    EXPECT_EQ(Cell(0, 3), "Broad Scale BPI Paramaters");
    EXPECT_EQ(Cell(1, 10), "Upper Bounds");

    const classification::clsXMLPrjFile reference = Read(classification::DefaultDictionaryPath());
    const auto& records = reference.Classifications->NewEnum();
    ASSERT_FALSE(records.empty());
    ASSERT_EQ(grid.rowCount(), static_cast<int>(records.size()) + 2);
    for (const auto& record : records) {
        const std::vector<std::string> fields = Fields(*record);
        for (int col = 1; col <= 10; ++col) {
            EXPECT_EQ(Cell(record->ID, col), fields[col - 1]) << record->ID << "," << col;
        }
    }
    EXPECT_EQ(Text(frmZoneStep4, "g_s_ClassDictionary_Name"), reference.PrjName);
    EXPECT_EQ(Text(frmZoneStep4, "g_s_ClassDictionary_Description"), reference.PRJDescription);
    EXPECT_EQ(Text(frmZoneStep4, "txt_Classification_Dictionary"),
              classification::DefaultDictionaryPath());
    EXPECT_EQ(g_s_ClassDictionary_Path, classification::DefaultDictionaryPath());
    EXPECT_EQ(ui.MousePointer(), ui::vbDefault);

    // Every body row the system made, and one added by the user, has its
    // optional fields coloured, and only those.
    Click(frmZoneStep4, "cmdAddRecord");
    ASSERT_EQ(grid.rowCount(), static_cast<int>(records.size()) + 3);
    for (int row = 2; row < grid.rowCount(); ++row) {
        for (int col = 1; col <= 10; ++col) {
            EXPECT_EQ(grid.item(row, col)->background().color() == kOptional, col >= 7)
                << row << "," << col;
        }
    }
}

TEST_F(DictionaryEditorTest, DialogsAskForAnExistingFileAndProposeTheFileName) {
    testing::TempDir folder;
    g_b_StandAloneRun = true;
    frmZoneStep4.Show();
    const std::string saved = folder / "mine.xml";

    ui.ChooseFile("");
    Click(frmZoneStep4, "cmd_ClassDictionary_Browse");
    Type(frmZoneStep4, "txtFileName", "proposal.xml");
    Type(frmZoneStep4, "g_s_ClassDictionary_Name", "Mine");
    ui.ChooseFile(saved);
    Click(frmZoneStep4, "cmdSave");

    // 4100: the file must exist, no read-only box; 6: ask before
    // overwriting, no read-only box.
    const std::vector<ui::Event> expected = {
        {"file-open", "", "<name> File to Import", 4100},
        {"file-save", "proposal.xml", "<name> File to Import", 6},
    };
    EXPECT_EQ(Dialogs(), expected);
    EXPECT_EQ(frmZoneStep4->dlgXML.DefaultExt, ".xml");

    // The file holds the grid's rows as they stand, IDs from 2.
    const classification::clsXMLPrjFile file = Read(saved);
    EXPECT_EQ(file.PrjName, "Mine");
    const auto& records = file.Classifications->NewEnum();
    ASSERT_EQ(static_cast<int>(records.size()), Grid().rowCount() - 2);
    for (std::size_t i = 0; i < records.size(); ++i) {
        const int row = static_cast<int>(i) + 2;
        EXPECT_EQ(records[i]->ID, row);
        const std::vector<std::string> fields = Fields(*records[i]);
        for (int col = 1; col <= 10; ++col) EXPECT_EQ(fields[col - 1], Cell(row, col)) << row;
    }
    EXPECT_EQ(g_s_ClassDictionary_Path, saved);
    EXPECT_EQ(Text(frmZoneStep4, "g_s_ClassDictionary_Name"), "");
}

TEST_F(DictionaryEditorTest, DismissedSaveDialogSavesUnderTheBareProposal) {
    testing::TempDir folder;
    const fs::path before = fs::current_path();
    fs::current_path(folder.Path());
    g_b_StandAloneRun = true;
    frmZoneStep4.Show();
    Type(frmZoneStep4, "txtFileName", "bare.xml");
    ui.ChooseFile("");
    Click(frmZoneStep4, "cmdSave");
    fs::current_path(before);

    EXPECT_EQ(g_s_ClassDictionary_Path, "bare.xml");
    const classification::clsXMLPrjFile file = Read(folder / "bare.xml");
    EXPECT_EQ(file.Classifications->Count(), Grid().rowCount() - 2);
}

// Title and zones are written through the dictionary's XML text, which is
// read as a file name once it holds ".xml": the file gets no title and no
// records, whatever the grid held.
TEST_F(DictionaryEditorTest, ZoneHoldingDotXmlSavesAnEmptyDictionary) {
    testing::TempDir folder;
    g_b_StandAloneRun = true;
    frmZoneStep4.Show();
    ASSERT_GT(Grid().rowCount(), 2);
    Grid().item(2, 2)->setText(QStringLiteral("see notes.xml"));
    ui.ChooseFile(folder / "zones.xml");
    Click(frmZoneStep4, "cmdSave");

    const classification::clsXMLPrjFile file = Read(folder / "zones.xml");
    EXPECT_EQ(file.Classifications->Count(), 0);
    EXPECT_EQ(file.PrjName, "");
    EXPECT_TRUE(Reports().empty());
}

}  // namespace
}  // namespace halvane
