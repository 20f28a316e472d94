#pragma once
// What the three classification pages share: a private copy of the
// dictionary, read from the file named in the session, and a read-only list
// of its classes (number and zone text) under one header row. Each page
// reads the file again when it loads, so the list shows what the file holds
// at that moment, not what an editor may hold unsaved.

#include <cstdint>
#include <string>

#include "classification/clsXMLPrjFile.h"
#include "pages/Pages.h"
#include "platform/ui/Services.h"

class QTableWidget;

namespace halvane::pages {

class ClassListPage : public Page {
public:
    QLabel* Label27;
    QTableWidget* GridList;
    ui::CommonDialog dlgXML;

    classification::XMLPrjFilePtr m_prjFile;
    // The path that was loaded, trimmed.
    std::string m_sDictPath;
    // The records at the last fill; the final run sizes its class grids by it.
    std::int16_t m_iClassCount = 0;

protected:
    ClassListPage(PageSlot& slot, const char* module);

    // Label27 and GridList, as a column that the page places.
    QBoxLayout* NewClassList();

    // The layout the list has at design time, before refreshGrid sets its own.
    void DesignGridLayout();
    void refreshGrid();
    void FillForm();
    // The open dialog for a dictionary; a chosen file is loaded and listed.
    void LoadXMLFile();
    // m_prjFile afresh (Form_Load) and the session's dictionary into it.
    void NewDictionary();
    void LoadSessionDictionary();
};

// Grid widths are kept in the classic units (twips) and shown at 15 a pixel.
int TwipsToPixels(int twips);

}  // namespace halvane::pages
