// The component's four entries: the counterparts of a COM server's
// DllGetClassObject, DllCanUnloadNow, DllRegisterServer, DllUnregisterServer.

#include <dlfcn.h>

#include <filesystem>
#include <memory>

#include "host/component/ClassTable.h"
#include "host/component/Commands.h"
#include "host/component/HostInterfaces.h"
#include "host/component/Registry.h"

#define HALVANE_EXPORT extern "C" __attribute__((visibility("default")))

namespace halvane::host {
namespace {

template <class Class>
class Factory : public IClassFactory {
public:
    std::shared_ptr<IComponentObject> CreateInstance() override {
        return std::make_shared<Class>();
    }
};

// The factory of a class by its name in the class table.
IClassFactory* FactoryOf(const ClassInfo& info) {
    static Factory<clsToolbar> toolbar;
    static Factory<clsMenuTrevak> menu;
    static Factory<clsCmdHalvaneIntro> intro;
    static Factory<clsCmdHalvaneResample> resample;
    static Factory<clsCmdHalvaneSSBPI> ssbpi;
    static Factory<clsCmdHalvaneLSBPI> lsbpi;
    static Factory<clsCmdHalvaneStdz> stdz;
    static Factory<clsCmdHalvaneClassDict> classDict;
    static Factory<clsCmdHalvaneStep8> step8;
    static Factory<clsCmdHalvaneRug> rug;
    static Factory<clsCmdHalvaneHelp> help;
    IClassFactory* const factories[] = {&toolbar, &menu,      &intro, &resample, &ssbpi, &lsbpi,
                                        &stdz,    &classDict, &step8, &rug,      &help};
    static_assert(std::size(factories) == kClasses.size());
    return factories[&info - kClasses.data()];
}

// The absolute path of this library, as the registry records it.
std::string LibraryPath() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&LibraryPath), &info) == 0 || !info.dli_fname) return {};
    std::error_code error;
    const auto path = std::filesystem::weakly_canonical(info.dli_fname, error);
    return error ? std::filesystem::absolute(info.dli_fname).string() : path.string();
}

std::vector<RegistryEntry> OurEntries() {
    std::vector<RegistryEntry> entries;
    const std::string library = LibraryPath();
    for (const ClassInfo& info : kClasses) entries.push_back({info.progId, info.clsid, library});
    return entries;
}

}  // namespace
}  // namespace halvane::host

using namespace halvane::host;

HALVANE_EXPORT HRESULT DllGetClassObject(const char* rclsid, IClassFactory** ppFactory) {
    if (!ppFactory) return E_POINTER;
    *ppFactory = nullptr;
    const ClassInfo* info = rclsid ? ClassByClsid(rclsid) : nullptr;
    if (!info) return CLASS_E_CLASSNOTAVAILABLE;
    *ppFactory = FactoryOf(*info);
    return S_OK;
}

HALVANE_EXPORT HRESULT DllCanUnloadNow() {
    return CountedObject::LiveObjects() == 0 ? S_OK : S_FALSE;
}

HALVANE_EXPORT HRESULT DllRegisterServer() {
    const auto entries = OurEntries();
    if (entries.front().library.empty()) return SELFREG_E_CLASS;
    return RegisterEntries(entries) ? S_OK : SELFREG_E_CLASS;
}

HALVANE_EXPORT HRESULT DllUnregisterServer() {
    return UnregisterEntries(OurEntries()) ? S_OK : SELFREG_E_CLASS;
}
