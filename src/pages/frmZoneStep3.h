#pragma once
// Standardization: mean and standard deviation of both BPI grids, one tab a
// scale, and one run that turns both into z-scores times 100. Lg and LS stand
// for the fine scale, Sm and SS for the broad one.

#include <array>

#include "pages/Pages.h"

class QGroupBox;
class QTabWidget;

namespace halvane::pages {

class frmZoneStep3Page : public Page {
public:
    explicit frmZoneStep3Page(PageSlot& slot);

    QTabWidget* tabStandardizeBPIgrids;
    // The tab pages, 0 "Fine Scale" and 1 "Broad Scale".
    std::array<QWidget*, 2> tabPage;
    // Per tab: the statistics frame and its captions "Grid:", "Mean:",
    // "Standard Deviation:", and the save question.
    std::array<QGroupBox*, 2> Frame1;
    std::array<QLabel*, 2> Label1;
    std::array<QLabel*, 2> Label2;
    std::array<QLabel*, 2> Label3;
    std::array<QLabel*, 2> Label4;

    // Tab 0, the fine scale: elements 0 of their control arrays.
    QLabel* lbl_LgScale_BPI_Grid;
    QLabel* lbl_Lg_ScaleBPI_Mean;
    QLabel* lbl_Lg_ScaleBPI_StDev;
    std::array<QRadioButton*, 2> optSave_LS_StdGrid;  // 0 "No thanks.", 1 "Yes. ..."
    QLineEdit* g_s_Save_LgScale_Std_Grid;
    QPushButton* cmdNext_This;

    // Tab 1, the broad scale: elements 1 of theirs.
    QLabel* lbl_SmScale_BPI_Grid;
    QLabel* lbl_SmScale_BPIStat_Mean;
    QLabel* lbl_SmScale_BPIStat_StDev;
    std::array<QRadioButton*, 2> optSave_SS_StdGrid;
    QLineEdit* g_s_Save_SmScale_Std_Grid;
    QPushButton* cmdSubmit;

    QPushButton* cmdAboutBPIGridStandardization;

protected:
    void Form_Load() override;

private:
    void cmdNext_This_Click();
    void cmdSubmit_Click();
    // The checks of Submit; false when one failed and said so.
    bool SubmitChecksPass();
    void cmdNext_Click();
};

}  // namespace halvane::pages
