#pragma once
// The setup page: the working directory, and the choice between an entire
// run from a bathymetric grid and a run on standardized grids made before.
// Large stands for fine and Small for broad in its names.

#include <array>

#include "pages/Pages.h"

namespace halvane::pages {

class frmZoneSetup_inputdataPage : public Page {
public:
    explicit frmZoneSetup_inputdataPage(PageSlot& slot);

    QLabel* Label2;
    QLineEdit* g_s_WorkingDir;
    QToolButton* cmdOpenWS;
    QLabel* Label3;
    // Index 0: previously made grids (the short run); 1: the entire run.
    std::array<QRadioButton*, 2> InputOption;
    QLabel* Label4;
    QLineEdit* g_s_InputDataSet;
    QToolButton* cmdInputBrowse;
    QLabel* Label5;
    QLabel* Label6;
    QLineEdit* g_s_LargeScaleBPI;
    QToolButton* cmdInputLrgScaleBPIBrowse;
    QLabel* Label7;
    QLineEdit* g_s_SmallScaleBPI;
    QToolButton* cmdInputSmlScaleBPIBrowse;
    QLabel* Label9;
    QLineEdit* txtInputDataSet2;
    QToolButton* cmdInputDSBrowse;
    QPushButton* cmdWhyResample;

protected:
    void Form_Load() override;

private:
    void cmdOpenWS_Click();
    void cmdInputLrgScaleBPIBrowse_Click();
    void cmdInputSmlScaleBPIBrowse_Click();
    void InputOption_Click();
    void cmdNext_Click();
};

}  // namespace halvane::pages
