#pragma once
// Resampling: the input grid's name and cell size, and on "Yes" a new cell
// size, method and name for the grid that all later stages work on.

#include <array>

#include "pages/Pages.h"

namespace halvane::pages {

class frmZoneSetup_resamplingPage : public Page {
public:
    explicit frmZoneSetup_resamplingPage(PageSlot& slot);

    std::array<QLabel*, 2> Label2;  // "Input data set:", "cell size:"
    QLabel* lbl_InputDataSet;
    QLabel* lbl_InputDataCellSize;
    QLabel* Label3;
    std::array<QRadioButton*, 2> g_b_Resample;  // 0: Yes, 1: No
    QLabel* Label4;
    QLineEdit* g_i_OutputCellSize;
    QLabel* Label5;
    QComboBox* g_s_ResampleMethod;
    QLabel* Label6;
    QLineEdit* g_s_OutputDataSet;
    QPushButton* cmdSubmitResampleData;
    QPushButton* cmdWhyResample;

protected:
    void Form_Load() override;
    void Form_Unload() override;

private:
    void cmdSubmitResampleData_Click();
    void cmdNext_Click();
};

}  // namespace halvane::pages
