// The component's classes as the host meets them: the texts of the toolbar,
// the menu and the nine commands, what a click does, and what a command does
// when the host lets it go. The objects come from the library's class
// factories, the pages are the real ones on the scripted desktop.

#include <gtest/gtest.h>

#include <QApplication>
#include <algorithm>
#include <memory>
#include <set>

#include "host/component/ClassTable.h"
#include "host/component/Commands.h"
#include "platform/map/Application.h"
#include "platform/raster/Storage.h"
#include "platform/reporting/HTMLHelp.h"
#include "support/GridFiles.h"
#include "support/PageDesktop.h"

extern "C" halvane::host::HRESULT DllGetClassObject(const char*, halvane::host::IClassFactory**);

namespace halvane {
namespace {

using namespace host;
using namespace pages;

// One object of a class, made through its factory as the host makes it.
std::shared_ptr<IComponentObject> Make(const std::string& progId) {
    const ClassInfo* info = ClassByProgId(progId);
    if (!info) throw std::runtime_error("no class " + progId);
    IClassFactory* factory = nullptr;
    if (DllGetClassObject(info->clsid, &factory) != S_OK) throw std::runtime_error(progId);
    return factory->CreateInstance();
}

std::vector<std::string> Names(const std::vector<PageSlot*>& pageSlots) {
    std::vector<std::string> names;
    for (const PageSlot* page : pageSlots) names.push_back(page->Name());
    return names;
}

class ComponentTest : public testing::PageDesktop {
protected:
    std::shared_ptr<map::Application> app = std::make_shared<map::Application>();
};

// --- texts

TEST_F(ComponentTest, TheNineCommandsAnswerWithTheirTexts) {
    struct Texts {
        const char* progId;
        const char* caption;
        const char* name;
        const char* message;
        const char* tooltip;
    };
    const Texts table[] = {
        {"Halvane.clsCmdHalvaneIntro", "Halvane Classification Wizard", "Halvane_clsHalvaneIntro",
         "Halvane Classification Wizard", "Halvane Classification Wizard"},
        {"Halvane.clsCmdHalvaneResample", "Resample", "Halvane_clsHalvaneResample",
         "Halvane Classification Wizard - Resample", "Halvane Classification Wizard - Resample"},
        {"Halvane.clsCmdHalvaneSSBPI", "Build Broad Scale BPI", "Halvane_clsHalvaneSSBPI",
         "Build Broad Scale BPI", "Build Broad Scale BPI"},
        {"Halvane.clsCmdHalvaneLSBPI", "Build Fine Scale BPI", "Halvane_clsHalvaneLSBPI",
         "Build Fine Scale BPI", "Build Fine Scale BPI"},
        {"Halvane.clsCmdHalvaneStdz", "Standardize BPI Grids", "Halvane_clsHalvaneStdz",
         "Halvane Classification Wizard - Standardize BPI", "Standardize BPI Grids"},
        {"Halvane.clsCmdHalvaneClassDict", "Classification Dictionary Editor",
         "Halvane_clsHalvaneClassDict",
         "Halvane Classification Wizard - Classification Dictionary Editor",
         "Classification Dictionary Editor"},
        {"Halvane.clsCmdHalvaneStep8", "Terrain Classification Builder", "Halvane_clsHalvaneStep8",
         "Terrain Classification Builder", "Halvane Classification Builder"},
        {"Halvane.clsCmdHalvaneRug", "Rugosity Builder", "Halvane_clsHalvaneRug",
         "Rugosity Builder", "Rugosity Builder"},
        // Help shares the wizard's Name.
        {"Halvane.clsCmdHalvaneHelp", "Help", "Halvane_clsHalvaneIntro", "Help",
         "Halvane Classification Help"},
    };
    for (const Texts& expected : table) {
        SCOPED_TRACE(expected.progId);
        const auto object = Make(expected.progId);
        ICommand* command = object->AsCommand();
        ASSERT_NE(command, nullptr);
        EXPECT_EQ(object->AsToolBarDef(), nullptr);
        EXPECT_EQ(object->AsMenuDef(), nullptr);
        EXPECT_EQ(command->Caption(), expected.caption);
        EXPECT_EQ(command->Name(), expected.name);
        EXPECT_EQ(command->Message(), expected.message);
        EXPECT_EQ(command->Tooltip(), expected.tooltip);
        EXPECT_TRUE(command->Enabled());
        EXPECT_FALSE(command->Checked());
        EXPECT_EQ(command->Bitmap(), 0);
        EXPECT_EQ(command->Category(), "");
        EXPECT_EQ(command->HelpFile(), "");
        EXPECT_EQ(command->HelpContextID(), 0);
    }
    EXPECT_TRUE(Reports().empty());
}

TEST_F(ComponentTest, TheToolbarHoldsTheMenuAndTheMenuTenPositionsOfWhichNineAreFilled) {
    const auto toolbarObject = Make("Halvane.clsToolbar");
    IToolBarDef* toolbar = toolbarObject->AsToolBarDef();
    ASSERT_NE(toolbar, nullptr);
    EXPECT_EQ(toolbarObject->AsRootLevelMenu(), nullptr);
    EXPECT_EQ(toolbar->Name(), "Halvane_Toolbar");
    EXPECT_EQ(toolbar->Caption(), "Halvane Toolbar");
    EXPECT_EQ(toolbar->ItemCount(), 1);
    ItemDef first;
    toolbar->GetItemInfo(0, first);
    EXPECT_EQ(first.id, "Halvane.clsMenuTrevak");
    EXPECT_FALSE(first.groupSet);
    ItemDef other;
    toolbar->GetItemInfo(1, other);
    EXPECT_FALSE(other.idSet || other.groupSet);

    const auto menuObject = Make("Halvane.clsMenuTrevak");
    IMenuDef* menu = menuObject->AsMenuDef();
    ASSERT_NE(menu, nullptr);
    EXPECT_NE(menuObject->AsRootLevelMenu(), nullptr);
    EXPECT_EQ(menu->Name(), "Halvane Menu");
    EXPECT_EQ(menu->Caption(), "Halvane Menu");
    ASSERT_EQ(menu->ItemCount(), 10);
    struct Entry {
        const char* id;  // null: the position sets nothing
        bool group;
    };
    const Entry expected[10] = {
        {"Halvane.clsCmdHalvaneIntro", false}, {"Halvane.clsCmdHalvaneResample", true},
        {"Halvane.clsCmdHalvaneSSBPI", false}, {"Halvane.clsCmdHalvaneLSBPI", false},
        {"Halvane.clsCmdHalvaneStdz", false},  {"Halvane.clsCmdHalvaneClassDict", false},
        {"Halvane.clsCmdHalvaneStep8", false}, {"Halvane.clsCmdHalvaneRug", false},
        {"Halvane.clsCmdHalvaneHelp", true},   {nullptr, false},
    };
    for (int position = 0; position < 10; ++position) {
        SCOPED_TRACE(position);
        ItemDef item;
        menu->GetItemInfo(position, item);
        if (!expected[position].id) {
            EXPECT_FALSE(item.idSet || item.groupSet);
            continue;
        }
        EXPECT_EQ(item.id, expected[position].id);
        EXPECT_TRUE(item.groupSet);
        EXPECT_EQ(item.group, expected[position].group);
    }
}

// An item definition of the host that fails when it is filled.
class FailingItemDef : public IItemDef {
public:
    void ID(const std::string&) override { throw runtime::RuntimeFailure(runtime::kTypeMismatch); }
    void Group(bool) override {}
};

TEST_F(ComponentTest, TheMenuPassesAFailureOfGetItemInfoOnWhileTheToolbarReportsIt) {
    const auto menuObject = Make("Halvane.clsMenuTrevak");
    FailingItemDef item;
    try {
        menuObject->AsMenuDef()->GetItemInfo(0, item);
        ADD_FAILURE() << "no failure passed on";
    } catch (const runtime::Failure& failure) {
        EXPECT_EQ(failure.number, 13);
        EXPECT_NE(failure.description.find("IMenuDef_GetItemInfo clsMenuTrevak"),
                  std::string::npos);
    }
    EXPECT_TRUE(Reports().empty());
    ErrorHandling::m_bErrorTextBuilt = false;

    const auto toolbarObject = Make("Halvane.clsToolbar");
    toolbarObject->AsToolBarDef()->GetItemInfo(0, item);
    ASSERT_EQ(Reports().size(), 1u);
    EXPECT_NE(Reports()[0].find("IToolBarDef_GetItemInfo clsToolbar"), std::string::npos);
}

// --- OnCreate

TEST_F(ComponentTest, OnCreateKeepsTheApplicationItsDocumentAndTheFocusMapOfThatMoment) {
    clsCmdHalvaneRug command;
    command.OnCreate(app);
    EXPECT_EQ(command.m_pApp, app);
    EXPECT_EQ(command.m_pDoc, app->Document());
    EXPECT_EQ(command.m_pMap, app->Document()->FocusMap());
    EXPECT_TRUE(Reports().empty());
}

TEST_F(ComponentTest, OnCreateWithoutAnApplicationReportsAndReturns) {
    clsCmdHalvaneIntro command;
    command.OnCreate(nullptr);
    EXPECT_EQ(command.m_pApp, nullptr);
    ASSERT_EQ(Reports().size(), 1u);
    EXPECT_NE(Reports()[0].find("ICommand_OnCreate clsCmdHalvaneIntro"), std::string::npos);
    EXPECT_NE(Reports()[0].find("91"), std::string::npos);
}

// --- OnClick

TEST(ComponentPagesTest, AllSixteenPagesGetTheApplicationInTheDescribedOrder) {
    EXPECT_EQ(Names({PagesInHandOverOrder().begin(), PagesInHandOverOrder().end()}),
              (std::vector<std::string>{
                  "frmZoneSetup_resampling", "frmIntro", "frmRugosity", "frmRugosity_comp",
                  "frmZoneSetup_inputdata", "frmZoneSetup_resampling_reqdata", "frmZoneStep1",
                  "frmZoneStep1_reqdata", "frmZoneStep2", "frmZoneStep2_reqdata", "frmZoneStep3",
                  "frmZoneStep3_reqdata", "frmZoneStep4", "frmZoneStep8", "frmZoneStep8_reqdata",
                  "frmZoneStep8_comp"}));
    EXPECT_EQ(AllPageSlots().size(), 16u);
}

struct ClickCase {
    const char* progId;
    bool standAlone;
    std::vector<PageSlot*> receivers;  // empty: all sixteen
    const char* shows;                 // null: no page
};

void PrintTo(const ClickCase& click, std::ostream* out) { *out << click.progId; }

class CommandClickTest : public ComponentTest, public ::testing::WithParamInterface<ClickCase> {};

TEST_P(CommandClickTest, SetsTheRunModeHandsTheApplicationOnAndShowsItsWindow) {
    const ClickCase& click = GetParam();
    std::vector<PageSlot*> receivers = click.receivers;
    if (receivers.empty()) {
        receivers.assign(PagesInHandOverOrder().begin(), PagesInHandOverOrder().end());
    }
    const auto object = Make(click.progId);
    ICommand& command = *object->AsCommand();
    command.OnCreate(app);
    g_b_StandAloneRun = !click.standAlone;

    command.OnClick();

    EXPECT_EQ(static_cast<bool>(g_b_StandAloneRun), click.standAlone);
    EXPECT_EQ(ShownPages(),
              click.shows ? std::vector<std::string>{click.shows} : std::vector<std::string>{});
    // The receivers and the page shown are made, and only they; only the
    // receivers hold the application.
    std::set<std::string> made;
    for (PageSlot* page : receivers) {
        SCOPED_TRACE(page->Name());
        ASSERT_TRUE(page->Loaded());
        EXPECT_EQ(page->Get().m_pApp, app);
        made.insert(page->Name());
    }
    if (click.shows) made.insert(click.shows);
    EXPECT_EQ(LoadedPages(), std::vector<std::string>(made.begin(), made.end()));
    for (PageSlot* page : AllPageSlots()) {
        const bool receiver = std::count(receivers.begin(), receivers.end(), page) > 0;
        if (page->Loaded() && !receiver) {
            EXPECT_EQ(page->Get().m_pApp, nullptr) << page->Name();
        }
    }
    if (click.shows) {
        EXPECT_TRUE(ui.Events().empty());
    } else {
        // Help: the introduction topic, with no owner window.
        EXPECT_EQ(ui.Events(),
                  (std::vector<ui::Event>{{"help", "introduction.htm", HelpFilePath(), 0}}));
    }
    EXPECT_TRUE(Reports().empty());
}

INSTANTIATE_TEST_SUITE_P(
    NineCommands, CommandClickTest,
    ::testing::Values(
        ClickCase{"Halvane.clsCmdHalvaneIntro", false, {}, "frmIntro"},
        ClickCase{"Halvane.clsCmdHalvaneResample",
                  true,
                  {&frmZoneSetup_resampling},
                  "frmZoneSetup_resampling_reqdata"},
        ClickCase{"Halvane.clsCmdHalvaneSSBPI", true, {&frmZoneStep1}, "frmZoneStep1_reqdata"},
        ClickCase{"Halvane.clsCmdHalvaneLSBPI", true, {&frmZoneStep2}, "frmZoneStep2_reqdata"},
        ClickCase{"Halvane.clsCmdHalvaneStdz", true, {&frmZoneStep3}, "frmZoneStep3_reqdata"},
        ClickCase{"Halvane.clsCmdHalvaneClassDict", true, {&frmZoneStep4}, "frmZoneStep4"},
        ClickCase{"Halvane.clsCmdHalvaneStep8", true, {&frmZoneStep8}, "frmZoneStep8_reqdata"},
        ClickCase{"Halvane.clsCmdHalvaneRug", true, {&frmRugosity}, "frmRugosity"},
        ClickCase{"Halvane.clsCmdHalvaneHelp", false, {}, nullptr}),
    [](const auto& info) { return std::string(info.param.progId).substr(21); });

TEST_F(ComponentTest, OnClickBeforeOnCreateHandsOutAnEmptyReference) {
    frmZoneStep1.Get().m_pApp = app;
    clsCmdHalvaneSSBPI command;
    command.OnClick();
    EXPECT_EQ(frmZoneStep1.Get().m_pApp, nullptr);
    EXPECT_TRUE(frmZoneStep1_reqdata.Shown());
}

TEST_F(ComponentTest, StandardizeClearsBothStandardizedGridsAndLoadlayerUsesItsMap) {
    testing::TempDir dir;
    auto dataset = [&](const std::string& name) {
        testing::WriteGrid(dir / (name + ".tif"), raster::Grid{0, 10, 10, 10, 2, 1}, {1, 2}, true);
        return raster::RasterDataset::Open(dir / (name + ".tif"));
    };
    clsCmdHalvaneStdz command;
    command.OnCreate(app);
    g_p_LgScale_Std_RasterDataset = dataset("fine_std");
    g_p_SmScale_Std_RasterDataset = dataset("broad_std");
    command.loadlayer();
    const map::MapPtr focus = app->Document()->FocusMap();
    ASSERT_EQ(focus->LayerCount(), 2);
    EXPECT_EQ(focus->Layer(0)->Name(), "broad_std");
    EXPECT_EQ(focus->Layer(1)->Name(), "fine_std");

    command.OnClick();
    EXPECT_EQ(g_p_LgScale_Std_RasterDataset, nullptr);
    EXPECT_EQ(g_p_SmScale_Std_RasterDataset, nullptr);
    command.loadlayer();
    EXPECT_EQ(focus->LayerCount(), 2);
    EXPECT_TRUE(Reports().empty());
}

// --- Class_Terminate

TEST_F(ComponentTest, LettingGoReleasesTheReferencesAndUnloadsTheClassesPages) {
    struct Terminate {
        const char* progId;
        std::vector<std::string> unloaded;
    };
    const Terminate table[] = {
        {"Halvane.clsCmdHalvaneIntro", {"frmIntro"}},
        {"Halvane.clsCmdHalvaneResample", {"frmZoneStep3", "frmZoneSetup_resampling"}},
        {"Halvane.clsCmdHalvaneSSBPI", {"frmZoneStep3"}},
        {"Halvane.clsCmdHalvaneLSBPI", {"frmZoneStep3"}},
        {"Halvane.clsCmdHalvaneStdz", {"frmZoneStep3"}},
        {"Halvane.clsCmdHalvaneClassDict", {"frmZoneStep4"}},
        {"Halvane.clsCmdHalvaneStep8", {"frmZoneStep8"}},
        {"Halvane.clsCmdHalvaneRug", {"frmZoneStep8"}},
        {"Halvane.clsCmdHalvaneHelp", {}},
        // The toolbar and the menu hold nothing and unload nothing.
        {"Halvane.clsToolbar", {}},
        {"Halvane.clsMenuTrevak", {}},
    };
    auto pending = [] {
        std::vector<std::string> names;
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (dynamic_cast<Page*>(widget)) names.push_back(widget->objectName().toStdString());
        }
        std::sort(names.begin(), names.end());
        return names;
    };
    for (const Terminate& expected : table) {
        SCOPED_TRACE(expected.progId);
        std::vector<std::string> sorted = expected.unloaded;
        std::sort(sorted.begin(), sorted.end());

        // No page is loaded: the table's pages are made to be unloaded, so
        // they wait for deletion, and none stays loaded.
        auto object = Make(expected.progId);
        ICommand* command = object->AsCommand();
        if (command) command->OnCreate(app);
        EXPECT_EQ(app.use_count(), command ? 2 : 1);
        object.reset();
        EXPECT_EQ(app.use_count(), 1);
        EXPECT_EQ(pending(), sorted);
        EXPECT_TRUE(LoadedPages().empty());
        FlushUnloads();
    }
    EXPECT_TRUE(Reports().empty());
}

}  // namespace
}  // namespace halvane
