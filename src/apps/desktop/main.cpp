// halvane-desktop [RASTER]...: the desktop host. Registers the component on
// first run, loads it, and opens the rasters given as layers.
// halvane-desktop --replay FILE: replays a recorded session headless (see
// Replay.h) and exits.

#include <QApplication>
#include <QStatusBar>
#include <cstring>
#include <iostream>

#include "apps/desktop/MainWindow.h"
#include "apps/desktop/Registration.h"
#include "apps/desktop/Replay.h"
#include "platform/ui/qt/QtServices.h"

namespace {

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
    if (!halvane::desktop::EnsureComponentRegistered(HALVANE_COMPONENT_LIBRARY, error) ||
        !window.LoadComponent()) {
        if (error.empty()) error = window.Component().Error();
        std::cerr << "halvane-desktop: " << error << "\n";
        return 1;
    }
    return halvane::desktop::RunReplay(script, window, std::cout, std::cerr);
}

}  // namespace

int main(int argc, char** argv) {
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
    if (!halvane::desktop::EnsureComponentRegistered(HALVANE_COMPONENT_LIBRARY, error)) {
        window.statusBar()->showMessage(QString::fromStdString(error));
    } else {
        window.LoadComponent();
    }
    for (const QString& path : QApplication::arguments().mid(1)) window.AddRaster(path.toStdString());
    window.show();
    return application.exec();
}
