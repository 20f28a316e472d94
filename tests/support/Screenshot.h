#pragma once
// Screenshots for a person to look at, written to screenshots/ of the build tree.

#include <gtest/gtest.h>

#include <QDir>
#include <QImage>
#include <QPainter>
#include <QPixmap>

namespace halvane::testing {

// The offscreen platform draws no window frame; a plain title bar shows the
// caption a user would read above the window.
inline QImage WithTitleBar(const QImage& content, const QString& title) {
    const int bar = 26;
    QImage framed(content.width() + 2, content.height() + bar + 1, QImage::Format_RGB32);
    framed.fill(QColor(0x5a, 0x6a, 0x7a));
    QPainter painter(&framed);
    painter.fillRect(1, 1, content.width(), bar - 1, QColor(0x2f, 0x4f, 0x6f));
    painter.setPen(Qt::white);
    painter.drawText(QRect(10, 1, content.width() - 20, bar - 1), Qt::AlignVCenter, title);
    painter.drawImage(1, bar, content);
    return framed;
}

// Saves `picture` as screenshots/<name>.png.
inline void SaveScreenshot(const QImage& picture, const char* name) {
    const QString folder = QStringLiteral(HALVANE_SCREENSHOT_DIR);
    ASSERT_TRUE(QDir().mkpath(folder));
    const QString file = QDir(folder).filePath(QString::fromLatin1(name) + ".png");
    ASSERT_TRUE(picture.save(file)) << file.toStdString();
}

}  // namespace halvane::testing
