#include "apps/desktop/Registration.h"

#include <dlfcn.h>

#include <filesystem>

#include "host/component/HostInterfaces.h"
#include "host/component/Registry.h"

namespace halvane::desktop {

bool EnsureComponentRegistered(const std::string& library, std::string& error) {
    for (const host::RegistryEntry& entry : host::ReadRegistry()) {
        std::error_code ec;
        if (entry.progId == "Halvane.clsToolbar" && std::filesystem::exists(entry.library, ec)) {
            return true;
        }
    }
    void* handle = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        const char* why = dlerror();
        error = "Cannot load the component " + library + (why ? std::string(": ") + why : "");
        return false;
    }
    auto registerServer =
        reinterpret_cast<host::DllRegisterServerFn>(dlsym(handle, "DllRegisterServer"));
    const bool registered = registerServer && registerServer() == host::S_OK;
    if (!registered) error = "The component " + library + " did not register";
    dlclose(handle);
    return registered;
}

}  // namespace halvane::desktop
