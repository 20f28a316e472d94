#include "pages/Page.h"

#include <QClipboard>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QComboBox>
#include <QCoreApplication>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <limits>

#include "engine/Session.h"
#include "platform/map/Application.h"
#include "platform/map/Layers.h"
#include "platform/map/Map.h"
#include "platform/reporting/HTMLHelp.h"

namespace halvane::pages {

QLabel* Bold(QLabel* label) {
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}
namespace {

std::vector<PageSlot*>& Registry() {
    static std::vector<PageSlot*> registry;
    return registry;
}

PageLifeObserver& LifeObserver() {
    static PageLifeObserver observer;
    return observer;
}

void Tell(PageLife life, const PageSlot& slot) {
    if (LifeObserver()) LifeObserver()(life, slot);
}

QFrame* NewLine(QWidget* parent) {
    auto* line = new QFrame(parent);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    return line;
}

}  // namespace

const std::vector<PageSlot*>& AllPageSlots() { return Registry(); }

void ObservePageLife(PageLifeObserver observer) { LifeObserver() = std::move(observer); }

PageSlot::PageSlot(const char* name, Maker make) : name_(name), make_(make) {
    Registry().push_back(this);
}

PageSlot::~PageSlot() {
    // A page still loaded when the program ends goes with the application,
    // never after it.
    if (page_ && QCoreApplication::instance()) delete page_;
}

Page& PageSlot::Get() {
    if (!page_) page_ = make_(*this);
    return *page_;
}

bool PageSlot::Shown() const { return page_ && page_->isVisible(); }

void PageSlot::Show() { Get().Show(); }

void PageSlot::Hide() { Get().Hide(); }

void PageSlot::Unload() {
    if (!page_) return;
    Page* page = page_;
    page_ = nullptr;
    page->unloaded_ = true;
    page->RunFormUnload();
    page->hide();
    if (page->formLoaded_) Tell(PageLife::Unload, *this);
    page->deleteLater();
}

Page::Page(PageSlot& slot, const char* module)
    : QWidget(nullptr, Qt::Dialog), module_(module), slot_(slot) {
    setObjectName(QString::fromLatin1(slot.Name()));
    setWindowTitle(QStringLiteral("Halvane"));
    // The banner, when a page has one, spans the window edge to edge; the
    // rest keeps the usual dialog margins.
    outer_ = new QVBoxLayout(this);
    outer_->setContentsMargins(0, 0, 0, 0);
    outer_->setSpacing(0);
    auto* content = new QVBoxLayout;
    content->setContentsMargins(12, 12, 12, 12);
    outer_->addLayout(content, 1);
    body_ = new QVBoxLayout;
    buttonRow_ = new QHBoxLayout;
    buttonRow_->addStretch(1);
    content->addLayout(body_);
    content->addStretch(1);
    content->addWidget(NewLine(this));
    content->addLayout(buttonRow_);
}

Page::~Page() {
    if (slot_.page_ == this) slot_.page_ = nullptr;
}

void Page::Show() {
    if (!formLoaded_) {
        formLoaded_ = true;
        Tell(PageLife::Load, slot_);
        Form_Load();
        // A guard in Form_Load may have handed over and unloaded the page.
        if (unloaded_) return;
    }
    show();
    raise();
    activateWindow();
    Tell(PageLife::Show, slot_);
}

void Page::Hide() {
    if (!isVisible()) return;
    hide();
    Tell(PageLife::Hide, slot_);
}

void Page::Unload() {
    // Only this page: its slot may already hold a newer one.
    if (slot_.page_ == this) slot_.Unload();
}

QLabel* Page::NewLabel(const char* name, const QString& text, QBoxLayout* into) {
    auto* label = new QLabel(text, this);
    label->setObjectName(QString::fromLatin1(name));
    label->setWordWrap(true);
    (into ? into : body_)->addWidget(label);
    return label;
}

QPushButton* Page::NewButton(const char* name, const QString& caption, QBoxLayout* into) {
    auto* button = new QPushButton(caption, this);
    button->setObjectName(QString::fromLatin1(name));
    button->setAutoDefault(false);
    (into ? into : body_)->addWidget(button);
    return button;
}

namespace {

constexpr const char* kTypingLimit = "typingLimit";

// A text box whose limit holds for typing only, as a classic MaxLength does:
// text set in code may be longer (a default name from a long input name), so
// the box's own maxLength, which cuts any text, cannot serve.
class LimitedBox : public QLineEdit {
public:
    LimitedBox(QWidget* parent, int limit) : QLineEdit(parent) { setProperty(kTypingLimit, limit); }

protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (event->matches(QKeySequence::Paste)) {
            TypeInto(*this, QGuiApplication::clipboard()->text(), false);
            return;
        }
        const QString typed = event->text();
        const bool printable = !typed.isEmpty() && typed.at(0).isPrint() &&
                               !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
        if (printable && Room(*this) < typed.size()) return;
        QLineEdit::keyPressEvent(event);
    }

public:
    // How many more characters typing may add in place of the selection.
    static int Room(const QLineEdit& box) {
        const int limit = box.property(kTypingLimit).toInt();
        if (limit <= 0) return std::numeric_limits<int>::max();
        return limit - (box.text().size() - box.selectedText().size());
    }
};

}  // namespace

