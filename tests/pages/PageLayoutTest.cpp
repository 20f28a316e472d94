// The pages as a person sees them: every page opens on its real controls,
// laid out as a desktop dialog is (labels beside their boxes, browse buttons
// beside the paths, the buttons at the bottom right, nothing cut off), and
// each is photographed into screenshots/ of the build tree.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QAbstractItemView>
#include <QTableWidget>
#include <QToolButton>

#include "classification/clsXMLPrjFile.h"
#include "support/GridFiles.h"
#include "support/PageDesktop.h"
#include "support/Screenshot.h"

namespace halvane {
namespace {

using namespace pages;

// Geometry in the page's own coordinates.
QRect Frame(PageSlot& page, const char* control) {
    QWidget* widget = page.Get().findChild<QWidget*>(QString::fromLatin1(control));
    if (!widget) {
        ADD_FAILURE() << page.Name() << " has no " << control;
        return {};
    }
    return QRect(widget->mapTo(&page.Get(), QPoint(0, 0)), widget->size());
}

bool SameRow(const QRect& a, const QRect& b) {
    return a.top() < b.bottom() && b.top() < a.bottom();
}

class PageLayoutTest : public testing::PageDesktop {
protected:
    // `left` stands before `right` on one row.
    static void ExpectBeside(PageSlot& page, const char* left, const char* right) {
        const QRect a = Frame(page, left), b = Frame(page, right);
        EXPECT_TRUE(SameRow(a, b)) << left << " and " << right << " on " << page.Name();
        EXPECT_LE(a.right(), b.left()) << left << " before " << right << " on " << page.Name();
    }

    // Each control stands wholly below the one before it.
    static void ExpectColumn(PageSlot& page, std::initializer_list<const char*> topToBottom) {
        const char* above = nullptr;
        for (const char* control : topToBottom) {
            if (above) {
                EXPECT_LE(Frame(page, above).bottom(), Frame(page, control).top())
                    << above << " above " << control << " on " << page.Name();
            }
            above = control;
        }
    }

    // The buttons stand in this order on one row, the last in the page's
    // bottom right corner, and the whole page is a dialog as above.
    static void ExpectButtonRow(PageSlot& page, std::initializer_list<const char*> leftToRight) {
        const char* before = nullptr;
        for (const char* button : leftToRight) {
            if (before) ExpectBeside(page, before, button);
            before = button;
        }
        ExpectWholeDialog(page, before);
    }

    // Everything on the page lies inside it, and no single-line label is
    // cut short; the last button of the row sits in the bottom right corner.
    static void ExpectWholeDialog(PageSlot& page, const char* lastButton) {
        QWidget& window = page.Get();
        const QRect inside = window.rect();
        for (QWidget* child : window.findChildren<QWidget*>()) {
            if (!child->isVisibleTo(&window) || child->objectName().isEmpty()) continue;
            const QRect frame(child->mapTo(&window, QPoint(0, 0)), child->size());
            EXPECT_TRUE(inside.contains(frame)) << child->objectName().toStdString();
            auto* label = qobject_cast<QLabel*>(child);
            if (label && !label->wordWrap() && !label->text().isEmpty()) {
                EXPECT_GE(label->width(), label->sizeHint().width())
                    << label->objectName().toStdString() << " is cut short";
            }
        }
        const QRect last = Frame(page, lastButton);
        EXPECT_LT(inside.right() - last.right(), 24) << page.Name();
        EXPECT_LT(inside.bottom() - last.bottom(), 24) << page.Name();
    }

    // The wizard started on a grid of 2.5 m cells in `folder`, its welcome page gone.
    static void WizardOnAnInputGrid(const testing::TempDir& folder) {
        testing::WriteGrid(folder / "multibeam.tif", {500000, 6000000, 2.5, 2.5, 8, 6},
                           std::vector<double>(48, -20.0));
        g_s_InputDataSet = "multibeam.tif";
        g_s_InputDataPath = folder.Path().string();
        StartWizard();
        frmIntro.Hide();
    }

