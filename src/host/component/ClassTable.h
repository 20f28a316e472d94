#pragma once
// The component's classes as data: name, ProgID, class identifier
// and the identifier of the default interface, and the type library. Shared by
// the component library and the host's loader; no toolkit.

#include <array>
#include <string>

namespace halvane::host {

struct ClassInfo {
    const char* className;  // "clsToolbar"
    const char* progId;     // "Halvane.clsToolbar"
    const char* clsid;      // "{F7EA5D5C-DD5A-41B2-B602-90BBA0066560}"
    const char* iid;        // the default interface _clsToolbar
};

// The type library "Halvane".
inline constexpr const char* kTypeLibraryName = "Halvane";
inline constexpr const char* kTypeLibraryId = "{1A710292-AD14-45B7-80E2-017C5D3299EF}";

// The eleven classes: the toolbar, the menu, then the commands in menu order.
extern const std::array<ClassInfo, 11> kClasses;

// The class of a ProgID (exact) or of a class identifier (any case, braces
// required); null when there is none.
const ClassInfo* ClassByProgId(const std::string& progId);
const ClassInfo* ClassByClsid(const std::string& clsid);

}  // namespace halvane::host