void TypeInto(QLineEdit& box, const QString& text, bool replaceAll) {
    if (replaceAll) box.selectAll();
    box.insert(text.left(std::max(0, LimitedBox::Room(box))));
}

QLineEdit* Page::NewBox(const char* name, int maxLength) {
    auto* box = new LimitedBox(this, maxLength);
    box->setObjectName(QString::fromLatin1(name));
    box->setMinimumWidth(260);
    return box;
}

QToolButton* Page::NewBrowseButton(const char* name) {
    auto* button = new QToolButton(this);
    button->setObjectName(QString::fromLatin1(name));
    button->setIcon(style()->standardIcon(QStyle::SP_DirOpenIcon));
    button->setToolTip(QStringLiteral("Browse..."));
    return button;
}

QRadioButton* Page::NewOption(const char* name, const QString& caption) {
    auto* option = new QRadioButton(caption, this);
    option->setObjectName(QString::fromLatin1(name));
    return option;
}

QComboBox* Page::NewCombo(const char* name, const QStringList& entries, const QString& text) {
    auto* combo = new QComboBox(this);
    combo->setObjectName(QString::fromLatin1(name));
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    combo->addItems(entries);
    combo->setCurrentText(text);
    return combo;
}

QLabel* Page::NewBanner(const QString& heading, const QString& subHeading,
                        const char* headingName) {
    auto* banner = new QFrame(this);
    banner->setObjectName(QStringLiteral("banner"));
    banner->setAutoFillBackground(true);
    QPalette white = banner->palette();
    white.setColor(QPalette::Window, Qt::white);
    banner->setPalette(white);
    auto* texts = new QVBoxLayout(banner);
    texts->setContentsMargins(16, 10, 16, 10);
    auto* title = new QLabel(heading, banner);
    title->setObjectName(QString::fromLatin1(headingName));
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    auto* subtitle = new QLabel(subHeading, banner);
    subtitle->setObjectName(QStringLiteral("lblSubHeading"));
    subtitle->setIndent(16);
    texts->addWidget(title);
    texts->addWidget(subtitle);
    // A heading alone has no empty line under it.
    subtitle->setVisible(!subHeading.isEmpty());
    outer_->insertWidget(0, banner);
    outer_->insertWidget(1, NewLine(this));
    return title;
}

QGridLayout* Page::NewForm() {
    auto* form = new QGridLayout;
    form->setHorizontalSpacing(8);
    form->setColumnStretch(1, 1);
    body_->addLayout(form);
    return form;
}

QPushButton* Page::NewHelpButton(const char* name, const char* procedure, const QString& caption,
                                 const char* topic) {
    return NewHelpButton(name, procedure, caption, [this, topic] { ShowHelp(topic); });
}

