#pragma once
// The two BPI pages share one design: radii, the scale factor they give in
// map units, a save choice and the run through BPI_Build. What tells them
// apart, in names, texts and a few deliberate differences of behaviour,
// stands in a BpiScale.

#include <array>
#include <list>
#include <string>

#include "pages/Pages.h"
#include "platform/raster/Fwd.h"

class QGroupBox;

namespace halvane::pages {

struct BpiScale {
    const char* module;
    const char* heading;
    const char* subHeading;
    const char* frame;
    // Control names.
    const char* innerBox;
    const char* outerBox;
    const char* scaleLabel;
    const char* saveOption;
    const char* nameBox;
    const char* runButton;
    const char* namedCaption;  // item 1 of the save choice
    const char* outerOnLoad;
    // The session's radii, and what the run leaves there.
    std::string* innerRadius;
    std::string* outerRadius;
    std::string* grid;
    raster::RasterDatasetPtr* gridDataset;
    const char* tag;
    const char* temporary;
    PageSlot* requiredData;
    PageSlot* next;
    // Check texts that differ.
    const char* noNameTitle;
    const char* noNameText;
    const char* outerNotGreaterText;
    const char* notBuiltTitle;
    const char* notBuiltText;
    // The fine-scale page: its own Form_Load order, Change tests, blank test
    // of the folder, and a run that leaves the progress dialog open.
    bool fine;
};

class BpiPage : public Page {
public:
    QLabel* lblCurrentInput;
    QLabel* lbl_InputDataSet;
    QGroupBox* fraScale;
    QLineEdit* innerBox;
    QLineEdit* outerBox;
    QLabel* scaleLabel;
    QLabel* lblSaveQuestion;
    std::array<QRadioButton*, 2> saveOption;  // 0: "No thanks.", 1: named
    QLineEdit* nameBox;
    QPushButton* runButton;
    QPushButton* cmdAboutBathymPositionIndexGrids;

protected:
    BpiPage(PageSlot& slot, const BpiScale& scale);

    void Form_Load() override;
    void Form_Unload() override;

private:
    // Outer radius text times the input's cell size, as a 16-bit integer.
    std::string ScaleFactor(const std::string& outerText) const;
    std::string DefaultName() const;
    void InnerChange();
    void OuterChange();
    void SaveOptionClick();
    bool Checked();
    void RunButtonClick();
    void NextClick();
    // Handler names live as long as the page.
    const char* Procedure(const char* control, const char* event);

    const BpiScale& scale_;
    std::list<std::string> procedures_;
};

}  // namespace halvane::pages
