// halvane-desktop [RASTER]...: the desktop host. Registers the component on
// first run, loads it, and opens the rasters given as layers.

#include <QApplication>
#include <QStatusBar>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

#include "apps/desktop/MainWindow.h"
#include "apps/desktop/Registration.h"
#include "platform/runtime/Version.h"
#include "platform/ui/qt/QtServices.h"

namespace {

// The component installed with the program, else the one it was built with.
std::string ComponentLibrary() {
    std::error_code error;
    const std::filesystem::path installed =
        std::filesystem::read_symlink("/proc/self/exe", error).parent_path() /
        HALVANE_INSTALLED_COMPONENT;
    if (!error && std::filesystem::exists(installed, error)) {
        return std::filesystem::weakly_canonical(installed, error).string();
    }
    return HALVANE_COMPONENT_LIBRARY;
}

}  // namespace

int main(int argc, char** argv) {
    // Answered before Qt starts, so it works without a display.
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
        std::printf("halvane-desktop %s\n", halvane::runtime::kVersion);
        return 0;
    }
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Halvane"));
    halvane::ui::qt::QtServices services;
    halvane::ui::ServicesScope scope(services);

    halvane::desktop::MainWindow window;
    std::string error;
    if (!halvane::desktop::EnsureComponentRegistered(ComponentLibrary(), error)) {
        window.statusBar()->showMessage(QString::fromStdString(error));
    } else {
        window.LoadComponent();
    }
    for (const QString& path : QApplication::arguments().mid(1)) window.AddRaster(path.toStdString());
    window.show();
    return application.exec();
}
