#pragma once
// What the system needs of the desktop: message boxes, the busy pointer, the
// error window, the progress dialog, browse and file dialogs, and help.
//
// Everything above this layer talks to the user only through Services(), so
// that the same code runs in the desktop (Qt), on the command line (console)
// and in tests (scripted double). The names follow the platform objects that
// the system was written against, so system code reads like its description.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace halvane::ui {

// Window handles are opaque; 0 means "no owner".
using WindowHandle = std::intptr_t;

// Message box buttons and icons, combined by adding.
enum MsgBoxStyle : int {
    vbOKOnly = 0,
    vbOKCancel = 1,
    vbYesNo = 4,
    vbCritical = 16,
    vbQuestion = 32,
    vbExclamation = 48,
    vbInformation = 64,
    vbDefaultButton1 = 0,
    vbDefaultButton2 = 256,
};
inline constexpr int kButtonsMask = 0x0F;
inline constexpr int kIconMask = 0x70;

enum MsgBoxResult : int { vbOK = 1, vbCancel = 2, vbYes = 6, vbNo = 7 };

// Screen mouse pointers.
inline constexpr int vbDefault = 0;
inline constexpr int vbHourglass = 11;

// The platform's error window: it shows a text and can be closed.
class IErrorWindow {
public:
    virtual ~IErrorWindow() = default;
    virtual void Show(bool show) = 0;
    virtual void SetText(const std::string& text) = 0;
};

// Answers whether the user has not pressed Cancel on the dialog it was given to.
class ITrackCancel {
public:
    virtual ~ITrackCancel() = default;
    virtual bool Continue() = 0;
    virtual void Cancel() = 0;
};

// A tracker whose state is a flag; a desktop tracker also lets the window
// system deliver the click before it answers.
class CancelTracker : public ITrackCancel {
public:
    bool Continue() override { return !cancelled_; }
    void Cancel() override { cancelled_ = true; }

private:
    bool cancelled_ = false;
};

class IProgressor {
public:
    virtual ~IProgressor() = default;
    virtual void Message(const std::string& text) = 0;
};

class IStepProgressor : public virtual IProgressor {
public:
    virtual void MinRange(std::int32_t value) = 0;
    virtual void MaxRange(std::int32_t value) = 0;
    virtual void Position(std::int32_t value) = 0;
};

// The progress dialog as a window; the object that implements it is also the
// IStepProgressor that the factory returns.
class IProgressDialog2 {
public:
    virtual ~IProgressDialog2() = default;
    virtual void Animation(int animation) = 0;
    virtual void CancelEnabled(bool enabled) = 0;
    virtual void Title(const std::string& title) = 0;
    virtual void Description(const std::string& description) = 0;
    virtual void HideDialog() = 0;
};

class IProgressDialogFactory {
public:
    virtual ~IProgressDialogFactory() = default;
    // The dialog reports a Cancel press to `trackCancel`.
    virtual std::shared_ptr<IStepProgressor> Create(std::shared_ptr<ITrackCancel> trackCancel,
                                                    WindowHandle owner) = 0;
};

// The two object filters of the browse dialog.
enum class GxObjectFilter { Folders, RasterDatasets };

// The browse dialog: a catalogue view over folders or rasters.
struct GxDialog {
    std::string Title;
    bool AllowMultiSelect = false;
    GxObjectFilter ObjectFilter = GxObjectFilter::Folders;

    // Fills `selection` with the full names of the chosen objects; false after Cancel.
    bool DoModalOpen(WindowHandle parent, std::vector<std::string>& selection) const;
};

enum FileDialogFlags : int {
    cdlOFNReadOnly = 1,
    cdlOFNOverwritePrompt = 2,
    cdlOFNHideReadOnly = 4,
    cdlOFNPathMustExist = 2048,
    cdlOFNFileMustExist = 4096,
};

enum class FileDialogMode { Open, Save };

// The common file dialog. `Filter` has the form "XML File(*.xml)|*.xml", pairs
// of caption and pattern separated by "|"; `FilterIndex` counts from 1. After
// Cancel every property stands as it was.
struct CommonDialog {
    std::string FileName;
    std::string Filter;
    std::string DialogTitle;
    std::string DefaultExt;
    std::string InitDir;
    int FilterIndex = 0;
    int Flags = 0;

    void ShowOpen();
    void ShowSave();
};

// Help viewer command that shows one topic of a help file.
inline constexpr int HH_DISPLAY_TOPIC = 0;

class UiServices {
public:
    virtual ~UiServices() = default;

    // `title` empty means none was given.
    virtual MsgBoxResult MsgBox(const std::string& prompt, int buttons = vbOKOnly,
                                const std::string& title = {}) = 0;
    virtual void Beep() = 0;

    virtual void SetMousePointer(int pointer) = 0;
    virtual int MousePointer() const = 0;

    virtual std::shared_ptr<IErrorWindow> NewErrorWindow() = 0;
    virtual std::shared_ptr<ITrackCancel> NewCancelTracker() = 0;
    virtual std::shared_ptr<IProgressDialogFactory> NewProgressDialogFactory() = 0;

    virtual bool ShowGxDialog(const GxDialog& dialog, WindowHandle parent,
                              std::vector<std::string>& selection) = 0;
    // On OK sets dialog.FileName and returns true; after Cancel leaves it alone.
    virtual bool ShowFileDialog(CommonDialog& dialog, FileDialogMode mode) = 0;

    // Shows `topic` of the help file `file`; returns the help window, or 0 when
    // the file or topic is missing.
    virtual WindowHandle HtmlHelp(WindowHandle caller, const std::string& file, int command,
                                  const std::string& topic) = 0;
};

// The services in force. Until a program installs its own, a console
// implementation that answers questions No.
UiServices& Services();

// Installs services for the life of the scope, then restores the previous ones.
class ServicesScope {
public:
    explicit ServicesScope(UiServices& services);
    ~ServicesScope();
    ServicesScope(const ServicesScope&) = delete;
    ServicesScope& operator=(const ServicesScope&) = delete;

private:
    UiServices* previous_;
};

}  // namespace halvane::ui
