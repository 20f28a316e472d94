#pragma once
// Browse and file dialogs of the Qt services.

#include <QDialog>
#include <QFileDialog>
#include <string>
#include <vector>

#include "platform/ui/Services.h"

class QLineEdit;
class QListWidget;
class QPushButton;

namespace halvane::ui::qt {

enum class EntryKind { Folder, RasterFile, GridFolder };

struct FolderEntry {
    std::string name;
    EntryKind kind;

    bool operator==(const FolderEntry&) const = default;
};

// What the raster browse dialog lists in `folder`, sorted by name: subfolders
// to go into, raster files that GDAL can open, and ESRI Grid folders (a folder
// holding "hdr.adf"), which count as one raster each. Other files are left out.
std::vector<FolderEntry> ListRasterFolder(const std::string& folder);

// A catalogue view over rasters: a folder at a time, entered by double-click;
// OK (or a double-click on a raster) chooses the selected raster.
class RasterBrowser : public QDialog {
public:
    explicit RasterBrowser(const std::string& title, const std::string& folder = {});

    void Open(const std::string& folder);
    std::string Folder() const { return folder_; }
    // Full path of the selected raster, or empty when a folder or nothing is selected.
    std::string Chosen() const;

    QLineEdit* location;
    QListWidget* entries;
    QPushButton* upButton;
    QPushButton* okButton;

private:
    void Activate();
    std::vector<FolderEntry> listed_;
    std::string folder_;
};

// A folder dialog titled `title`.
void ConfigureFolderDialog(QFileDialog& dialog, const std::string& title);

// Sets up `dialog` as the common dialog asks: title, "caption|pattern" filter
// pairs, filter index (from 1), default extension, starting folder and file,
// and the flags "file must exist" and "ask before overwriting".
void ConfigureFileDialog(QFileDialog& dialog, const CommonDialog& common, FileDialogMode mode);

// The name filters of a "Text(*.ext)|*.ext" filter, in Qt's "caption (patterns)" form.
QStringList NameFilters(const std::string& filter);

}  // namespace halvane::ui::qt
