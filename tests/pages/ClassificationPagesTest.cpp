// The classification pages on grids and dictionaries of the test's own: the
// entry page's dialogs and what each stores, the list of classes and when it
// is read, and the output name between the pages.

#include <gtest/gtest.h>

#include <QFont>
#include <QTableWidget>
#include <fstream>
#include <iterator>

#include "classification/clsXMLPrjFile.h"
#include "pages/frmZoneStep8.h"
#include "platform/raster/Storage.h"
#include "support/GridFiles.h"
#include "support/PageDesktop.h"

namespace halvane {
namespace {

using namespace pages;
using Rows = std::vector<std::vector<std::string>>;

struct Class {
    int number;
    std::string zone;
};

// A dictionary file with one broad-scale bound per class.
void WriteDictionary(const std::string& path, const std::vector<Class>& classes) {
    std::ofstream file(path);
    file << "<ClassDict>\n\t<PrjName>test</PrjName>\n\t<PRJDescription></PRJDescription>\n"
            "\t<Classifications>\n";
    int id = 2;
    for (const Class& c : classes) {
        file << "\t\t<ClassRec ID=\"" << id++ << "\">\n\t\t\t<Class>" << c.number
             << "</Class>\n\t\t\t<Zone>" << c.zone << "</Zone>\n\t\t\t<SSB_LowerBounds>"
             << c.number * 10 << "</SSB_LowerBounds>\n";
        for (const char* bound :
             {"SSB_UpperBounds", "LSB_LowerBounds", "LSB_UpperBounds", "Slope_LowerBounds",
              "Slope_UpperBounds", "Depth_LowerBounds", "Depth_UpperBounds"}) {
            file << "\t\t\t<" << bound << "></" << bound << ">\n";
        }
        file << "\t\t</ClassRec>\n";
    }
    file << "\t</Classifications>\n</ClassDict>\n";
}

class ClassificationPagesTest : public testing::PageDesktop {
protected:
    static QTableWidget& Grid(PageSlot& page) { return *Find<QTableWidget>(page, "GridList"); }

    static Rows Cells(PageSlot& page) {
        QTableWidget& grid = Grid(page);
        Rows rows(static_cast<std::size_t>(grid.rowCount()));
        for (int row = 0; row < grid.rowCount(); ++row) {
            for (int col = 0; col < grid.columnCount(); ++col) {
                const QTableWidgetItem* item = grid.item(row, col);
                rows[row].push_back(item ? item->text().toStdString() : std::string());
            }
        }
        return rows;
    }

    std::vector<ui::Event> EventsOf(const std::string& kind) const {
        std::vector<ui::Event> found;
        for (const ui::Event& event : ui.Events()) {
            if (event.kind == kind) found.push_back(event);
        }
        return found;
    }

