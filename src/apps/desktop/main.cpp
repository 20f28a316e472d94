// halvane-desktop [RASTER]...: the desktop host. Registers the component on
// first run, loads it, and opens the rasters given as layers.
// halvane-desktop --replay FILE: replays a recorded session headless (see
// Replay.h) and exits.
// halvane-desktop --version: prints the version and exits, without a display.

#include <QApplication>
#include <QStatusBar>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string>

#include "apps/desktop/MainWindow.h"
#include "apps/desktop/Registration.h"
#include "apps/desktop/Replay.h"
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

QtMessageHandler g_standardHandler = nullptr;

// Notes of the offscreen platform and of a root session without a runtime
// folder say nothing about the session being replayed.
void QuietHeadlessNotes(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (text.startsWith(QLatin1String("This plugin does not support")) ||
        text.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR"))) {
        return;
    }
    g_standardHandler(type, context, text);
}

int Replay(const char* script) {
    halvane::desktop::MainWindow window;
    std::string error;
    if (!halvane::desktop::EnsureComponentRegistered(ComponentLibrary(), error) ||
        !window.LoadComponent()) {
        if (error.empty()) error = window.Component().Error();
        std::cerr << "halvane-desktop: " << error << "\n";
        return 1;
    }
    return halvane::desktop::RunReplay(script, window, std::cout, std::cerr);
}

}  // namespace

int main(int argc, char** argv) {
    // Answered before Qt starts, so it works without a display.
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
        std::printf("halvane-desktop %s\n", halvane::runtime::kVersion);
        return 0;
    }
    const bool replay = argc >= 2 && std::strcmp(argv[1], "--replay") == 0;
    if (replay) {
        if (argc != 3) {
            std::cerr << "usage: halvane-desktop --replay FILE\n";
            return 2;
        }
        // No display is needed, nor used if there is one.
        qputenv("QT_QPA_PLATFORM", "offscreen");
        g_standardHandler = qInstallMessageHandler(QuietHeadlessNotes);
    }
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Halvane"));
    if (replay) return Replay(argv[2]);

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
