// The entry of the suites with windows: one QApplication for the whole run.

#include <gtest/gtest.h>

#include <QApplication>

namespace {

QtMessageHandler g_standardHandler = nullptr;

// The offscreen platform says at every window that it cannot raise it or
// pass size hints on; that is no news to a test.
void QuietOffscreenNotes(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (text.startsWith(QLatin1String("This plugin does not support"))) return;
    g_standardHandler(type, context, text);
}

}  // namespace

int main(int argc, char** argv) {
    g_standardHandler = qInstallMessageHandler(QuietOffscreenNotes);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Halvane"));
    QApplication::setApplicationDisplayName(QStringLiteral("Halvane"));
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