    static void Photograph(PageSlot& page) {
        QWidget& window = page.Get();
        testing::SaveScreenshot(
            testing::WithTitleBar(window.grab().toImage(), window.windowTitle()), page.Name());
    }
};

TEST_F(PageLayoutTest, SetupPage) {
    StartWizard();
    Click(frmIntro, "cmdNext");
    Type(frmZoneSetup_inputdata, "g_s_WorkingDir", "/data/survey/work");
    Type(frmZoneSetup_inputdata, "g_s_InputDataSet", "/data/survey/multibeam.tif");
    EXPECT_EQ(Text(frmZoneSetup_inputdata, "lblHeading"), "Halvane Classification Setup");
    EXPECT_EQ(Text(frmZoneSetup_inputdata, "lblSubHeading"), "Input Data");
    EXPECT_EQ(Text(frmZoneSetup_inputdata, "Label6"), "Fine Scale:  ");
    for (auto [box, browse] : {std::pair{"g_s_WorkingDir", "cmdOpenWS"},
                               {"g_s_InputDataSet", "cmdInputBrowse"},
                               {"g_s_LargeScaleBPI", "cmdInputLrgScaleBPIBrowse"},
                               {"g_s_SmallScaleBPI", "cmdInputSmlScaleBPIBrowse"},
                               {"txtInputDataSet2", "cmdInputDSBrowse"}}) {
        ExpectBeside(frmZoneSetup_inputdata, box, browse);
    }
    ExpectBeside(frmZoneSetup_inputdata, "Label6", "g_s_LargeScaleBPI");
    ExpectBeside(frmZoneSetup_inputdata, "Label7", "g_s_SmallScaleBPI");
    ExpectBeside(frmZoneSetup_inputdata, "Label9", "txtInputDataSet2");
    ExpectBeside(frmZoneSetup_inputdata, "InputOption(1)", "Label4");
    ExpectBeside(frmZoneSetup_inputdata, "InputOption(0)", "Label5");
    ExpectBeside(frmZoneSetup_inputdata, "cmdWhyResample", "cmdBack");
    ExpectBeside(frmZoneSetup_inputdata, "cmdBack", "cmdNext");
    ExpectBeside(frmZoneSetup_inputdata, "cmdNext", "cmdCancel");
    ExpectWholeDialog(frmZoneSetup_inputdata, "cmdCancel");
    Photograph(frmZoneSetup_inputdata);
}

TEST_F(PageLayoutTest, ResamplingPageWithItsInputGrid) {
    testing::TempDir folder;
    WizardOnAnInputGrid(folder);
    frmZoneSetup_resampling.Show();
    Click(frmZoneSetup_resampling, "g_b_Resample(0)");
    Type(frmZoneSetup_resampling, "g_s_OutputDataSet", "multibeam5m");
    EXPECT_EQ(Text(frmZoneSetup_resampling, "lbl_InputDataCellSize"), "2.5");
    ExpectBeside(frmZoneSetup_resampling, "Label2(0)", "lbl_InputDataSet");
    ExpectBeside(frmZoneSetup_resampling, "Label2(1)", "lbl_InputDataCellSize");
    ExpectBeside(frmZoneSetup_resampling, "g_b_Resample(0)", "g_b_Resample(1)");
    ExpectBeside(frmZoneSetup_resampling, "Label4", "g_i_OutputCellSize");
    ExpectBeside(frmZoneSetup_resampling, "Label5", "g_s_ResampleMethod");
    ExpectBeside(frmZoneSetup_resampling, "Label6", "g_s_OutputDataSet");
    ExpectBeside(frmZoneSetup_resampling, "g_s_OutputDataSet", "cmdSubmitResampleData");
    ExpectWholeDialog(frmZoneSetup_resampling, "cmdCancel");
    Photograph(frmZoneSetup_resampling);
}

TEST_F(PageLayoutTest, BpiPagesOnTheirInputGrid) {
    testing::TempDir folder;
    WizardOnAnInputGrid(folder);
    g_s_BPI_DataSet = g_s_InputDataSet;
    struct Scale {
        PageSlot& page;
        const char *inner, *outer, *scale, *name, *run, *option;
        const char* scaleFactor;
    };
    const Scale scales[] = {
        {frmZoneStep1, "g_i_SmScaleBPI_inner_radius", "g_i_SmScaleBPI_outer_radius",
         "lbl_SmScaleBPI_ScaleFactor", "g_s_SaveSmallScaleBPI_OutputData", "cmdSet_smallScale_BPI",
         "optSaveSmallScaleBPI_OutputData(1)", "12"},
        {frmZoneStep2, "g_i_LgScaleBPI_inner_radius", "g_i_LgScaleBPI_outer_radius",
         "lbl_lgScaleBPI_ScaleFactor", "g_s_SaveLargeScaleBPI_OutputData", "cmdSet_largeScale_BPI",
         "optSaveLargeScaleBPI_OutputData(1)", "8"},
    };
    for (const Scale& scale : scales) {
        SCOPED_TRACE(scale.page.Name());
        scale.page.Show();
        // 5 and 3 cells of 2.5 m: 12.5 goes to the even 12, 7.5 to 8.
        EXPECT_EQ(Text(scale.page, scale.scale), scale.scaleFactor);
        ExpectBeside(scale.page, "lblCurrentInput", "lbl_InputDataSet");
        ExpectBeside(scale.page, "lblRadius(0)", scale.inner);
        ExpectBeside(scale.page, "lblRadius(1)", scale.outer);
        ExpectBeside(scale.page, "lblRadius(2)", scale.scale);
        EXPECT_LT(Frame(scale.page, scale.inner).bottom(), Frame(scale.page, scale.outer).top());
        EXPECT_LT(Frame(scale.page, scale.option).bottom(), Frame(scale.page, scale.name).top());
        EXPECT_LT(Frame(scale.page, scale.run).bottom(), Frame(scale.page, "cmdBack").top());
        ExpectBeside(scale.page, "cmdAboutBathymPositionIndexGrids", "cmdBack");
        ExpectBeside(scale.page, "cmdNext", "cmdCancel");
        ExpectWholeDialog(scale.page, "cmdCancel");
        Photograph(scale.page);
        scale.page.Hide();
    }
}

TEST_F(PageLayoutTest, RequiredDataDialogs) {
    g_b_StandAloneRun = true;
    g_s_WorkingDir = "/data/survey/work";
    struct Dialog {
        PageSlot& page;
        const char* caption;
        std::vector<std::pair<const char*, const char*>> rows;
    };
    const Dialog dialogs[] = {
        {frmZoneSetup_resampling_reqdata,
         "Resample - Required Data",
         {{"g_s_WorkingDir", "cmdOpenWS"}, {"g_s_InputDataSet", "cmdInputBrowse"}}},
        {frmZoneStep1_reqdata,
         "Broad Scale - Required Data",
         {{"g_s_WorkingDir", "cmdOpenWS"}, {"g_s_InputDataSet", "cmdInputBrowse"}}},
        {frmZoneStep2_reqdata,
         "Fine Scale - Required Data",
         {{"g_s_WorkingDir", "cmdOpenWS"}, {"g_s_InputDataSet", "cmdInputBrowse"}}},
        {frmZoneStep3_reqdata,
         "Standardize BPI - Required",
         {{"g_s_WorkingDir", "cmdOpenWS"},
          {"Label3(1)", "g_s_LS_BPI_InputDataSet"},
          {"g_s_LS_BPI_InputDataSet", "cmdLSBPI_Input_Browse"},
          {"Label3(0)", "g_s_SS_BPI_InputDataSet"},
          {"g_s_SS_BPI_InputDataSet", "cmdSSBPI_Input_Browse"}}},
    };
    for (const Dialog& dialog : dialogs) {
        SCOPED_TRACE(dialog.page.Name());
        dialog.page.Show();
        EXPECT_EQ(dialog.page.Get().windowTitle().toStdString(), dialog.caption);
        for (const auto& [left, right] : dialog.rows) ExpectBeside(dialog.page, left, right);
        for (const char* absent : {"cmdBack", "cmdNext", "cmdCancel"}) {
            EXPECT_EQ(dialog.page.Get().findChild<QWidget*>(absent), nullptr) << absent;
        }
        ExpectWholeDialog(dialog.page, "cmdOK");
        Photograph(dialog.page);
        dialog.page.Unload();
    }
}

TEST_F(PageLayoutTest, StandardizationPageOnBothTabs) {
    testing::TempDir folder;
    const raster::Grid grid{500000, 6000000, 10, 10, 8, 6};
    std::vector<double> cells(48);
    for (std::size_t i = 0; i < cells.size(); ++i) cells[i] = static_cast<double>(i % 7) - 3;
    for (const char* name : {"fineBPI", "broadBPI"}) {
        testing::WriteGrid(folder / (std::string(name) + ".tif"), grid, cells, true);
    }
    g_s_LS_BPI_InputDataSet = "fineBPI";
    g_p_LS_BPI_RasterDataset = raster::RasterDataset::Open(folder / "fineBPI.tif");
    g_s_SS_BPI_InputDataSet = "broadBPI";
    g_p_SS_BPI_RasterDataset = raster::RasterDataset::Open(folder / "broadBPI.tif");
    g_s_WorkingDir = folder.Path().string();
    StartWizard();
    frmIntro.Hide();
    frmZoneStep3.Show();
    EXPECT_EQ(Text(frmZoneStep3, "lblHeading"), "Standardize the BPI grids");
    QWidget* tabs = Find(frmZoneStep3, "tabStandardizeBPIgrids");
    ASSERT_NE(tabs, nullptr);

    struct Tab {
        const char* frame;
        const char* frameCaption;
        std::vector<std::pair<const char*, const char*>> rows;
        std::vector<const char*> column;  // top to bottom
        const char* button;
    };
    const Tab both[] = {
        {"Frame1(0)",
         "Fine scale BPI grid statistics",
         {{"Label1(0)", "lbl_LgScale_BPI_Grid(0)"},
          {"Label2(0)", "lbl_Lg_ScaleBPI_Mean(0)"},
          {"Label3(0)", "lbl_Lg_ScaleBPI_StDev(0)"}},
         {"Frame1(0)", "Label4(0)", "optSave_LS_StdGrid(0)", "optSave_LS_StdGrid(1)",
          "g_s_Save_LgScale_Std_Grid", "cmdNext_This"},
         "cmdNext_This"},
        {"Frame1(1)",
         "Broad scale BPI grid statistics",
         {{"Label1(1)", "lbl_SmScale_BPI_Grid(1)"},
          {"Label2(1)", "lbl_SmScale_BPIStat_Mean(1)"},
          {"Label3(1)", "lbl_SmScale_BPIStat_StDev(1)"}},
         {"Frame1(1)", "Label4(1)", "optSave_SS_StdGrid(0)", "optSave_SS_StdGrid(1)",
          "g_s_Save_SmScale_Std_Grid", "cmdSubmit(1)"},
         "cmdSubmit(1)"},
    };
    for (int index = 0; index < 2; ++index) {
        const Tab& tab = both[index];
        SCOPED_TRACE(tab.frameCaption);
        tabs->setProperty("currentIndex", index);
        QCoreApplication::sendPostedEvents();
        EXPECT_EQ(Find(frmZoneStep3, tab.frame)->property("title").toString().toStdString(),
                  tab.frameCaption);
        // The statistics sit in their frame, each value beside its caption.
        const QRect frame = Frame(frmZoneStep3, tab.frame);
        for (const auto& [caption, value] : tab.rows) {
            ExpectBeside(frmZoneStep3, caption, value);
            EXPECT_TRUE(frame.contains(Frame(frmZoneStep3, value))) << value;
        }
        for (std::size_t i = 1; i < tab.column.size(); ++i) {
            EXPECT_LE(Frame(frmZoneStep3, tab.column[i - 1]).bottom(),
                      Frame(frmZoneStep3, tab.column[i]).top())
                << tab.column[i - 1] << " above " << tab.column[i];
        }
        // The tab's own button in its bottom right corner.
        const QRect inside(tabs->mapTo(&frmZoneStep3.Get(), QPoint(0, 0)), tabs->size());
        const QRect button = Frame(frmZoneStep3, tab.button);
        EXPECT_LT(inside.right() - button.right(), 24);
        EXPECT_LT(inside.bottom() - button.bottom(), 24);
        ExpectWholeDialog(frmZoneStep3, "cmdCancel");
        QWidget& window = frmZoneStep3.Get();
        testing::SaveScreenshot(
            testing::WithTitleBar(window.grab().toImage(), window.windowTitle()),
            index == 0 ? "frmZoneStep3" : "frmZoneStep3-broad");
    }
    ExpectBeside(frmZoneStep3, "cmdAboutBPIGridStandardization", "cmdBack");
    ExpectBeside(frmZoneStep3, "cmdBack", "cmdNext");
    ExpectBeside(frmZoneStep3, "cmdNext", "cmdCancel");
}

TEST_F(PageLayoutTest, DictionaryEditorWithTheDefaultDictionary) {
    g_b_StandAloneRun = false;
    frmZoneStep4.Show();
    EXPECT_EQ(Text(frmZoneStep4, "Label1"), "Create / edit classification dictionary");
    ExpectBeside(frmZoneStep4, "txt_Classification_Dictionary", "cmd_ClassDictionary_Browse");
    ExpectBeside(frmZoneStep4, "lblFileName", "txtFileName");
    ExpectBeside(frmZoneStep4, "lblTitle", "g_s_ClassDictionary_Name");
    ExpectBeside(frmZoneStep4, "lblDescription", "g_s_ClassDictionary_Description");
    ExpectBeside(frmZoneStep4, "Shape1", "Label5");
    ExpectBeside(frmZoneStep4, "Label5", "cmdAddRecord");
    ExpectBeside(frmZoneStep4, "cmdAddRecord", "cmdDelRecord");
    ExpectBeside(frmZoneStep4, "cmdDelRecord", "cmdSave");
    ExpectBeside(frmZoneStep4, "cmdAbout_ClassDictionary", "cmdBack");
    ExpectBeside(frmZoneStep4, "cmdBack", "cmdNext");
    ExpectBeside(frmZoneStep4, "cmdNext", "cmdCancel");
    // The grid and its buttons in their frame, the grid below the boxes.
    const QRect frame = Frame(frmZoneStep4, "Frame1");
    for (const char* inside : {"txtFileName", "grdClass", "cmdSave"}) {
        EXPECT_TRUE(frame.contains(Frame(frmZoneStep4, inside))) << inside;
    }
    EXPECT_LE(Frame(frmZoneStep4, "g_s_ClassDictionary_Description").bottom(),
              Frame(frmZoneStep4, "grdClass").top());
    ExpectWholeDialog(frmZoneStep4, "cmdCancel");

    // Every heading reads in full, and the default dictionary's rows and all
    // columns show without scrolling.
    auto* grid = Find<QTableWidget>(frmZoneStep4, "grdClass");
    ASSERT_NE(grid, nullptr);
    const QFontMetrics metrics(grid->font());
    int width = 0;
    for (int col = 0; col < grid->columnCount(); ++col) {
        width += grid->columnWidth(col);
        const int span = grid->columnSpan(0, col);
        int spanned = 0;
        for (int i = 0; i < span; ++i) spanned += grid->columnWidth(col + i);
        for (auto [row, room] : {std::pair{0, spanned}, {1, grid->columnWidth(col)}}) {
            const QString heading = grid->item(row, col)->text();
            EXPECT_LE(metrics.horizontalAdvance(heading) + 4, room)
                << heading.toStdString() << " in column " << col;
        }
    }
    int height = 0;
    for (int row = 0; row < grid->rowCount(); ++row) height += grid->rowHeight(row);
    EXPECT_GE(grid->viewport()->width(), width);
    EXPECT_GE(grid->viewport()->height(), height);
    Photograph(frmZoneStep4);
}

TEST_F(PageLayoutTest, ClassificationPagesWithTheDefaultDictionary) {
    g_b_StandAloneRun = true;
    g_s_WorkingDir = "/data/survey/work";
    g_s_BPI_DataSet = "multibeam.tif";
    g_s_Save_SmScale_Std_Grid = "broad5std";
    g_s_Save_LgScale_Std_Grid = "fine3std";
    g_s_ClassDictionary_Path = classification::DefaultDictionaryPath();
    g_s_OutputDataSet = "ZONES";

    frmZoneStep8_reqdata.Show();
    for (auto [box, browse] : {std::pair{"g_s_WorkingDir", "cmdOpenWS"},
                               {"g_s_InputDataSet", "cmdInputBrowse"},
                               {"g_lbpi_std", "cmdInputLSBPISTD"},
                               {"g_sbpi_std", "cmdInputSSBPISTD"},
                               {"txt_Classification_Dictionary", "cmd_ClassDictionary_Browse"}}) {
        ExpectBeside(frmZoneStep8_reqdata, box, browse);
    }
    // The captions stand over their boxes, the inputs left of the classes.
    EXPECT_LE(Frame(frmZoneStep8_reqdata, "Label5").bottom(),
              Frame(frmZoneStep8_reqdata, "g_lbpi_std").top());
    EXPECT_LE(Frame(frmZoneStep8_reqdata, "Label7").bottom(),
              Frame(frmZoneStep8_reqdata, "g_sbpi_std").top());
    EXPECT_LE(Frame(frmZoneStep8_reqdata, "cmdOpenWS").right(),
              Frame(frmZoneStep8_reqdata, "GridList").left());
    ExpectBeside(frmZoneStep8_reqdata, "cmdNext", "cmdCancel");
    ExpectWholeDialog(frmZoneStep8_reqdata, "cmdCancel");
    Photograph(frmZoneStep8_reqdata);
    frmZoneStep8_reqdata.Hide();

    frmZoneStep8.Show();
    for (auto [caption, value] : {std::pair{"lbl_wd", "lblWorkingDir"},
                                  {"Label3", "lblInputDataset"},
                                  {"Label5", "lblLSBPI_STD"},
                                  {"Label7", "lblSSBPI_STD"},
                                  {"Label4", "lblClassDictDisp"}}) {
        ExpectBeside(frmZoneStep8, caption, value);
    }
    EXPECT_LE(Frame(frmZoneStep8, "g_s_OutputDataSet").right(),
              Frame(frmZoneStep8, "GridList").left());
    ExpectBeside(frmZoneStep8, "cmdBack", "cmdFinish");
    ExpectBeside(frmZoneStep8, "cmdFinish", "cmdCancel");
    ExpectWholeDialog(frmZoneStep8, "cmdCancel");
    Photograph(frmZoneStep8);
    frmZoneStep8.Hide();

    frmZoneStep8_comp.Show();
    EXPECT_EQ(Text(frmZoneStep8_comp, "g_s_OutputDataSet"), "/data/survey/work/ZONES");
    EXPECT_LE(Frame(frmZoneStep8_comp, "Label67").bottom(),
              Frame(frmZoneStep8_comp, "g_s_OutputDataSet").top());
    EXPECT_LE(Frame(frmZoneStep8_comp, "g_s_OutputDataSet").bottom(),
              Frame(frmZoneStep8_comp, "GridList").top());
    ExpectBeside(frmZoneStep8_comp, "cmdCreateRug", "cmdCancel");
    ExpectWholeDialog(frmZoneStep8_comp, "cmdCancel");
    // Every one of the twelve classes in sight, without scrolling.
    auto* grid = Find<QAbstractItemView>(frmZoneStep8_comp, "GridList");
    ASSERT_NE(grid, nullptr);
    const QModelIndex last = grid->model()->index(grid->model()->rowCount() - 1, 1);
    EXPECT_TRUE(grid->viewport()->rect().contains(grid->visualRect(last))) << "last class hidden";
    Photograph(frmZoneStep8_comp);
}

TEST_F(PageLayoutTest, RugosityPagesAfterTheWizard) {
    g_s_WorkingDir = "/data/survey/work";
    g_s_BPI_DataPath = "/data/survey";
    g_s_BPI_DataSet = "multibeam.tif";
    g_s_SaveRugosity_OutputData = "rugosity";

    frmRugosity.Show();
    EXPECT_EQ(Text(frmRugosity, "g_s_InputDataSet"), "/data/survey/multibeam.tif");
    EXPECT_EQ(Text(frmRugosity, "g_s_WorkingDir"), "/data/survey/work");
    Type(frmRugosity, "g_s_SaveRugosity_OutputData", "rugosity");
    // Each prompt over its box, each path box beside its browse button.
    ExpectColumn(frmRugosity,
                 {"Label1", "lbl_InputDataSet", "Label2(0)", "g_s_InputDataSet", "Label2(1)",
                  "g_s_WorkingDir", "Label7", "g_s_SaveRugosity_OutputData"});
    for (const char* box : {"g_s_InputDataSet", "g_s_WorkingDir", "g_s_SaveRugosity_OutputData"}) {
        EXPECT_EQ(Frame(frmRugosity, "Label2(0)").left(), Frame(frmRugosity, box).left()) << box;
    }
    ExpectBeside(frmRugosity, "g_s_InputDataSet", "cmdInputBrowse");
    ExpectBeside(frmRugosity, "g_s_WorkingDir", "cmdOpenWS");
    EXPECT_EQ(Frame(frmRugosity, "cmdInputBrowse").left(), Frame(frmRugosity, "cmdOpenWS").left());
    ExpectBeside(frmRugosity, "Picture1", "Frame1");
    ExpectButtonRow(frmRugosity,
                    {"cmdAboutBathymPositionIndexGrids", "cmdBack", "cmdNext", "cmdCancel"});
    Photograph(frmRugosity);
    frmRugosity.Hide();

    frmRugosity_comp.Show();
    EXPECT_EQ(Text(frmRugosity_comp, "txtlRugosityGridLocation"), "/data/survey/work/rugosity");
    ExpectColumn(frmRugosity_comp, {"Label1", "lbl_InputDataSet(0)", "txtlRugosityGridLocation",
                                    "lbl_InputDataSet(1)"});
    ExpectButtonRow(frmRugosity_comp, {"cmdAboutBathymPositionIndexGrids", "cmdBack", "cmdNext"});
    Photograph(frmRugosity_comp);
}

}  // namespace
}  // namespace halvane
