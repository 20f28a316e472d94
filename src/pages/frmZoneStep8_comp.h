#pragma once
// The completion page of the classification: where the zone grid lies, the
// classes the dictionary file holds now, and the way on to the rugosity page.

#include "pages/ClassListPage.h"

namespace halvane::pages {

class frmZoneStep8_compPage : public ClassListPage {
public:
    explicit frmZoneStep8_compPage(PageSlot& slot);

    QLabel* Label1;
    QLabel* Label67;
    // The result's full path; no handler, unlike the name boxes before it.
    QLineEdit* g_s_OutputDataSet;
    QPushButton* cmdCreateRug;

protected:
    void Form_Load() override;
};

}  // namespace halvane::pages
