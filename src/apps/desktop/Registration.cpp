#include "apps/desktop/Registration.h"

#include <dlfcn.h>

#include <filesystem>

#include "host/component/HostInterfaces.h"
#include "host/component/Registry.h"

namespace halvane::desktop {

bool EnsureComponentRegistered(const std::string& library, std::string& error) {
    // The desktop shares its core library with the component, so a component
    // of another build (another checkout, an older install) would bring a
    // second core into the process: only this build's component will do.
    std::error_code ec;
    const std::filesystem::path ours = std::filesystem::weakly_canonical(library, ec);
    for (const host::RegistryEntry& entry : host::ReadRegistry()) {
        if (entry.progId == "Halvane.clsToolbar" &&
            std::filesystem::weakly_canonical(entry.library, ec) == ours &&
            std::filesystem::exists(ours, ec)) {
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
