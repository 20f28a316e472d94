#pragma once
// A fresh machine has no component registered: the desktop registers the one
// it was built with, as an installer would, so that it starts with its toolbar.
// It does the same when the registry names another build's component.

#include <string>

namespace halvane::desktop {

// Calls DllRegisterServer of `library` unless the toolbar class is registered
// with that very library. False, with the reason in `error`, when the
// library cannot be loaded or does not register.
bool EnsureComponentRegistered(const std::string& library, std::string& error);

}  // namespace halvane::desktop
