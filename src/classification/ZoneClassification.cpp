#include "classification/ZoneClassification.h"

#include <map>
#include <vector>

#include "engine/Analysis.h"
#include "engine/RasterAccess.h"
#include "engine/ResultLayers.h"
#include "engine/Session.h"
#include "platform/raster/MapAlgebra.h"
#include "platform/reporting/ErrorHandling.h"
#include "platform/reporting/modProgDialog.h"
#include "platform/runtime/Convert.h"
#include "platform/runtime/Text.h"

namespace halvane::classification {
namespace {

using runtime::Deref;

constexpr const char* kModule = "frmZoneStep8";
constexpr const char* kTitle = "Processing";
constexpr const char* kHead = "Creating Output files";

void Progress(const std::string& sMessage, std::int32_t position) {
    ShowProgress(sMessage, kTitle, 0, 100, position, 0);
}

void Stop(const std::string& sPrompt, const std::string& sTitle) {
    ui::Services().MsgBox(sPrompt, ui::vbCritical | ui::vbOKOnly, sTitle);
}

std::string InWorkingDir(const std::string& sName) {
    return g_s_WorkingDir + runtime::kPathSeparator + sName;
}

// The attribute of a raster input and the bounds of a record that test it.
struct BoundBlock {
    const char* attribute;
    std::string clsClassificationRec::*lower;
    std::string clsClassificationRec::*upper;
};
constexpr BoundBlock kBlocks[] = {
    {"inSBPI", &clsClassificationRec::SSB_LowerBounds, &clsClassificationRec::SSB_UpperBounds},
    {"inLBPI", &clsClassificationRec::LSB_LowerBounds, &clsClassificationRec::LSB_UpperBounds},
    {"inSlope", &clsClassificationRec::Slope_LowerBounds,
     &clsClassificationRec::Slope_UpperBounds},
    {"inDepth", &clsClassificationRec::Depth_LowerBounds,
     &clsClassificationRec::Depth_UpperBounds},
};

// The rasters of the four attributes, in the order they are bound.
std::vector<std::pair<const char*, raster::RasterPtr>> ClassInputs() {
    return {{"inLBPI", Deref(g_p_LgScale_Std_RasterDataset).CreateDefaultRaster()},
            {"inSBPI", Deref(g_p_SmScale_Std_RasterDataset).CreateDefaultRaster()},
            {"inSlope", g_p_SlopeRaster},
            {"inDepth", Deref(g_p_BPI_RasterDataset).CreateDefaultRaster()}};
}

}  // namespace

std::string ClassExpression(const clsClassificationRec& record) {
    std::string sExpression;
    int iOpen = 0;
    for (const BoundBlock& block : kBlocks) {
        const std::string& lower = record.*block.lower;
        const std::string& upper = record.*block.upper;
        const std::string input = std::string("[") + block.attribute + "]";
        // A bound alone is inclusive; two together are both exclusive.
        if (!lower.empty() && !upper.empty()) {
            sExpression += "con(" + input + " > " + lower + ", con(" + input + " < " + upper + ", ";
            iOpen += 2;
        } else if (!lower.empty()) {
            sExpression += "con(" + input + " >= " + lower + ", ";
            iOpen += 1;
        } else if (!upper.empty()) {
            sExpression += "con(" + input + " <= " + upper + ", ";
            iOpen += 1;
        }
    }
    if (iOpen >= 1) {
        sExpression += std::to_string(record.Class);
        for (int i = 0; i < iOpen; ++i) sExpression += ", 0)";
    }
    return sExpression;
}

void DescribeZones(raster::GridDescription& description, const clsClassificationRecs& records,
                   const std::string& dictionaryPath, const std::string& title) {
    std::map<std::int32_t, std::string> names;
    for (const auto& record : records.NewEnum()) names.emplace(record->Class, record->Zone);
    description.items.emplace_back("HALVANE_DICTIONARY", dictionaryPath);
    description.items.emplace_back("HALVANE_DICTIONARY_TITLE", title);
    description.nameClasses = [names](raster::AttributeTable& table) {
        const std::vector<map::Color> colors =
            UniqueValueColors(static_cast<std::int32_t>(table.size()));
        for (std::size_t i = 0; i < table.size(); ++i) {
            raster::AttributeRow& row = table[i];
            const auto named = names.find(row.Value);
            row.Class_Name = named != names.end() ? named->second
                             : row.Value == 0     ? "Unclassified"
                                                  : "Overlap";
            row.color = raster::Rgb{colors[i].red, colors[i].green, colors[i].blue};
        }
    };
}

void RunFinalOutput(ZoneRunPage& page) {
    Guarded({"RunFinalOutput", kModule, kTopLevel}, [&] {
        Progress(kHead, 15);
        const std::string sOutput = page.g_s_OutputDataSet;
        raster::RasterMapAlgebraOp pMapAlgebraOp;
        raster::RasterMapAlgebraOp pSumAlgebraOp;
        pMapAlgebraOp.OutWorkspace(nuWS_PathOpenIRasterWorkspace(g_s_WorkingDir));

        // The count comes from the file as it stands now, the records from the
        // page's own copy; the two can disagree.
        std::string sSum;
        clsXMLPrjFile prjFile;
        prjFile.XML(runtime::Trim(g_s_ClassDictionary_Path));
        const std::int16_t n = runtime::CInt(static_cast<double>(prjFile.Classifications->Count()));
        const std::int16_t iClassCount = page.m_iClassCount;
        std::vector<raster::RasterPtr> pClassRasters(static_cast<std::size_t>(iClassCount) + 1);
        Progress(std::string(kHead) + "\r\nBuilding Class Grids", 20);

        raster::RasterPtr pOutRaster;
        // The class grids are stored with the zones, in one pass over shared
        // tiles of the four inputs rather than a pass each. Whatever stops the
        // run on the way stores the class grids made so far first, as a run
        // that stored each at once leaves them behind.
        std::vector<std::pair<raster::RasterPtr, std::string>> pending;
        const auto storePending = [&] {
            const auto grids = std::move(pending);
            pending.clear();
            MakePerminentGrids(grids, g_s_WorkingDir);
        };
        if (n >= 1) try {
            g_dict_Zones = std::make_shared<ZoneDictionary>();
            for (std::int16_t i = 1; i <= n; ++i) {
                const clsClassificationRec& record =
                    Deref(Deref(Deref(page.m_prjFile).Classifications).Item(i));
                g_dict_Zones->emplace(i, record.Zone);
                const std::string sExpression = ClassExpression(record);

                const auto inputs = ClassInputs();
                for (const auto& [name, raster] : inputs) pMapAlgebraOp.BindRaster(raster, name);
                pClassRasters.at(static_cast<std::size_t>(i)) = pMapAlgebraOp.Execute(sExpression);
                for (const auto& input : inputs) pMapAlgebraOp.UnbindRaster(input.first);

                pending.emplace_back(pClassRasters[static_cast<std::size_t>(i)],
                                     sOutput + std::to_string(i));
                // The closing parenthesis comes only with a record after the
                // first, so a single record leaves the sum open.
                const std::string tmpRas = "[tmpRas" + std::to_string(i) + "]";
                if (sSum.empty()) {
                    sSum = "sum(" + tmpRas;
                } else if (i == iClassCount) {
                    sSum += ", " + tmpRas + ")";
                } else {
                    sSum += ", " + tmpRas;
                }
                Progress(std::string(kHead) + " Building Class Grid " + std::to_string(i) + " of " +
                             std::to_string(iClassCount),
                         20 + 5 * i);
            }

            for (std::int16_t i = 1; i <= iClassCount; ++i) {
                pSumAlgebraOp.BindRaster(pClassRasters[static_cast<std::size_t>(i)],
                                         "tmpRas" + std::to_string(i));
            }
            Progress(std::string(kHead) + " .. Combining Class Grids", 90);
            pOutRaster = pSumAlgebraOp.Execute(sSum);
            for (std::int16_t i = 1; i <= iClassCount; ++i) {
                pSumAlgebraOp.UnbindRaster("tmpRas" + std::to_string(i));
            }
            DescribeZones(Deref(pOutRaster->Dataset()).Description(),
                          Deref(Deref(page.m_prjFile).Classifications),
                          runtime::Trim(g_s_ClassDictionary_Path), prjFile.PrjName);
            pending.emplace_back(pOutRaster, sOutput);
            storePending();
            g_p_OutputRasterDataset =
                OpenDatasetInWorkspace(GetRasterWorkspace(g_s_WorkingDir), sOutput);
        } catch (...) {
            storePending();
            throw;
        }

        Progress(std::string(kHead) + " .. Cleaning up", 95);
        page.m_prjFile.reset();
        for (std::int16_t i = 1; i <= iClassCount; ++i) {
            pClassRasters[static_cast<std::size_t>(i)].reset();
            const std::string sClassGrid = sOutput + std::to_string(i);
            if (RasterExists(InWorkingDir(sClassGrid))) DeleteRaster(g_s_WorkingDir, sClassGrid);
        }
        pOutRaster.reset();
        for (const char* tmp : {"tmpFineBPI", "tmpBroadBPI", "tmpFinestd", "tmpBroadstd"}) {
            if (RasterExists(InWorkingDir(tmp))) DeleteRaster(g_s_WorkingDir, tmp);
        }
    });
}

bool cmdFinish_Click(ZoneRunPage& page) {
    return Guarded({"cmdFinish_Click", kModule, kTopLevel}, [&] {
        const std::string sName = page.g_s_OutputDataSet;
        bool bCheck = false;
        if (!sName.empty()) {
            g_s_OutputDataSet = sName;
            bCheck = true;
        } else {
            // The message of another page stands here for a missing name. The
            // test for names over 8 characters sat on this branch too, where
            // the name is empty, so no length limit ever applies.
            Stop("Please resample the input dataset, or select 'No' when asked if you want to "
                 "Resample the input dataset.",
                 "Please Resample The Input Data..");
        }

        if (RasterExists(InWorkingDir(sName))) {
            bCheck = false;
            Stop(sName + " already exists in the working directory. Please try using a different "
                         "name.",
                 "File Exists");
        } else if (RasterExists(InWorkingDir("slope"))) {
            DeleteRaster(g_s_WorkingDir, "slope");
            // Clearing the way for slope lets the run go ahead even after the
            // name was refused above.
            bCheck = !RasterExists(InWorkingDir("slope"));
            if (!bCheck) {
                Stop("Raster 'slope' already exists in the working directory and it cannot be "
                     "removed at this time. Please removing the raster data set 'slope' or use a "
                     "different working directory .",
                     "File Exists");
            }
        } else if (sName.find(' ') != std::string::npos) {
            bCheck = false;
            Stop("'" + sName +
                     "' contains a space. Spaces are not allowed in Raster Data Set names. Please "
                     "rename with out spaces.",
                 "File Exists");
        }
        if (!bCheck) return false;

        ui::Services().SetMousePointer(ui::vbHourglass);
        Progress(std::string(kHead) + "\r\nBuilding Slope Grid", 0);
        {
            // SLOPE is saved in the class grids' pass, which computes the same
            // slope from the same bathymetry: in a pass of its own, the
            // bathymetry was read and the slope computed twice.
            const DeferredGridSaves deferred;
            BuildSlope();
        }
        Progress(std::string(kHead) + "\r\nPost-Slope Processing", 10);
        // SLOPE too when the run stopped before the class grids' pass, as it
        // does when that pass failed.
        try {
            RunFinalOutput(page);
        } catch (...) {
            StoreDeferredGrids();
            throw;
        }
        StoreDeferredGrids();
        Progress(kHead, 100);
        CloseProgress();
        ui::Services().SetMousePointer(ui::vbDefault);

        if (AskToAddDataToMap()) {
            AddDatasetToMap(page.m_pApp, page.m_pDoc, page.m_pMap, g_p_OutputRasterDataset,
                            ChangeRenderToUVRenderer);
        }
        return true;
    });
}

}  // namespace halvane::classification
