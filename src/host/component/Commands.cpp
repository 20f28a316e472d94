#include "host/component/Commands.h"

#include <atomic>

#include "engine/ResultLayers.h"
#include "engine/Session.h"
#include "pages/Pages.h"
#include "platform/map/Application.h"
#include "platform/reporting/ErrorHandling.h"
#include "platform/reporting/HTMLHelp.h"
#include "platform/runtime/Failure.h"

namespace halvane::host {

using namespace pages;

namespace {

std::atomic<int> g_liveObjects{0};

// A property of `module` as a top-level procedure: its value, or the type's
// default when it fails.
template <class Body>
auto Property(const char* procedure, const char* module, Body&& body) {
    return Guarded({procedure, module, kTopLevel}, std::forward<Body>(body));
}

constexpr const char* kToolbar = "clsToolbar";
constexpr const char* kMenu = "clsMenuTrevak";

}  // namespace

// --- CountedObject

CountedObject::CountedObject() { ++g_liveObjects; }
CountedObject::~CountedObject() { --g_liveObjects; }
int CountedObject::LiveObjects() { return g_liveObjects; }

// --- clsToolbar

std::int32_t clsToolbar::ItemCount() {
    return Property("IToolBarDef_ItemCount", kToolbar, [] { return std::int32_t{1}; });
}

void clsToolbar::GetItemInfo(std::int32_t pos, IItemDef& itemDef) {
    Guarded({"IToolBarDef_GetItemInfo", kToolbar, kTopLevel}, [&] {
        if (pos == 0) itemDef.ID("Halvane.clsMenuTrevak");
    });
}

std::string clsToolbar::Name() {
    return Property("IToolBarDef_Name", kToolbar, [] { return std::string("Halvane_Toolbar"); });
}

std::string clsToolbar::Caption() {
    return Property("IToolBarDef_Caption", kToolbar, [] { return std::string("Halvane Toolbar"); });
}

// --- clsMenuTrevak

const std::array<MenuEntry, 9> kMenuEntries = {{
    {"Halvane.clsCmdHalvaneIntro", false},
    {"Halvane.clsCmdHalvaneResample", true},
    {"Halvane.clsCmdHalvaneSSBPI", false},
    {"Halvane.clsCmdHalvaneLSBPI", false},
    {"Halvane.clsCmdHalvaneStdz", false},
    {"Halvane.clsCmdHalvaneClassDict", false},
    {"Halvane.clsCmdHalvaneStep8", false},
    {"Halvane.clsCmdHalvaneRug", false},
    {"Halvane.clsCmdHalvaneHelp", true},
}};

std::int32_t clsMenuTrevak::ItemCount() {
    // One more than there are entries, as it stands.
    return Property("IMenuDef_ItemCount", kMenu, [] { return std::int32_t{10}; });
}

void clsMenuTrevak::GetItemInfo(std::int32_t pos, IItemDef& itemDef) {
    // The one procedure that passes its failure on into the host.
    Guarded({"IMenuDef_GetItemInfo", kMenu, kPassOn}, [&] {
        if (pos < 0 || pos >= static_cast<std::int32_t>(kMenuEntries.size())) return;
        itemDef.ID(kMenuEntries[pos].id);
        itemDef.Group(kMenuEntries[pos].group);
    });
}

std::string clsMenuTrevak::Name() {
    return Property("IMenuDef_Name", kMenu, [] { return std::string("Halvane Menu"); });
}

std::string clsMenuTrevak::Caption() {
    return Property("IMenuDef_Caption", kMenu, [] { return std::string("Halvane Menu"); });
}

// --- the commands' common part

const std::array<PageSlot*, 16>& PagesInHandOverOrder() {
    static const std::array<PageSlot*, 16> order = {
        &frmZoneSetup_resampling,
        &frmIntro,
        &frmRugosity,
        &frmRugosity_comp,
        &frmZoneSetup_inputdata,
        &frmZoneSetup_resampling_reqdata,
        &frmZoneStep1,
        &frmZoneStep1_reqdata,
        &frmZoneStep2,
        &frmZoneStep2_reqdata,
        &frmZoneStep3,
        &frmZoneStep3_reqdata,
        &frmZoneStep4,
        &frmZoneStep8,
        &frmZoneStep8_reqdata,
        &frmZoneStep8_comp,
    };
    return order;
}

clsCmdHalvane::clsCmdHalvane(const char* module, const Texts& texts,
                             std::vector<PageSlot*> unloadedAtTerminate)
    : module_(module), texts_(texts), unloadedAtTerminate_(std::move(unloadedAtTerminate)) {
    // Class_Initialize does nothing.
}

clsCmdHalvane::~clsCmdHalvane() { Class_Terminate(); }

void clsCmdHalvane::Class_Terminate() {
    Guarded({"Class_Terminate", module_, kTopLevel}, [this] {
        m_pApp.reset();
        m_pDoc.reset();
        m_pMap.reset();
        // Each class's pages are fixed and need not be the ones it used (the
        // rugosity command lets go of frmZoneStep8). Naming the slot makes a
        // page that was never made; then it goes.
        for (PageSlot* page : unloadedAtTerminate_) page->Get().Unload();
    });
}

bool clsCmdHalvane::Enabled() {
    return Property("ICommand_Enabled", module_, [] { return true; });
}

bool clsCmdHalvane::Checked() {
    return Property("ICommand_Checked", module_, [] { return false; });
}

std::string clsCmdHalvane::Name() {
    return Property("ICommand_Name", module_, [this] { return std::string(texts_.name); });
}

std::string clsCmdHalvane::Caption() {
    return Property("ICommand_Caption", module_, [this] { return std::string(texts_.caption); });
}

std::string clsCmdHalvane::Tooltip() {
    return Property("ICommand_Tooltip", module_, [this] { return std::string(texts_.tooltip); });
}

std::string clsCmdHalvane::Message() {
    return Property("ICommand_Message", module_, [this] { return std::string(texts_.message); });
}

std::string clsCmdHalvane::HelpFile() {
    return Property("ICommand_HelpFile", module_, [] { return std::string(); });
}

std::int32_t clsCmdHalvane::HelpContextID() {
    return Property("ICommand_HelpContextID", module_, [] { return std::int32_t{0}; });
}

OLE_HANDLE clsCmdHalvane::Bitmap() {
    return Property("ICommand_Bitmap", module_, [] { return OLE_HANDLE{0}; });
}

std::string clsCmdHalvane::Category() {
    return Property("ICommand_Category", module_, [] { return std::string(); });
}

void clsCmdHalvane::OnCreate(const map::ApplicationPtr& hook) {
    Guarded({"ICommand_OnCreate", module_, kTopLevel}, [&] {
        m_pApp = hook;
        m_pDoc = runtime::Deref(m_pApp).Document();
        m_pMap = runtime::Deref(m_pDoc).FocusMap();
    });
}

void clsCmdHalvane::GiveApplicationTo(PageSlot& page) { page.Get().m_pApp = m_pApp; }

void clsCmdHalvane::GiveApplicationToAllPages() {
    for (PageSlot* page : PagesInHandOverOrder()) GiveApplicationTo(*page);
}

void clsCmdHalvane::Click(const std::function<void()>& body) {
    Guarded({"ICommand_OnClick", module_, kTopLevel}, body);
}

void clsCmdHalvane::ClickStandAlone(PageSlot& stage, PageSlot& first) {
    Click([&] {
        g_b_StandAloneRun = true;
        GiveApplicationTo(stage);
        first.Show();
    });
}

// --- the nine commands

clsCmdHalvaneIntro::clsCmdHalvaneIntro()
    : clsCmdHalvane("clsCmdHalvaneIntro",
                    {"Halvane Classification Wizard", "Halvane_clsHalvaneIntro",
                     "Halvane Classification Wizard", "Halvane Classification Wizard"},
                    {&frmIntro}) {}

void clsCmdHalvaneIntro::OnClick() {
    Click([this] {
        g_b_StandAloneRun = false;
        GiveApplicationToAllPages();
        frmIntro.Show();
    });
}

clsCmdHalvaneResample::clsCmdHalvaneResample()
    : clsCmdHalvane(
          "clsCmdHalvaneResample",
          {"Resample", "Halvane_clsHalvaneResample", "Halvane Classification Wizard - Resample",
           "Halvane Classification Wizard - Resample"},
          {&frmZoneStep3, &frmZoneSetup_resampling}) {}

void clsCmdHalvaneResample::OnClick() {
    ClickStandAlone(frmZoneSetup_resampling, frmZoneSetup_resampling_reqdata);
}

clsCmdHalvaneSSBPI::clsCmdHalvaneSSBPI()
    : clsCmdHalvane("clsCmdHalvaneSSBPI",
                    {"Build Broad Scale BPI", "Halvane_clsHalvaneSSBPI", "Build Broad Scale BPI",
                     "Build Broad Scale BPI"},
                    {&frmZoneStep3}) {}

void clsCmdHalvaneSSBPI::OnClick() { ClickStandAlone(frmZoneStep1, frmZoneStep1_reqdata); }

clsCmdHalvaneLSBPI::clsCmdHalvaneLSBPI()
    : clsCmdHalvane("clsCmdHalvaneLSBPI",
                    {"Build Fine Scale BPI", "Halvane_clsHalvaneLSBPI", "Build Fine Scale BPI",
                     "Build Fine Scale BPI"},
                    {&frmZoneStep3}) {}

void clsCmdHalvaneLSBPI::OnClick() { ClickStandAlone(frmZoneStep2, frmZoneStep2_reqdata); }

clsCmdHalvaneStdz::clsCmdHalvaneStdz()
    : clsCmdHalvane("clsCmdHalvaneStdz",
                    {"Standardize BPI Grids", "Halvane_clsHalvaneStdz",
                     "Halvane Classification Wizard - Standardize BPI", "Standardize BPI Grids"},
                    {&frmZoneStep3}) {}

void clsCmdHalvaneStdz::OnClick() {
    Click([this] {
        g_b_StandAloneRun = true;
        g_p_LgScale_Std_RasterDataset.reset();
        g_p_SmScale_Std_RasterDataset.reset();
        GiveApplicationTo(frmZoneStep3);
        frmZoneStep3_reqdata.Show();
    });
}

void clsCmdHalvaneStdz::loadlayer() {
    Guarded({"loadlayer", module_, kTopLevel}, [this] { halvane::loadlayer(m_pMap); });
}

clsCmdHalvaneClassDict::clsCmdHalvaneClassDict()
    : clsCmdHalvane("clsCmdHalvaneClassDict",
                    {"Classification Dictionary Editor", "Halvane_clsHalvaneClassDict",
                     "Halvane Classification Wizard - Classification Dictionary Editor",
                     "Classification Dictionary Editor"},
                    {&frmZoneStep4}) {}

void clsCmdHalvaneClassDict::OnClick() { ClickStandAlone(frmZoneStep4, frmZoneStep4); }

clsCmdHalvaneStep8::clsCmdHalvaneStep8()
    : clsCmdHalvane("clsCmdHalvaneStep8",
                    {"Terrain Classification Builder", "Halvane_clsHalvaneStep8",
                     "Terrain Classification Builder", "Halvane Classification Builder"},
                    {&frmZoneStep8}) {}

void clsCmdHalvaneStep8::OnClick() { ClickStandAlone(frmZoneStep8, frmZoneStep8_reqdata); }

clsCmdHalvaneRug::clsCmdHalvaneRug()
    : clsCmdHalvane(
          "clsCmdHalvaneRug",
          {"Rugosity Builder", "Halvane_clsHalvaneRug", "Rugosity Builder", "Rugosity Builder"},
          {&frmZoneStep8}) {}

void clsCmdHalvaneRug::OnClick() { ClickStandAlone(frmRugosity, frmRugosity); }

// Help answers with the wizard command's Name: the two share it on purpose.
clsCmdHalvaneHelp::clsCmdHalvaneHelp()
    : clsCmdHalvane("clsCmdHalvaneHelp",
                    {"Help", "Halvane_clsHalvaneIntro", "Help", "Halvane Classification Help"},
                    {}) {}

void clsCmdHalvaneHelp::OnClick() {
    Click([this] {
        g_b_StandAloneRun = false;
        GiveApplicationToAllPages();
        HtmlHelpA(0, HelpFilePath(), ui::HH_DISPLAY_TOPIC, "introduction.htm");
    });
}

}  // namespace halvane::host
