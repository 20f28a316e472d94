#include "platform/reporting/HTMLHelp.h"

#include <dlfcn.h>

#include <filesystem>

namespace halvane {
namespace {

// The help "file" is a folder of HTML pages, one per topic, each named as the
// topic is referred to ("wizard.htm"): the topic references then need no
// table, any browser shows the pages, and links between topics are plain
// relative links. The name keeps the help file's stem.
constexpr const char* kHelpFile = "/Help/HalvaneTool.help";

ui::WindowHandle g_applicationWindow = 0;

}  // namespace

ui::WindowHandle HtmlHelpA(ui::WindowHandle hwndCaller, const std::string& pszFile,
                           std::int32_t uCommand, const std::string& dwData) {
    return ui::Services().HtmlHelp(hwndCaller, pszFile, uCommand, dwData);
}

std::string ComponentFolder() {
    std::filesystem::path component;
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&ComponentFolder), &info) != 0 && info.dli_fname) {
        component = info.dli_fname;
    }
    // Code linked into the program itself may be named by a relative path.
    std::error_code error;
    if (!component.is_absolute())
        component = std::filesystem::read_symlink("/proc/self/exe", error);
    return component.parent_path().string();
}

std::string ResourceFolder() {
    const std::filesystem::path component = ComponentFolder();
    std::error_code error;
    for (const auto& prefix : {component.parent_path(), component.parent_path().parent_path()}) {
        const std::filesystem::path shared = prefix / "share" / "halvane";
        if (std::filesystem::is_directory(shared, error)) return shared.string();
    }
    return component.string();
}

std::string HelpFilePath() { return ResourceFolder() + kHelpFile; }

std::string GetHelpFilePath(std::int16_t iFile) { return iFile == 1 ? HelpFilePath() : ""; }

void ShowHelpTopic(std::int16_t iFile, std::string& sTopic) {
    const ui::WindowHandle owner = AppRef().hWnd();
    HtmlHelpA(owner, GetHelpFilePath(iFile), ui::HH_DISPLAY_TOPIC, sTopic);
}

ui::WindowHandle AppRef::hWnd() const { return g_applicationWindow; }

void AppRef::Register(ui::WindowHandle window) { g_applicationWindow = window; }

}  // namespace halvane
