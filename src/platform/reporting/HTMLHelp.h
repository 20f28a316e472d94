#pragma once
// Help launching: every "More about" button and the Help command open one
// topic of the help file beside the component. A missing file or topic is no
// failure: nothing is shown and nothing is said.

#include <cstdint>
#include <string>

#include "platform/ui/Services.h"

namespace halvane {

// The help viewer's entry: shows topic `dwData` of the help file `pszFile`
// for uCommand HH_DISPLAY_TOPIC; the help window, or 0 if nothing was shown.
ui::WindowHandle HtmlHelpA(ui::WindowHandle hwndCaller, const std::string& pszFile,
                           std::int32_t uCommand, const std::string& dwData);

// The folder of the component: the library or program that holds this code.
std::string ComponentFolder();

// Where the help, the default dictionary and the sample lie: share/halvane
// of the installed tree the component belongs to (bin/ or lib/halvane/ beside
// it), else the component's own folder, as in the build tree.
std::string ResourceFolder();

// The help file, worked out anew at each call: "Help/HalvaneTool.help" in the
// resource folder.
std::string HelpFilePath();

// The help file for 1, "" for any other number.
std::string GetHelpFilePath(std::int16_t iFile);

// Shows `sTopic` of help file `iFile` with the running application's window
// as owner, and gives the topic back unchanged.
void ShowHelpTopic(std::int16_t iFile, std::string& sTopic);

// A reference to the running application, for its main window. The desktop
// host registers the window when it starts; without a host it is 0.
class AppRef {
public:
    ui::WindowHandle hWnd() const;
    static void Register(ui::WindowHandle window);
};

}  // namespace halvane