QPushButton* Page::NewHelpButton(const char* name, const char* procedure, const QString& caption,
                                 std::function<void()> open) {
    auto* button = new QPushButton(caption, this);
    button->setObjectName(QString::fromLatin1(name));
    button->setAutoDefault(false);
    buttonRow_->insertWidget(0, button);
    OnClick(button, procedure, kTopLevel, std::move(open));
    return button;
}

std::int32_t Page::hWnd() { return static_cast<std::int32_t>(winId()); }

void Page::NewButtonRow() {
    cmdBack = NewButton("cmdBack", QStringLiteral("<- Back"), buttonRow_);
    cmdNext = NewButton("cmdNext", QStringLiteral("Next ->"), buttonRow_);
    cmdCancel = NewButton("cmdCancel", QStringLiteral("Cancel"), buttonRow_);
}

void Page::Event(const char* procedure, bool topLevel, const std::function<void()>& body) {
    // The boundary between the page and the host's runtime, not a procedure
    // of the system: whatever a handler raises ends here.
    try {
        Guarded({procedure, module_, topLevel}, body);
    } catch (...) {
        RaiseToHost(runtime::CurrentFailure());
    }
}

void Page::OnClick(QAbstractButton* button, const char* procedure, bool topLevel,
                   std::function<void()> body) {
    connect(
        button, &QAbstractButton::clicked, this,
        [this, procedure, topLevel, body = std::move(body)] { Event(procedure, topLevel, body); });
}

void Page::OnChange(QLineEdit* box, const char* procedure, bool topLevel,
                    std::function<void()> body) {
    connect(
        box, &QLineEdit::textChanged, this,
        [this, procedure, topLevel, body = std::move(body)] { Event(procedure, topLevel, body); });
}

void Page::OnOptionClick(QRadioButton* option, const char* procedure, bool topLevel,
                         std::function<void()> body) {
    connect(option, &QRadioButton::toggled, this,
            [this, procedure, topLevel, body = std::move(body)](bool selected) {
                if (selected) Event(procedure, topLevel, body);
            });
}

void Page::HandOver(PageSlot& next) {
    g_frm_PreviousPage = &slot_;
    Hide();
    next.Show();
}

void Page::AddToFocusMap(std::initializer_list<raster::RasterDatasetPtr> datasets) {
    m_pDoc = runtime::Deref(m_pApp).Document();
    m_pMap = runtime::Deref(m_pDoc).FocusMap();
    for (const raster::RasterDatasetPtr& dataset : datasets) {
        if (!dataset) continue;
        auto layer = std::make_shared<map::RasterLayer>();
        layer->CreateFromDataset(dataset);
        runtime::Deref(m_pMap).AddLayer(layer);
    }
}

void Page::GoBack() {
    Hide();
    runtime::Deref(m_frmPrevious).Show();
}

void Page::ShowHelp(const char* topic) {
    HtmlHelpA(0, HelpFilePath(), ui::HH_DISPLAY_TOPIC, topic);
}

void Page::ApplyRunMode() {
    if (!g_b_StandAloneRun) return;
    cmdNext->setVisible(false);
    cmdBack->setVisible(false);
    cmdCancel->setText(QStringLiteral("Close"));
}

bool Page::HasInputElse(bool present, PageSlot& requiredData) {
    if (present) return true;
    requiredData.Show();
    Unload();
    return false;
}

void Page::closeEvent(QCloseEvent* event) {
    // Closing the frame unloads the page, as a form's close box does; it is
    // not a Cancel, so ExitProj does not run and the session stays.
    event->accept();
    Unload();
}

void Page::RunFormUnload() { Form_Unload(); }

void RaiseToHost(const runtime::Failure& failure) {
    ui::Services().MsgBox(
        "Run-time error '" + std::to_string(failure.number) + "':\r\n\r\n" + failure.description,
        ui::vbOKOnly + ui::vbCritical, "Halvane");
}

}  // namespace halvane::pages
