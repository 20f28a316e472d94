#pragma once
// The fine-scale BPI grid: radii 1 and 3 at first, the grid kept as
// g_s_LS_BPI_InputDataSet.

#include "pages/BpiPage.h"

namespace halvane::pages {

class frmZoneStep2Page : public BpiPage {
public:
    explicit frmZoneStep2Page(PageSlot& slot);

    QLineEdit*& g_i_LgScaleBPI_inner_radius = innerBox;
    QLineEdit*& g_i_LgScaleBPI_outer_radius = outerBox;
    QLabel*& lbl_lgScaleBPI_ScaleFactor = scaleLabel;
    std::array<QRadioButton*, 2>& optSaveLargeScaleBPI_OutputData = saveOption;
    QLineEdit*& g_s_SaveLargeScaleBPI_OutputData = nameBox;
    QPushButton*& cmdSet_largeScale_BPI = runButton;
};

}  // namespace halvane::pages
