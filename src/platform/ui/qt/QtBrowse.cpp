#include "platform/ui/qt/QtBrowse.h"

#include <gdal.h>

#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>
#include <mutex>

namespace halvane::ui::qt {
namespace {

QString Q(const std::string& text) { return QString::fromStdString(text); }

bool IsGdalRaster(const QString& path) {
    static std::once_flag registered;
    std::call_once(registered, [] { GDALAllRegister(); });
    const QByteArray name = QFile::encodeName(path);
    return GDALIdentifyDriverEx(name.constData(), GDAL_OF_RASTER, nullptr, nullptr) != nullptr;
}

}  // namespace

std::vector<FolderEntry> ListRasterFolder(const std::string& folder) {
    std::vector<FolderEntry> listed;
    const QDir dir(Q(folder));
    const auto infos = dir.entryInfoList(QDir::Dirs | QDir::Files | QDir::NoDotAndDotDot,
                                         QDir::Name | QDir::IgnoreCase);
    for (const QFileInfo& info : infos) {
        const std::string name = info.fileName().toStdString();
        if (info.isDir()) {
            const bool grid = QFileInfo(QDir(info.filePath()).filePath("hdr.adf")).isFile();
            listed.push_back({name, grid ? EntryKind::GridFolder : EntryKind::Folder});
        } else if (IsGdalRaster(info.filePath())) {
            listed.push_back({name, EntryKind::RasterFile});
        }
    }
    return listed;
}

RasterBrowser::RasterBrowser(const std::string& title, const std::string& folder) {
    setWindowTitle(Q(title));
    location = new QLineEdit(this);
    upButton = new QPushButton(style()->standardIcon(QStyle::SP_FileDialogToParent), {}, this);
    entries = new QListWidget(this);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    okButton = buttons->button(QDialogButtonBox::Ok);

    auto* top = new QHBoxLayout;
    top->addWidget(location);
    top->addWidget(upButton);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(entries);
    layout->addWidget(buttons);
    resize(480, 360);

    connect(location, &QLineEdit::returnPressed, this,
            [this] { Open(location->text().toStdString()); });
    connect(upButton, &QPushButton::clicked, this, [this] {
        QDir dir(Q(folder_));
        if (dir.cdUp()) Open(dir.absolutePath().toStdString());
    });
    connect(entries, &QListWidget::itemActivated, this, [this] { Activate(); });
    connect(entries, &QListWidget::currentRowChanged, this,
            [this] { okButton->setEnabled(!Chosen().empty()); });
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        if (!Chosen().empty()) accept();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    Open(folder.empty() ? QDir::currentPath().toStdString() : folder);
}

void RasterBrowser::Open(const std::string& folder) {
    folder_ = QDir(Q(folder)).absolutePath().toStdString();
    location->setText(Q(folder_));
    listed_ = ListRasterFolder(folder_);
    entries->clear();
    for (const FolderEntry& entry : listed_) {
        const auto icon =
            entry.kind == EntryKind::Folder ? QStyle::SP_DirIcon : QStyle::SP_FileIcon;
        entries->addItem(new QListWidgetItem(style()->standardIcon(icon), Q(entry.name)));
    }
    okButton->setEnabled(false);
}

std::string RasterBrowser::Chosen() const {
    const int row = entries->currentRow();
    if (row < 0 || row >= static_cast<int>(listed_.size())) return {};
    if (listed_[row].kind == EntryKind::Folder) return {};
    return QDir(Q(folder_)).filePath(Q(listed_[row].name)).toStdString();
}

void RasterBrowser::Activate() {
    const int row = entries->currentRow();
    if (row < 0 || row >= static_cast<int>(listed_.size())) return;
    if (listed_[row].kind == EntryKind::Folder) {
        Open(QDir(Q(folder_)).filePath(Q(listed_[row].name)).toStdString());
    } else {
        accept();
    }
}

void ConfigureFolderDialog(QFileDialog& dialog, const std::string& title) {
    dialog.setWindowTitle(Q(title));
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly, true);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
}

QStringList NameFilters(const std::string& filter) {
    QStringList filters;
    const QStringList parts = Q(filter).split(QLatin1Char('|'));
    for (int i = 0; i + 1 < parts.size(); i += 2) {
        QString patterns = parts[i + 1];
        patterns.replace(QLatin1Char(';'), QLatin1Char(' '));
        // Qt reads the patterns from the last parentheses, so a caption that
        // shows its own pattern keeps it.
        filters << parts[i] + QStringLiteral(" (") + patterns + QLatin1Char(')');
    }
    return filters;
}

void ConfigureFileDialog(QFileDialog& dialog, const CommonDialog& common, FileDialogMode mode) {
    const bool save = mode == FileDialogMode::Save;
    dialog.setWindowTitle(Q(common.DialogTitle));
    dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(!save && (common.Flags & cdlOFNFileMustExist) ? QFileDialog::ExistingFile
                                                                     : QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite, !(common.Flags & cdlOFNOverwritePrompt));
    const QStringList filters = NameFilters(common.Filter);
    if (!filters.isEmpty()) {
        dialog.setNameFilters(filters);
        const int index = std::clamp(common.FilterIndex, 1, static_cast<int>(filters.size()));
        dialog.selectNameFilter(filters[index - 1]);
    }
    QString suffix = Q(common.DefaultExt);
    if (suffix.startsWith(QLatin1Char('.'))) suffix.remove(0, 1);
    dialog.setDefaultSuffix(suffix);
    if (!common.InitDir.empty()) dialog.setDirectory(Q(common.InitDir));
    if (!common.FileName.empty()) dialog.selectFile(Q(common.FileName));
}

}  // namespace halvane::ui::qt
