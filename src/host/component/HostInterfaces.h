#pragma once
// The host interfaces of the component, shared by the component
// library and the host that loads it. They stand for the host framework's
// COM interfaces: ICommand, IToolBarDef, IMenuDef, IRootLevelMenu, IItemDef,
// with their operations in the order of their slots.
//
// An object of the component is an IComponentObject; the host asks it for one
// of its host interfaces the way COM's QueryInterface would (As...(), null
// when the class does not implement it). The host owns the object through the
// shared pointer that the class factory gives, and the interface pointers live
// as long as that object does. Objects are made by the library's code and die
// there, so the library must stay loaded while any of them lives
// (DllCanUnloadNow).
//
// The four entries of the library are extern "C" and have the signatures of
// the pointer types at the end of this header.
//
// No toolkit here: the host and the component include this alone (and the
// map model's forward declarations).

#include <cstdint>
#include <memory>
#include <string>

#include "platform/map/Fwd.h"

namespace halvane::host {

// --- Result codes of the entries, as COM's HRESULT.
using HRESULT = std::int32_t;
inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005u);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003u);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = static_cast<HRESULT>(0x80040111u);
inline constexpr HRESULT SELFREG_E_CLASS = static_cast<HRESULT>(0x80040201u);

// A picture handle; 0 is no picture.
using OLE_HANDLE = std::intptr_t;

// Given to GetItemInfo: the definition fills what it knows, ID and Group.
class IItemDef {
public:
    virtual ~IItemDef() = default;
    // The ProgID of the item's command or menu.
    virtual void ID(const std::string& progId) = 0;
    // True: the item starts a new group, which the host shows as a separator
    // before it.
    virtual void Group(bool group) = 0;
};

// An item definition that records what was set, for hosts and tests.
class ItemDef : public IItemDef {
public:
    void ID(const std::string& progId) override {
        id = progId;
        idSet = true;
    }
    void Group(bool value) override {
        group = value;
        groupSet = true;
    }

    std::string id;
    bool group = false;
    bool idSet = false;
    bool groupSet = false;
};

class ICommand {
public:
    virtual ~ICommand() = default;
    virtual bool Enabled() = 0;
    virtual bool Checked() = 0;
    virtual std::string Name() = 0;
    virtual std::string Caption() = 0;
    virtual std::string Tooltip() = 0;
    virtual std::string Message() = 0;
    virtual std::string HelpFile() = 0;
    virtual std::int32_t HelpContextID() = 0;
    virtual OLE_HANDLE Bitmap() = 0;
    virtual std::string Category() = 0;
    // `hook` is the host's application object.
    virtual void OnCreate(const map::ApplicationPtr& hook) = 0;
    virtual void OnClick() = 0;
};

class IToolBarDef {
public:
    virtual ~IToolBarDef() = default;
    virtual std::int32_t ItemCount() = 0;
    virtual void GetItemInfo(std::int32_t pos, IItemDef& itemDef) = 0;
    virtual std::string Name() = 0;
    virtual std::string Caption() = 0;
};

class IMenuDef {
public:
    virtual ~IMenuDef() = default;
    virtual std::int32_t ItemCount() = 0;
    // May throw (runtime::Failure): its failure passes on into the host.
    virtual void GetItemInfo(std::int32_t pos, IItemDef& itemDef) = 0;
    virtual std::string Name() = 0;
    virtual std::string Caption() = 0;
};

// Marker: the menu goes at the root of the host's menus. No operations.
class IRootLevelMenu {
public:
    virtual ~IRootLevelMenu() = default;
};

// What the class factory makes: one object of a class, which answers for the
// host interfaces it implements.
class IComponentObject {
public:
    virtual ~IComponentObject() = default;
    virtual ICommand* AsCommand() { return nullptr; }
    virtual IToolBarDef* AsToolBarDef() { return nullptr; }
    virtual IMenuDef* AsMenuDef() { return nullptr; }
    virtual IRootLevelMenu* AsRootLevelMenu() { return nullptr; }
};

// What DllGetClassObject gives for a class identifier. The factory belongs
// to the library and lives as long as it stays loaded.
class IClassFactory {
public:
    virtual ~IClassFactory() = default;
    // A new object of the class; never null.
    virtual std::shared_ptr<IComponentObject> CreateInstance() = 0;
};

// --- The four entries, looked up by these names with dlsym.
// rclsid: a class identifier as text in braces, "{F7EA5D5C-...}", any case.
// S_OK and *ppFactory set, or CLASS_E_CLASSNOTAVAILABLE and *ppFactory null.
using DllGetClassObjectFn = HRESULT (*)(const char* rclsid, IClassFactory** ppFactory);
// S_OK when no object of the library is alive, else S_FALSE.
using DllCanUnloadNowFn = HRESULT (*)();
// Record or remove the eleven classes in the registry (see Registry.h).
using DllRegisterServerFn = HRESULT (*)();
using DllUnregisterServerFn = HRESULT (*)();

}  // namespace halvane::host
