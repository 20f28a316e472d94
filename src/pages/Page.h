#pragma once
// The page framework. A page is a modeless top-level dialog with no owner;
// each exists once, behind a permanent slot named like the page, which makes
// it on first use and forgets it at Unload, so the next use makes a fresh one.
// Form_Load runs at the first Show after the page was made.
//
// Pages talk to the user only through ui::Services(), so they run headless
// with the scripted double.

#include <QWidget>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "platform/map/Fwd.h"
#include "platform/raster/Fwd.h"
#include "platform/reporting/ErrorHandling.h"
#include "platform/runtime/Failure.h"

class QAbstractButton;
class QBoxLayout;
class QComboBox;
class QGridLayout;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QToolButton;
class QVBoxLayout;

namespace halvane::pages {

class Page;

// The label, in bold; for headings within a page.
QLabel* Bold(QLabel* label);

class PageSlot {
public:
    using Maker = Page* (*)(PageSlot&);
    PageSlot(const char* name, Maker make);
    ~PageSlot();
    PageSlot(const PageSlot&) = delete;
    PageSlot& operator=(const PageSlot&) = delete;

    // The page, made if it is not loaded.
    Page& Get();
    bool Loaded() const { return page_ != nullptr; }
    // Shown: loaded and visible.
    bool Shown() const;
    const char* Name() const { return name_; }

    void Show();
    void Hide();
    // Returns the page to not loaded; nothing happens if it is not. The widget
    // goes at the next turn of the event loop, since the page may be inside
    // one of its own handlers.
    void Unload();

private:
    friend class Page;
    const char* name_;
    Maker make_;
    Page* page_ = nullptr;
};

// Every page slot, in no particular order.
const std::vector<PageSlot*>& AllPageSlots();

// What happens to a page, for whoever watches a session: Load when Form_Load
// is about to run, Show at every Show that leaves the page on the screen,
// Hide when a shown page goes, Unload when a page that had loaded goes.
enum class PageLife { Load, Show, Hide, Unload };
using PageLifeObserver = std::function<void(PageLife, const PageSlot&)>;
// One observer at a time; an empty one stops watching.
void ObservePageLife(PageLifeObserver observer);

// The slot of a page class `T`, whose members it reaches through ->.
template <class T>
class Slot : public PageSlot {
public:
    explicit Slot(const char* name)
        : PageSlot(name, [](PageSlot& slot) -> Page* { return new T(slot); }) {}
    T& operator*() { return static_cast<T&>(Get()); }
    T* operator->() { return &**this; }
};

class Page : public QWidget {
public:
    ~Page() override;

    void Show();
    void Hide();
    void Unload();
    PageSlot& Self() const { return slot_; }
    // The window handle the page gives the dialogs it opens as their owner.
    std::int32_t hWnd();

    // The host's application; commands write it before a page is shown.
    map::ApplicationPtr m_pApp;
    // Resolved from m_pApp only when a page adds a layer to the map.
    map::MxDocumentPtr m_pDoc;
    map::MapPtr m_pMap;
    // The Back link, copied from g_frm_PreviousPage by Form_Load.
    PageSlot* m_frmPrevious = nullptr;

    // The standard button row; a page without one of them leaves it null.
    QPushButton* cmdBack = nullptr;
    QPushButton* cmdNext = nullptr;
    QPushButton* cmdCancel = nullptr;

protected:
    Page(PageSlot& slot, const char* module);

    // Runs at the first Show after the page was made, before it appears.
    virtual void Form_Load() {}
    // Runs when the page is unloaded, by Unload or by closing its frame.
    virtual void Form_Unload() {}

