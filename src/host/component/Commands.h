#pragma once
// The component's eleven classes: the toolbar definition, the
// root-level menu and the nine commands. The host makes them through the
// library's class factories (Server.cpp) and reaches them through the host
// interfaces; the tests also name them directly.
//
// Every procedure here reports its own failures (top level) and returns its
// type's default, except IMenuDef_GetItemInfo, which passes them on into the
// host.

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host/component/HostInterfaces.h"
#include "pages/Page.h"

namespace halvane::host {

// Counts the live objects of the component, for DllCanUnloadNow.
class CountedObject : public IComponentObject {
public:
    CountedObject();
    CountedObject(const CountedObject&) = delete;
    CountedObject& operator=(const CountedObject&) = delete;
    ~CountedObject() override;
    // Objects of the eleven classes alive now.
    static int LiveObjects();
};

class clsToolbar : public CountedObject, public IToolBarDef {
public:
    IToolBarDef* AsToolBarDef() override { return this; }

    std::int32_t ItemCount() override;
    void GetItemInfo(std::int32_t pos, IItemDef& itemDef) override;
    std::string Name() override;
    std::string Caption() override;
};

class clsMenuTrevak : public CountedObject, public IMenuDef, public IRootLevelMenu {
public:
    IMenuDef* AsMenuDef() override { return this; }
    IRootLevelMenu* AsRootLevelMenu() override { return this; }

    std::int32_t ItemCount() override;
    void GetItemInfo(std::int32_t pos, IItemDef& itemDef) override;
    std::string Name() override;
    std::string Caption() override;
};

// The menu's entries by position; positions 9 and on have none.
struct MenuEntry {
    const char* id;
    bool group;
};
extern const std::array<MenuEntry, 9> kMenuEntries;

// The order in which the wizard and Help commands hand the application to all
// sixteen pages.
const std::array<pages::PageSlot*, 16>& PagesInHandOverOrder();

// What the nine commands share: the fixed properties, the three references,
// OnCreate, and Class_Terminate with the class's unload table.
class clsCmdHalvane : public CountedObject, public ICommand {
public:
    ICommand* AsCommand() override { return this; }
    // Runs Class_Terminate.
    ~clsCmdHalvane() override;

    bool Enabled() override;
    bool Checked() override;
    std::string Name() override;
    std::string Caption() override;
    std::string Tooltip() override;
    std::string Message() override;
    std::string HelpFile() override;
    std::int32_t HelpContextID() override;
    OLE_HANDLE Bitmap() override;
    std::string Category() override;
    void OnCreate(const map::ApplicationPtr& hook) override;

    map::ApplicationPtr m_pApp;
    map::MxDocumentPtr m_pDoc;
    map::MapPtr m_pMap;

    // The texts the host shows for the command.
    struct Texts {
        const char* caption;
        const char* name;
        const char* message;
        const char* tooltip;
    };

protected:
    clsCmdHalvane(const char* module, const Texts& texts,
                  std::vector<pages::PageSlot*> unloadedAtTerminate);

    // Hands m_pApp to `page`, which is made if it is not.
    void GiveApplicationTo(pages::PageSlot& page);
    // Hands m_pApp to all sixteen pages, in the hand-over order.
    void GiveApplicationToAllPages();
    // Runs `body` as this class's top-level ICommand_OnClick.
    void Click(const std::function<void()>& body);
    // The click of a stand-alone command: the run mode, the application to
    // the stage's page, which needs it later, and the window that opens the
    // stage (its required-data dialog, or the page itself).
    void ClickStandAlone(pages::PageSlot& stage, pages::PageSlot& first);

    const char* module_;

private:
    void Class_Terminate();

    Texts texts_;
    std::vector<pages::PageSlot*> unloadedAtTerminate_;
};

class clsCmdHalvaneIntro : public clsCmdHalvane {
public:
    clsCmdHalvaneIntro();
    void OnClick() override;
};

class clsCmdHalvaneResample : public clsCmdHalvane {
public:
    clsCmdHalvaneResample();
    void OnClick() override;
};

class clsCmdHalvaneSSBPI : public clsCmdHalvane {
public:
    clsCmdHalvaneSSBPI();
    void OnClick() override;
};

class clsCmdHalvaneLSBPI : public clsCmdHalvane {
public:
    clsCmdHalvaneLSBPI();
    void OnClick() override;
};

class clsCmdHalvaneStdz : public clsCmdHalvane {
public:
    clsCmdHalvaneStdz();
    void OnClick() override;
    // Adds the standardized fine-scale and then broad-scale grid of the
    // session to the map this command holds. Nothing calls it.
    void loadlayer();
};

class clsCmdHalvaneClassDict : public clsCmdHalvane {
public:
    clsCmdHalvaneClassDict();
    void OnClick() override;
};

class clsCmdHalvaneStep8 : public clsCmdHalvane {
public:
    clsCmdHalvaneStep8();
    void OnClick() override;
};

class clsCmdHalvaneRug : public clsCmdHalvane {
public:
    clsCmdHalvaneRug();
    void OnClick() override;
};

class clsCmdHalvaneHelp : public clsCmdHalvane {
public:
    clsCmdHalvaneHelp();
    void OnClick() override;
};

}  // namespace halvane::host
