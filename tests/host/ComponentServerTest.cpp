// The component as a library: registration in the registry the host reads,
// loading through the registry and dlopen, one object of each class by ProgID,
// DllCanUnloadNow, and unregistration.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/component/ClassTable.h"
#include "host/component/ComponentHost.h"
#include "host/component/Registry.h"
#include "platform/map/Application.h"
#include "platform/reporting/HTMLHelp.h"
#include "support/GridFiles.h"
#include "support/PageDesktop.h"

extern "C" {
halvane::host::HRESULT DllGetClassObject(const char*, halvane::host::IClassFactory**);
halvane::host::HRESULT DllCanUnloadNow();
halvane::host::HRESULT DllRegisterServer();
halvane::host::HRESULT DllUnregisterServer();
}

namespace halvane {
namespace {

using namespace host;
namespace fs = std::filesystem;

std::string Read(const std::string& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// The registry lies in a folder of the test's own.
class ComponentServerTest : public testing::PageDesktop {
protected:
    ComponentServerTest() {
        const char* previous = std::getenv("HALVANE_REGISTRY");
        if (previous) previous_ = previous;
        setenv("HALVANE_REGISTRY", (folder_.Path() / "registry").c_str(), 1);
    }
    ~ComponentServerTest() override {
        if (previous_.empty()) {
            unsetenv("HALVANE_REGISTRY");
        } else {
            setenv("HALVANE_REGISTRY", previous_.c_str(), 1);
        }
    }

    testing::TempDir folder_;
    std::string previous_;
};

const std::string kLibrary = fs::canonical(HALVANE_COMPONENT_LIBRARY).string();
const std::string kForeign =
    "Other.clsThing\t{00000000-0000-0000-0000-000000000001}\t/opt/other.so";

TEST_F(ComponentServerTest, TheRegistryFolderComesFromTheEnvironment) {
    EXPECT_EQ(RegistryFile(), (folder_.Path() / "registry" / "classes.reg").string());
    unsetenv("HALVANE_REGISTRY");
    setenv("XDG_CONFIG_HOME", "/tmp/config", 1);
    EXPECT_EQ(RegistryFolder(), "/tmp/config/halvane");
    unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(RegistryFolder(), std::string(std::getenv("HOME")) + "/.config/halvane");
}

TEST_F(ComponentServerTest, RegistrationRecordsTheElevenClassesAndUnregistrationOnlyThem) {
    fs::create_directories(fs::path(RegistryFile()).parent_path());
    std::ofstream(RegistryFile()) << "# other components\n" << kForeign << "\n";

    ASSERT_EQ(DllRegisterServer(), S_OK);
    ASSERT_EQ(DllRegisterServer(), S_OK);  // again: no line twice
    std::vector<RegistryEntry> expected{
        {"Other.clsThing", "{00000000-0000-0000-0000-000000000001}", "/opt/other.so"}};
    for (const ClassInfo& info : kClasses) expected.push_back({info.progId, info.clsid, kLibrary});
    EXPECT_EQ(ReadRegistry(), expected);
    EXPECT_EQ(kClasses[0].progId, std::string("Halvane.clsToolbar"));
    EXPECT_EQ(kClasses[0].clsid, std::string("{F7EA5D5C-DD5A-41B2-B602-90BBA0066560}"));

    ASSERT_EQ(DllUnregisterServer(), S_OK);
    EXPECT_EQ(Read(RegistryFile()), "# other components\n" + kForeign + "\n");
}

TEST_F(ComponentServerTest, TheHelpFileLiesBesideTheComponent) {
    EXPECT_EQ(HelpFilePath(), fs::path(kLibrary).parent_path() / "Help/HalvaneTool.help");
    EXPECT_TRUE(fs::exists(fs::path(HelpFilePath()) / "introduction.htm"));
}

TEST_F(ComponentServerTest, TheClassObjectsAreFoundByClassIdentifierInAnyCase) {
    IClassFactory* factory = nullptr;
    EXPECT_EQ(DllGetClassObject("{b1c92728-daa4-4126-825a-341fd2664464}", &factory), S_OK);
    ASSERT_NE(factory, nullptr);
    EXPECT_EQ(factory->CreateInstance()->AsCommand()->Caption(), "Halvane Classification Wizard");
    EXPECT_EQ(DllGetClassObject("{00000000-0000-0000-0000-000000000001}", &factory),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(factory, nullptr);
    EXPECT_EQ(DllGetClassObject(kClasses[0].clsid, nullptr), E_POINTER);
}

TEST_F(ComponentServerTest, TheHostLoadsTheRegisteredComponentAndBuildsItsMenu) {
    ASSERT_EQ(DllRegisterServer(), S_OK);
    ASSERT_EQ(DllCanUnloadNow(), S_OK);
    {
        ComponentHost component;
        ASSERT_TRUE(component.Load()) << component.Error();
        EXPECT_EQ(component.Error(), "");
        std::vector<std::string> progIds;
        for (const ClassInfo& info : kClasses) progIds.push_back(info.progId);
        EXPECT_EQ(component.ProgIds(), progIds);
        EXPECT_EQ(DllCanUnloadNow(), S_FALSE);

        const auto app = std::make_shared<map::Application>();
        component.CreateCommands(app);

        const auto toolbars = component.Toolbars();
        ASSERT_EQ(toolbars.size(), 1u);
        EXPECT_EQ(toolbars[0].progId, "Halvane.clsToolbar");
        EXPECT_EQ(toolbars[0].definition->Caption(), "Halvane Toolbar");
        const auto buttons = component.ToolbarItems(*toolbars[0].definition);
        ASSERT_EQ(buttons.size(), 1u);
        EXPECT_EQ(buttons[0].progId, "Halvane.clsMenuTrevak");
        ASSERT_NE(buttons[0].menu, nullptr);
        EXPECT_EQ(buttons[0].menu->Caption(), "Halvane Menu");

        // Nine entries of ten positions; a separator before Resample and Help.
        std::vector<std::string> entries;
        for (const auto& item : component.MenuItems(*buttons[0].menu)) {
            ASSERT_NE(item.command, nullptr) << item.progId;
            entries.push_back((item.group ? "| " : "") + item.command->Caption());
        }
        EXPECT_EQ(entries, (std::vector<std::string>{
                               "Halvane Classification Wizard", "| Resample",
                               "Build Broad Scale BPI", "Build Fine Scale BPI",
                               "Standardize BPI Grids", "Classification Dictionary Editor",
                               "Terrain Classification Builder", "Rugosity Builder", "| Help"}));

        // The loaded component shows the pages of this process.
        component.Command("Halvane.clsCmdHalvaneIntro")->OnClick();
        EXPECT_TRUE(pages::frmIntro.Shown());
        EXPECT_EQ(pages::frmRugosity.Get().m_pApp, app);
        EXPECT_FALSE(static_cast<bool>(g_b_StandAloneRun));
        component.Command("Halvane.clsCmdHalvaneSSBPI")->OnClick();
        EXPECT_TRUE(pages::frmZoneStep1_reqdata.Shown());

        component.Release();
        EXPECT_EQ(DllCanUnloadNow(), S_OK);
        EXPECT_TRUE(component.ProgIds().empty());
    }
    ASSERT_EQ(DllUnregisterServer(), S_OK);
    ComponentHost nothing;
    EXPECT_FALSE(nothing.Load());
    EXPECT_NE(nothing.Error().find("No component is registered"), std::string::npos);
}

TEST_F(ComponentServerTest, AClassWhoseLibraryIsMissingIsLeftOutAndNamed) {
    ASSERT_EQ(DllRegisterServer(), S_OK);
    ASSERT_TRUE(RegisterEntries({{"Other.clsThing", "{00000000-0000-0000-0000-000000000001}",
                                  (folder_.Path() / "missing.so").string()}}));
    ComponentHost component;
    EXPECT_TRUE(component.Load());
    EXPECT_EQ(component.ProgIds().size(), kClasses.size());
    EXPECT_NE(component.Error().find("Other.clsThing"), std::string::npos);
}

}  // namespace
}  // namespace halvane
