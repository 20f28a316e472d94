#pragma once
// The dictionary editor: picks the dictionary that goes on to the
// classification, or edits one in a grid and saves it as a new file. What goes
// on is always the file named by g_s_ClassDictionary_Path, never the grid.

#include <cstdint>
#include <string>

#include "classification/clsXMLPrjFile.h"
#include "pages/Pages.h"
#include "platform/ui/Services.h"

class QFrame;
class QGroupBox;

namespace halvane::pages {

class DictionaryGrid;

class frmZoneStep4Page : public Page {
public:
    explicit frmZoneStep4Page(PageSlot& slot);

    QLabel* Label1 = nullptr;
    QLabel* Label2 = nullptr;
    QLineEdit* txt_Classification_Dictionary = nullptr;
    QToolButton* cmd_ClassDictionary_Browse = nullptr;
    QPushButton* cmdAbout_ClassDictionary = nullptr;
    QGroupBox* Frame1 = nullptr;
    QFrame* Frame2 = nullptr;
    QLineEdit* txtFileName = nullptr;
    QLineEdit* g_s_ClassDictionary_Name = nullptr;
    QLineEdit* g_s_ClassDictionary_Description = nullptr;
    DictionaryGrid* grdClass = nullptr;
    QLineEdit* txtActiveCell = nullptr;
    QLabel* Label5 = nullptr;
    QFrame* Shape1 = nullptr;
    QPushButton* cmdAddRecord = nullptr;
    QPushButton* cmdDelRecord = nullptr;
    QPushButton* cmdSave = nullptr;
    // The file dialog; its FileName also carries the current file name from
    // one procedure to the next.
    ui::CommonDialog dlgXML;

    classification::XMLPrjFilePtr m_prjFile = std::make_shared<classification::clsXMLPrjFile>();
    classification::XMLPrjFilePtr m_prjSaveFile;
    std::string m_sDictPath;
    std::int16_t m_iClassCount = 0;
    // Grid clicks open the cell editor only once a dictionary with records
    // came up.
    bool m_bGridLoaded = false;

protected:
    void Form_Load() override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void refreshGrid();
    void FillForm();
    void LoadXMLFile();
    void LoadnewXMLFile(const std::string& name);
    void KeyMoveUpdate();

    void cmd_ClassDictionary_Browse_Click();
    void cmdAddRecord_Click();
    void cmdDelRecord_Click();
    void cmdSave_Click();
    void grdClass_KeyDown(int keyCode);
    void txtActiveCell_KeyDown(int keyCode);

    void LayOutGrid();
    void ColourOptionalFields(int row);
    void OpenCellEditor();
    void CommitCell();
    void CloseCellEditor();
    void ShowFileName();
};

}  // namespace halvane::pages
