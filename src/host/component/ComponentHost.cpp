#include "host/component/ComponentHost.h"

#include <dlfcn.h>

#include <exception>

#include "host/component/Registry.h"

namespace halvane::host {

struct ComponentHost::Library {
    std::string path;
    void* handle = nullptr;
    DllGetClassObjectFn getClassObject = nullptr;
    DllCanUnloadNowFn canUnloadNow = nullptr;
};

ComponentHost::~ComponentHost() { Release(); }

bool ComponentHost::Load() {
    Release();
    error_.clear();
    auto note = [this](const std::string& text) {
        if (!error_.empty()) error_ += "\n";
        error_ += text;
    };
    const auto entries = ReadRegistry();
    if (entries.empty()) note("No component is registered in " + RegistryFile());
    for (const RegistryEntry& entry : entries) {
        std::shared_ptr<Library> library;
        for (const auto& open : libraries_) {
            if (open->path == entry.library) library = open;
        }
        if (!library) {
            void* handle = dlopen(entry.library.c_str(), RTLD_NOW | RTLD_LOCAL);
            if (!handle) {
                const char* why = dlerror();
                note(entry.progId + ": " + (why ? why : "cannot open " + entry.library));
                continue;
            }
            library = std::make_shared<Library>();
            library->path = entry.library;
            library->handle = handle;
            library->getClassObject =
                reinterpret_cast<DllGetClassObjectFn>(dlsym(handle, "DllGetClassObject"));
            library->canUnloadNow =
                reinterpret_cast<DllCanUnloadNowFn>(dlsym(handle, "DllCanUnloadNow"));
            libraries_.push_back(library);
        }
        if (!library->getClassObject) {
            note(entry.progId + ": " + entry.library + " has no DllGetClassObject");
            continue;
        }
        IClassFactory* factory = nullptr;
        if (library->getClassObject(entry.clsid.c_str(), &factory) != S_OK || !factory) {
            note(entry.progId + ": class " + entry.clsid + " is not available");
            continue;
        }
        try {
            objects_.push_back({entry.progId, factory->CreateInstance()});
        } catch (const std::exception& failure) {
            note(entry.progId + ": " + failure.what());
        }
    }
    return !objects_.empty();
}

std::vector<std::string> ComponentHost::ProgIds() const {
    std::vector<std::string> ids;
    for (const Loaded& loaded : objects_) ids.push_back(loaded.progId);
    return ids;
}

IComponentObject* ComponentHost::Object(const std::string& progId) const {
    for (const Loaded& loaded : objects_) {
        if (loaded.progId == progId) return loaded.object.get();
    }
    return nullptr;
}

ICommand* ComponentHost::Command(const std::string& progId) const {
    IComponentObject* object = Object(progId);
    return object ? object->AsCommand() : nullptr;
}

IToolBarDef* ComponentHost::ToolBar(const std::string& progId) const {
    IComponentObject* object = Object(progId);
    return object ? object->AsToolBarDef() : nullptr;
}

IMenuDef* ComponentHost::Menu(const std::string& progId) const {
    IComponentObject* object = Object(progId);
    return object ? object->AsMenuDef() : nullptr;
}

void ComponentHost::CreateCommands(const map::ApplicationPtr& app) {
    for (const Loaded& loaded : objects_) {
        if (ICommand* command = loaded.object->AsCommand()) command->OnCreate(app);
    }
}

std::vector<ComponentHost::Toolbar> ComponentHost::Toolbars() const {
    std::vector<Toolbar> toolbars;
    for (const Loaded& loaded : objects_) {
        if (IToolBarDef* definition = loaded.object->AsToolBarDef()) {
            toolbars.push_back({loaded.progId, definition});
        }
    }
    return toolbars;
}

template <class Definition>
std::vector<ComponentHost::Item> ComponentHost::Items(Definition& definition) {
    error_.clear();
    std::vector<Item> items;
    const std::int32_t count = definition.ItemCount();
    for (std::int32_t position = 0; position < count; ++position) {
        ItemDef item;
        try {
            definition.GetItemInfo(position, item);
        } catch (const std::exception& failure) {
            error_ += "Item " + std::to_string(position) + ": " + failure.what() + "\n";
            continue;
        }
        if (!item.idSet || item.id.empty()) continue;  // the menu's position 9
        items.push_back({position, item.id, Command(item.id), Menu(item.id), item.group});
    }
    return items;
}

std::vector<ComponentHost::Item> ComponentHost::ToolbarItems(IToolBarDef& toolbar) {
    return Items(toolbar);
}

std::vector<ComponentHost::Item> ComponentHost::MenuItems(IMenuDef& menu) { return Items(menu); }

void ComponentHost::Release() {
    objects_.clear();
    for (const auto& library : libraries_) {
        if (library->canUnloadNow && library->canUnloadNow() == S_OK) dlclose(library->handle);
    }
    libraries_.clear();
}

HRESULT ComponentHost::RegisterServer(const std::string& library, bool unregister,
                                      std::string* error) {
    void* handle = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        const char* why = dlerror();
        if (error) *error = why ? why : "cannot open " + library;
        return E_FAIL;
    }
    const char* name = unregister ? "DllUnregisterServer" : "DllRegisterServer";
    auto entry = reinterpret_cast<DllRegisterServerFn>(dlsym(handle, name));
    HRESULT result = E_FAIL;
    if (entry) {
        result = entry();
        if (error) *error = result == S_OK ? "" : "registry not written: " + RegistryFile();
    } else if (error) {
        *error = library + " has no " + name;
    }
    dlclose(handle);
    return result;
}

}  // namespace halvane::host
