#pragma once
// The last stage of the wizard: the Finish button of the final output page,
// which checks the output name and builds slope, and RunFinalOutput, which
// turns each dictionary record into a class grid and adds them all into the
// zone grid. The page only wires its controls to these.

#include <cstdint>
#include <string>

#include "classification/clsXMLPrjFile.h"
#include "platform/map/Application.h"
#include "platform/raster/Storage.h"

namespace halvane::classification {

// What the final output page holds for a run. The page fills m_prjFile and
// m_iClassCount when it lists the dictionary's classes; the run releases
// m_prjFile, so the page must be filled again before another run.
struct ZoneRunPage {
    std::string g_s_OutputDataSet;  // the text of the output name box
    XMLPrjFilePtr m_prjFile;
    std::int16_t m_iClassCount = 0;
    map::ApplicationPtr m_pApp;
    map::MxDocumentPtr m_pDoc;
    map::MapPtr m_pMap;
};

// One nested con() per present bound, in the order broad BPI, fine BPI,
// slope, depth; empty when the record has no bound at all.
std::string ClassExpression(const clsClassificationRec& record);

// What the zone grid's file says of its classes and their source: each value
// is named after the first record whose Class it is, 0 otherwise "Unclassified"
// and any other value, which only overlapping classes make, "Overlap";
// colours are those the map gives the rows of the grid's table. The file also
// names the dictionary's path and title.
void DescribeZones(raster::GridDescription& description, const clsClassificationRecs& records,
                   const std::string& dictionaryPath, const std::string& title);

// Reports its failures and returns; nothing is cleaned up after a failure.
void RunFinalOutput(ZoneRunPage& page);

// True when the run went through to the closing question: the page then
// hides itself and shows the completion page. False when a check stopped it
// (the page stays open) or it failed (reported).
bool cmdFinish_Click(ZoneRunPage& page);

}  // namespace halvane::classification