    testing::TempDir folder_;
};

TEST_F(ClassificationPagesTest, TheEntryPageBrowsesEachGridUnderItsCrosswiseTitle) {
    const raster::Grid grid{500000, 6000000, 10, 10, 5, 4};
    for (const char* name : {"dem.tif", "finestd.tif", "broadstd.tif"}) {
        testing::WriteGrid(folder_ / name, grid, std::vector<double>(20, -12.0));
    }
    g_b_StandAloneRun = true;
    frmZoneStep8_reqdata.Show();
    ui.Select({folder_.Path().string()});
    Click(frmZoneStep8_reqdata, "cmdOpenWS");
    ui.Select({folder_ / "dem.tif"});
    Click(frmZoneStep8_reqdata, "cmdInputBrowse");
    ui.Select({folder_ / "finestd.tif"});
    Click(frmZoneStep8_reqdata, "cmdInputLSBPISTD");
    ui.Select({folder_ / "broadstd.tif"});
    Click(frmZoneStep8_reqdata, "cmdInputSSBPISTD");

    std::vector<std::string> titles;
    for (const ui::Event& event : EventsOf("browse")) titles.push_back(event.title);
    EXPECT_EQ(titles, (std::vector<std::string>{
                          "Select the working directory:", "Input Bathymetric Data Set",
                          "Broad scale standardized BPI Data Set",
                          "Fine scale standardized BPI Data Set"}));
    // The box under the fine scale's caption feeds the fine scale, whatever
    // its dialog was titled.
    EXPECT_EQ(Text(frmZoneStep8_reqdata, "g_lbpi_std"), folder_ / "finestd.tif");
    EXPECT_EQ(g_s_Save_LgScale_Std_Grid, "finestd.tif");
    EXPECT_EQ(g_s_LgScale_Std_GridPath, folder_.Path().string());
    ASSERT_NE(g_p_LgScale_Std_RasterDataset, nullptr);
    EXPECT_EQ(g_p_LgScale_Std_RasterDataset->Path(), folder_ / "finestd.tif");
    EXPECT_EQ(Text(frmZoneStep8_reqdata, "g_sbpi_std"), folder_ / "broadstd.tif");
    EXPECT_EQ(g_s_Save_SmScale_Std_Grid, "broadstd.tif");
    ASSERT_NE(g_p_SmScale_Std_RasterDataset, nullptr);
    EXPECT_EQ(g_p_SmScale_Std_RasterDataset->Path(), folder_ / "broadstd.tif");
    // The bathymetry is the grid of the run; the wizard's input stays unset.
    EXPECT_EQ(g_s_WorkingDir, folder_.Path().string());
    EXPECT_EQ(g_s_InputDataSet, "dem.tif");
    EXPECT_EQ(g_s_BPI_DataSet, "dem.tif");
    EXPECT_EQ(g_s_BPI_DataPath, folder_.Path().string());
    ASSERT_NE(g_p_BPI_RasterDataset, nullptr);
    EXPECT_EQ(g_p_BPI_RasterDataset->Path(), folder_ / "dem.tif");
    EXPECT_EQ(g_p_InputRasterDataset, nullptr);
    EXPECT_TRUE(ui.Messages().empty());
}

TEST_F(ClassificationPagesTest, TheDictionaryDialogFillsTheListAndACancelKeepsTheLastPick) {
    const std::string three = folder_ / "three.xml";
    const std::string two = folder_ / "two.xml";
    WriteDictionary(three, {{1, "Basin"}, {2, "Plain"}, {12, "Ridge"}});
    WriteDictionary(two, {{4, "Gully"}, {5, "Spur"}});
    g_b_StandAloneRun = true;
    frmZoneStep8_reqdata.Show();
    EXPECT_EQ(frmZoneStep8_reqdata->m_iClassCount, 0);

    ui.ChooseFile(three);
    Click(frmZoneStep8_reqdata, "cmd_ClassDictionary_Browse");
    EXPECT_EQ(Cells(frmZoneStep8_reqdata),
              (Rows{{"Class", "Description"}, {"1", "Basin"}, {"2", "Plain"}, {"12", "Ridge"}}));
    EXPECT_EQ(frmZoneStep8_reqdata->m_iClassCount, 3);
    EXPECT_EQ(frmZoneStep8_reqdata->m_sDictPath, three);

    ui.ChooseFile("");  // Cancel
    Click(frmZoneStep8_reqdata, "cmd_ClassDictionary_Browse");
    EXPECT_EQ(Text(frmZoneStep8_reqdata, "txt_Classification_Dictionary"), three);
    EXPECT_EQ(g_s_ClassDictionary_Path, three);

    // Fewer records: the grid shrinks to them.
    ui.ChooseFile(two);
    Click(frmZoneStep8_reqdata, "cmd_ClassDictionary_Browse");
    EXPECT_EQ(Cells(frmZoneStep8_reqdata),
              (Rows{{"Class", "Description"}, {"4", "Gully"}, {"5", "Spur"}}));
    EXPECT_EQ(g_s_ClassDictionary_Path, two);

    // Each dialog opened with the name the last one left.
    const std::vector<ui::Event> dialogs = EventsOf("file-open");
    ASSERT_EQ(dialogs.size(), 3u);
    const std::string before[] = {"", three, three};
    for (std::size_t i = 0; i < dialogs.size(); ++i) {
        EXPECT_EQ(dialogs[i].title, "<name> File to Import");
        EXPECT_EQ(dialogs[i].flags, 4100);
        EXPECT_EQ(dialogs[i].text, before[i]);
    }
    EXPECT_EQ(frmZoneStep8_reqdata->dlgXML.Filter, "XML File(*.xml)|*.xml");
    EXPECT_EQ(frmZoneStep8_reqdata->dlgXML.FilterIndex, 1);

    // The list's own layout: 600 and 4000 twips, centred headers, the second
    // one bold, and the header of the second column current.
    QTableWidget& grid = Grid(frmZoneStep8_reqdata);
    EXPECT_EQ(grid.columnWidth(0), 40);
    EXPECT_EQ(grid.columnWidth(1), 267);
    for (int col : {0, 1}) {
        EXPECT_EQ(grid.item(0, col)->textAlignment() & Qt::AlignHorizontal_Mask, Qt::AlignHCenter);
    }
    EXPECT_FALSE(grid.item(0, 0)->font().bold());
    EXPECT_TRUE(grid.item(0, 1)->font().bold());
    EXPECT_FALSE(grid.item(1, 1)->font().bold());
    EXPECT_EQ(grid.currentRow(), 0);
    EXPECT_EQ(grid.currentColumn(), 1);
    EXPECT_EQ(grid.editTriggers(), QAbstractItemView::NoEditTriggers);
}

TEST_F(ClassificationPagesTest, EachPageReadsTheDictionaryFileAgainWhenItLoads) {
    const std::string path = folder_ / "dictionary.xml";
    WriteDictionary(path, {{1, "Basin"}, {2, "Plain"}, {3, "Ridge"}});
    g_b_StandAloneRun = true;
    g_s_ClassDictionary_Path = "  " + path + " ";  // blanks around it are trimmed
    frmZoneStep8_reqdata.Show();
    EXPECT_EQ(Cells(frmZoneStep8_reqdata).size(), 4u);
    EXPECT_EQ(frmZoneStep8_reqdata->m_sDictPath, path);

    // Changed on disk behind the entry page's back.
    WriteDictionary(path, {{6, "Shelf"}, {7, "Canyon"}});
    for (const char* box : {"g_s_WorkingDir", "g_s_InputDataSet", "g_sbpi_std", "g_lbpi_std",
                            "txt_Classification_Dictionary"}) {
        Type(frmZoneStep8_reqdata, box, "typed");
    }
    Click(frmZoneStep8_reqdata, "cmdNext");
    ASSERT_EQ(ShownPages(), std::vector<std::string>{"frmZoneStep8"});
    EXPECT_EQ(Cells(frmZoneStep8),
              (Rows{{"Class", "Description"}, {"6", "Shelf"}, {"7", "Canyon"}}));
    EXPECT_EQ(frmZoneStep8->m_iClassCount, 2);
    // The first 10 and the last 15 characters of the session's path, as it stands.
    const std::string& full = g_s_ClassDictionary_Path;
    EXPECT_EQ(Text(frmZoneStep8, "lblClassDictDisp"),
              full.substr(0, 10) + "..." + full.substr(full.size() - 15));
    EXPECT_EQ(Cells(frmZoneStep8_reqdata).size(), 4u);  // hidden, not reloaded

    WriteDictionary(path, {{9, "Seamount"}});
    frmZoneStep8.Hide();
    frmZoneStep8_comp.Show();
    EXPECT_EQ(Cells(frmZoneStep8_comp), (Rows{{"Class", "Description"}, {"9", "Seamount"}}));
    EXPECT_EQ(Text(frmZoneStep8_comp, "g_s_OutputDataSet"), "/ZONES");  // no working directory
}

TEST_F(ClassificationPagesTest, TheShortenedDictionaryPathRepeatsAShortOne) {
    EXPECT_EQ(ShortenedDictionaryPath("/data/dictionaries/seafloor.xml").toStdString(),
              "/data/dict...es/seafloor.xml");
    EXPECT_EQ(ShortenedDictionaryPath("a.xml").toStdString(), "a.xml...a.xml");
    EXPECT_EQ(ShortenedDictionaryPath("").toStdString(), "...");
}

TEST_F(ClassificationPagesTest, TheFinalPageTakesTheNameTheSessionKeptAcrossBack) {
    frmZoneStep4.Show();
    Click(frmZoneStep4, "cmdNext");
    EXPECT_EQ(Text(frmZoneStep8, "g_s_OutputDataSet"), "ZONES");
    EXPECT_EQ(g_s_OutputDataSet, "ZONES");
    Type(frmZoneStep8, "g_s_OutputDataSet", "reef_terraces");
    EXPECT_EQ(g_s_OutputDataSet, "reef_terrac");  // typing stops at 11

    Click(frmZoneStep8, "cmdBack");
    FlushUnloads();
    Click(frmZoneStep4, "cmdNext");
    EXPECT_EQ(Text(frmZoneStep8, "g_s_OutputDataSet"), "reef_terrac");
    // The editor put its default dictionary into the session; the fresh page
    // lists it again, under the heading row.
    const std::string dictionary = classification::DefaultDictionaryPath();
    EXPECT_EQ(g_s_ClassDictionary_Path, dictionary);
    std::ifstream file(dictionary);
    const std::string xml{std::istreambuf_iterator<char>(file), {}};
    std::size_t records = 0;
    for (std::size_t at = xml.find("<Zone>"); at != std::string::npos; at = xml.find("<Zone>", at + 1)) {
        ++records;
    }
    ASSERT_GT(records, 1u);
    EXPECT_EQ(Cells(frmZoneStep8).size(), records + 1);
    EXPECT_EQ(Text(frmZoneStep8, "lblClassDictDisp"),
              dictionary.substr(0, 10) + "..." + dictionary.substr(dictionary.size() - 15));
    EXPECT_TRUE(ui.Messages().empty());
}

}  // namespace
}  // namespace halvane
