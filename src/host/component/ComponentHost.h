#pragma once
// The host's side of the component: what halvane-desktop does to load it.
// Reads the registry (Registry.h), opens each library it names with dlopen,
// asks DllGetClassObject for each registered class's factory and makes one
// object of each class, and gives the host the toolbars, menus and commands
// by ProgID. No toolkit here.
//
//     ComponentHost component;
//     if (!component.Load()) ... component.Error() ...
//     component.CreateCommands(app);            // OnCreate(app) on each command
//     for (auto& toolbar : component.Toolbars())          // "Halvane Toolbar"
//         for (auto& item : component.ToolbarItems(*toolbar.definition))
//             if (item.menu)                               // "Halvane Menu"
//                 for (auto& entry : component.MenuItems(*item.menu))
//                     ... a separator first when entry.group, then
//                     ... entry.command->Caption(), on click entry.command->OnClick()
//
// The menu answers for 10 positions and fills 9: position 9 has no ID, and
// MenuItems leaves it out.
//
// Objects must be released (Release() or the destructor) while the
// QApplication still lives: a command's Class_Terminate unloads pages.
//
// Registration: `halvane-regsvr <library>` (or RegisterServer below)
// records the component's classes; `halvane-regsvr -u <library>` removes them.
//
// Linking: the component library links the shared core (libhalvane_core.so,
// every layer from the pages down). A host that loads it must link that same
// core and none of the static layer libraries, so that the process has one
// session, one set of page slots and one services object: the desktop
// installs its Qt services and the component's pages use them.

#include <memory>
#include <string>
#include <vector>

#include "host/component/HostInterfaces.h"

namespace halvane::host {

class ComponentHost {
public:
    ComponentHost() = default;
    ~ComponentHost();
    ComponentHost(const ComponentHost&) = delete;
    ComponentHost& operator=(const ComponentHost&) = delete;

    // Loads every class of the registry: false when none could be made, with
    // the reasons in Error(). Classes that fail are left out and named in
    // Error(); the rest load. Loading again first releases what was loaded.
    bool Load();
    // What went wrong at the last Load or MenuItems, "" when nothing did.
    const std::string& Error() const { return error_; }

    // The ProgIDs of the objects made, in registry order.
    std::vector<std::string> ProgIds() const;
    // The object of a ProgID and its host interfaces; null when it has none.
    IComponentObject* Object(const std::string& progId) const;
    ICommand* Command(const std::string& progId) const;
    IToolBarDef* ToolBar(const std::string& progId) const;
    IMenuDef* Menu(const std::string& progId) const;

    // Calls OnCreate(app) on every command, in registry order.
    void CreateCommands(const map::ApplicationPtr& app);

    struct Toolbar {
        std::string progId;
        IToolBarDef* definition;
    };
    // Every toolbar definition that was made.
    std::vector<Toolbar> Toolbars() const;

    // One filled position of a toolbar or a menu: the item's ProgID, the
    // object behind it as a command or as a menu (null when it is not one or
    // was not made), and whether it starts a group.
    struct Item {
        int position;
        std::string progId;
        ICommand* command;
        IMenuDef* menu;
        bool group;
    };
    // Positions 0..ItemCount-1 that have an ID, in order. A position whose
    // GetItemInfo fails (the menu passes failures on) is left out and noted
    // in Error().
    std::vector<Item> ToolbarItems(IToolBarDef& toolbar);
    std::vector<Item> MenuItems(IMenuDef& menu);

    // Drops every object, then closes each library that says it can unload.
    void Release();

    // Self-registration: opens `library` and calls its DllRegisterServer, or
    // DllUnregisterServer. The entry's result, or E_FAIL with `error` set
    // when the library or the entry cannot be found.
    static HRESULT RegisterServer(const std::string& library, bool unregister,
                                  std::string* error = nullptr);

private:
    struct Library;
    struct Loaded {
        std::string progId;
        std::shared_ptr<IComponentObject> object;
    };
    template <class Definition>
    std::vector<Item> Items(Definition& definition);

    std::vector<std::shared_ptr<Library>> libraries_;
    std::vector<Loaded> objects_;
    std::string error_;
};

}  // namespace halvane::host
