#pragma once
// The welcome page: texts, a picture, the help button and the way in.

#include "pages/Pages.h"

namespace halvane::pages {

class frmIntroPage : public Page {
public:
    explicit frmIntroPage(PageSlot& slot);

    QLabel* Label4;
    QLabel* Label1;
    QLabel* Label2;
    QLabel* Picture1;
    QPushButton* cmdAboutHalvane;

private:
    void cmdNext_Click();
};

// The decorative picture beside the welcome text: a cut through the seafloor
// with its water column, drawn here rather than shipped as a file.
QPixmap DrawSeafloorPicture(int width, int height);

}  // namespace halvane::pages
