#pragma once
// The required-data dialogs of the stand-alone commands: they collect what a
// stage needs when no wizard came before it, then hand over to the stage's
// page. None has Back, Cancel, help or a picture, and closing one runs nothing.

#include <array>

#include "pages/Pages.h"

namespace halvane::pages {

// The family's common part: the working directory and OK.
class RequiredDataPage : public Page {
public:
    QLabel* Label1;
    QLabel* Label2;
    QLineEdit* g_s_WorkingDir;
    QToolButton* cmdOpenWS;
    QLabel* lblInputData;
    QLabel* lblInputData2;
    QPushButton* cmdOK;

protected:
    RequiredDataPage(PageSlot& slot, const char* module, const char* caption,
                     const char* inputPrompt, bool fillsWorkingDir);

    void Form_Load() override;
    // Adds a row: label, path box, browse button.
    void AddGridRow(QLabel* label, QLineEdit* box, QToolButton* browse);
    // Checks failed end the click with a stop message; true when the box has text.
    bool Filled(const QLineEdit* box, const char* message, const char* title) const;

private:
    bool fillsWorkingDir_;
    QGridLayout* form_;
    int nextRow_ = 0;
};

// The three dialogs that ask for a bathymetric grid.
class BathymetryRequiredDataPage : public RequiredDataPage {
public:
    QLineEdit* g_s_InputDataSet;
    QToolButton* cmdInputBrowse;

protected:
    BathymetryRequiredDataPage(PageSlot& slot, const char* module, const char* caption,
                               PageSlot& stage, bool fillsWorkingDir, bool browseSetsBpiGrid);

private:
    void cmdOK_Click();
    PageSlot& stage_;
};

class frmZoneSetup_resampling_reqdataPage : public BathymetryRequiredDataPage {
public:
    explicit frmZoneSetup_resampling_reqdataPage(PageSlot& slot);
};

class frmZoneStep1_reqdataPage : public BathymetryRequiredDataPage {
public:
    explicit frmZoneStep1_reqdataPage(PageSlot& slot);
};

class frmZoneStep2_reqdataPage : public BathymetryRequiredDataPage {
public:
    explicit frmZoneStep2_reqdataPage(PageSlot& slot);
};

// Standardization asks for the two BPI grids instead.
class frmZoneStep3_reqdataPage : public RequiredDataPage {
public:
    explicit frmZoneStep3_reqdataPage(PageSlot& slot);

    std::array<QLabel*, 2> Label3;  // 0: broad, 1: fine
    QLineEdit* g_s_LS_BPI_InputDataSet;
    QToolButton* cmdLSBPI_Input_Browse;
    QLineEdit* g_s_SS_BPI_InputDataSet;
    QToolButton* cmdSSBPI_Input_Browse;

private:
    void cmdOK_Click();
};

}  // namespace halvane::pages
