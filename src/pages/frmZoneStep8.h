#pragma once
// The final output page, which shows what the zone classification will run
// on, takes the output name and runs it, and its entry in a stand-alone run,
// which collects what the wizard would have built. Lg and LS stand for the
// fine scale, Sm and SS for the broad one.

#include "pages/ClassListPage.h"

namespace halvane::pages {

class frmZoneStep8Page : public ClassListPage {
public:
    explicit frmZoneStep8Page(PageSlot& slot);

    QLabel* lbl_wd;
    QLabel* lblWorkingDir;
    QLabel* Label2;
    QLabel* Label3;
    QLabel* lblInputDataset;
    QLabel* Label5;
    QLabel* lblLSBPI_STD;
    QLabel* Label7;
    QLabel* lblSSBPI_STD;
    QLabel* Label4;
    QLabel* lblClassDictDisp;
    QLabel* lblClassDict;
    QLabel* Label1;
    QLabel* Label67;
    QLineEdit* g_s_OutputDataSet;
    QPushButton* cmdFinish;

protected:
    void Form_Load() override;

private:
    void cmdFinish_Click();
};

class frmZoneStep8_reqdataPage : public ClassListPage {
public:
    explicit frmZoneStep8_reqdataPage(PageSlot& slot);

    QLabel* lblWorkingDir;
    QLabel* Label8;
    QLineEdit* g_s_WorkingDir;
    QToolButton* cmdOpenWS;
    QLabel* Label2;
    QLabel* Label3;
    QLineEdit* g_s_InputDataSet;
    QToolButton* cmdInputBrowse;
    QLabel* Label5;
    QLineEdit* g_lbpi_std;
    QToolButton* cmdInputLSBPISTD;
    QLabel* Label7;
    QLineEdit* g_sbpi_std;
    QToolButton* cmdInputSSBPISTD;
    QLabel* Label4;
    QLineEdit* txt_Classification_Dictionary;
    QToolButton* cmd_ClassDictionary_Browse;
    QLabel* Label1;
    QLabel* Label67;
    QLineEdit* g_s_OutputDataSet;

protected:
    void Form_Load() override;

private:
    void cmdNext_Click();
};

// The dictionary's path cut to its first 10 and last 15 characters around
// "...", whatever its length: a short path then shows parts of it twice.
QString ShortenedDictionaryPath(const std::string& path);

}  // namespace halvane::pages
