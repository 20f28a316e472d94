#pragma once
// The broad-scale BPI grid: radii 1 and 5 at first, the grid kept as
// g_s_SS_BPI_InputDataSet.

#include "pages/BpiPage.h"

namespace halvane::pages {

class frmZoneStep1Page : public BpiPage {
public:
    explicit frmZoneStep1Page(PageSlot& slot);

    QLineEdit*& g_i_SmScaleBPI_inner_radius = innerBox;
    QLineEdit*& g_i_SmScaleBPI_outer_radius = outerBox;
    QLabel*& lbl_SmScaleBPI_ScaleFactor = scaleLabel;
    std::array<QRadioButton*, 2>& optSaveSmallScaleBPI_OutputData = saveOption;
    QLineEdit*& g_s_SaveSmallScaleBPI_OutputData = nameBox;
    QPushButton*& cmdSet_smallScale_BPI = runButton;
};

}  // namespace halvane::pages