    // --- building the page: controls carry their described names. A control
    // made without a layout to go into is placed by the page itself.
    QBoxLayout* Body() const { return body_; }
    QBoxLayout* ButtonRow() const { return buttonRow_; }
    QLabel* NewLabel(const char* name, const QString& text, QBoxLayout* into = nullptr);
    QPushButton* NewButton(const char* name, const QString& caption, QBoxLayout* into = nullptr);
    // A text box; maxLength limits typing as a classic MaxLength does, and
    // text set in code may be longer; 0 leaves it free.
    QLineEdit* NewBox(const char* name, int maxLength = 0);
    // The picture button beside a path box that opens a browse dialog.
    QToolButton* NewBrowseButton(const char* name);
    QRadioButton* NewOption(const char* name, const QString& caption = {});
    // A drop-down list whose text can also be typed, as `text` at first.
    QComboBox* NewCombo(const char* name, const QStringList& entries, const QString& text);
    // The white band across the top of a wizard page, with a sub-heading
    // unless it is empty; returns its heading, named `headingName`.
    QLabel* NewBanner(const QString& heading, const QString& subHeading,
                      const char* headingName = "lblHeading");
    // A grid of rows, label | box | browse button, added to the body.
    QGridLayout* NewForm();
    // The standard button row: cmdBack, cmdNext, cmdCancel.
    void NewButtonRow();
    // A "More about ..." button at the left end of the button row: it opens
    // `topic` and changes nothing else.
    QPushButton* NewHelpButton(const char* name, const char* procedure, const QString& caption,
                               const char* topic);
    // The same button for a page that opens its topic its own way.
    QPushButton* NewHelpButton(const char* name, const char* procedure, const QString& caption,
                               std::function<void()> open);

    // --- events. Each handler is a protected procedure of this page's module;
    // a failure that a pass-on handler raises out of its event reaches the
    // host's runtime, which shows its own message (see RaiseToHost).
    void OnClick(QAbstractButton* button, const char* procedure, bool topLevel,
                 std::function<void()> body);
    // Fires on every change of the text, typed or set in code.
    void OnChange(QLineEdit* box, const char* procedure, bool topLevel, std::function<void()> body);
    // Fires when the option becomes selected, clicked or set in code.
    void OnOptionClick(QRadioButton* option, const char* procedure, bool topLevel,
                       std::function<void()> body);
    // Runs `body` as the event `procedure` of this page.
    void Event(const char* procedure, bool topLevel, const std::function<void()>& body);

    // --- the flow
    // Forward: this page hands over, hides, and the next page shows.
    void HandOver(PageSlot& next);
    // Back: hide, show the Back link.
    void GoBack();
    // After a Yes to "Add Data to Map?": resolves m_pDoc and m_pMap from
    // m_pApp, then adds a layer for each dataset that is not null, in order.
    void AddToFocusMap(std::initializer_list<raster::RasterDatasetPtr> datasets);
    // A help button: the topic of the help file, with no owner window.
    void ShowHelp(const char* topic);
    // In a stand-alone run a stage page does its one stage and ends: no Next,
    // no Back, and Cancel reads "Close".
    void ApplyRunMode();
    // The guard of a stage page's Form_Load: without its input the page shows
    // the required-data dialog and unloads itself; false then ends the load.
    bool HasInputElse(bool present, PageSlot& requiredData);

    const char* module_;

private:
    friend class PageSlot;
    void closeEvent(QCloseEvent* event) override;
    void RunFormUnload();

    PageSlot& slot_;
    QVBoxLayout* outer_;
    QBoxLayout* body_;
    QBoxLayout* buttonRow_;
    bool formLoaded_ = false;
    bool unloaded_ = false;
};

// Typing into a box made by NewBox, as a person would: `text` in place of the
// selection (of the whole text with `replaceAll`), cut where the box's typing
// limit ends.
void TypeInto(QLineEdit& box, const QString& text, bool replaceAll = true);

// What the host's user-interface runtime does with a failure that an event
// handler raised instead of reporting: it shows its own message, the run-time
// error number and the collected description.
void RaiseToHost(const runtime::Failure& failure);

}  // namespace halvane::pages
