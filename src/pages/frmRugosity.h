#pragma once
// The rugosity page, which takes an input grid, a working directory and an
// output name and runs BuildRugosity, and its completion page, which shows
// where the grid went. The page behaves the same whether the stand-alone
// command or the classification's completion page showed it.

#include <array>

#include "pages/Pages.h"

class QGroupBox;

namespace halvane::pages {

class frmRugosityPage : public Page {
public:
    explicit frmRugosityPage(PageSlot& slot);

    QLabel* Label1;
    QLabel* Picture1;
    QGroupBox* Frame1;
    QLabel* lbl_InputDataSet;
    std::array<QLabel*, 2> Label2;  // the input's prompt, the working directory's
    QLineEdit* g_s_InputDataSet;
    QToolButton* cmdInputBrowse;
    QLineEdit* g_s_WorkingDir;
    QToolButton* cmdOpenWS;
    QLabel* Label7;
    QLineEdit* g_s_SaveRugosity_OutputData;
    QPushButton* cmdAboutBathymPositionIndexGrids;

protected:
    void Form_Load() override;

private:
    void cmdInputBrowse_Click();
    void cmdNext_Click();
};

class frmRugosity_compPage : public Page {
public:
    explicit frmRugosity_compPage(PageSlot& slot);

    QLabel* Label1;
    std::array<QLabel*, 2> lbl_InputDataSet;  // the location's prompt, the explanation
    QLineEdit* txtlRugosityGridLocation;
    QPushButton* cmdAboutBathymPositionIndexGrids;

protected:
    void Form_Load() override;
};

// What the rugosity grid is, as both pages explain it.
extern const char* const kRugosityExplanation;

}  // namespace halvane::pages
