#include "platform/ui/qt/QtDialogs.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTextBrowser>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>

namespace halvane::ui::qt {
namespace {

QString Q(const std::string& text) { return QString::fromStdString(text); }

// Texts of the system end their lines with CR LF; Qt wants LF alone.
QString Lines(const std::string& text) { return Q(text).remove(QLatin1Char('\r')); }

QMessageBox::Icon IconOf(int buttons) {
    switch (buttons & kIconMask) {
        case vbCritical:
            return QMessageBox::Critical;
        case vbQuestion:
            return QMessageBox::Question;
        case vbExclamation:
            return QMessageBox::Warning;
        case vbInformation:
            return QMessageBox::Information;
        default:
            return QMessageBox::NoIcon;
    }
}

}  // namespace

std::unique_ptr<QMessageBox> MakeMessageBox(const std::string& prompt, int buttons,
                                            const std::string& title) {
    auto box = std::make_unique<QMessageBox>();
    box->setWindowTitle(title.empty() ? QApplication::applicationDisplayName() : Q(title));
    box->setText(Lines(prompt));
    box->setIcon(IconOf(buttons));
    QMessageBox::StandardButton first = QMessageBox::Ok, second = QMessageBox::NoButton;
    switch (buttons & kButtonsMask) {
        case vbYesNo:
            first = QMessageBox::Yes;
            second = QMessageBox::No;
            break;
        case vbOKCancel:
            second = QMessageBox::Cancel;
            break;
        default:
            break;
    }
    box->setStandardButtons(first | second);
    const bool secondIsDefault = (buttons & vbDefaultButton2) && second != QMessageBox::NoButton;
    box->setDefaultButton(secondIsDefault ? second : first);
    // Closing the frame answers what the last button answers, as Escape does.
    box->setEscapeButton(second != QMessageBox::NoButton ? second : first);
    return box;
}

MsgBoxResult ResultOf(QMessageBox::StandardButton clicked) {
    switch (clicked) {
        case QMessageBox::Yes:
            return vbYes;
        case QMessageBox::No:
            return vbNo;
        case QMessageBox::Cancel:
            return vbCancel;
        default:
            return vbOK;
    }
}

ErrorWindow::ErrorWindow() {
    setWindowTitle(QApplication::applicationDisplayName());
    report = new QPlainTextEdit(this);
    report->setReadOnly(true);
    report->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    report->setLineWrapMode(QPlainTextEdit::NoWrap);
    report->setTabStopDistance(4 * report->fontMetrics().horizontalAdvance(QLatin1Char(' ')));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    closeButton = buttons->button(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(report);
    layout->addWidget(buttons);
    resize(620, 320);
}

void ErrorWindow::SetText(const std::string& text) { report->setPlainText(Lines(text)); }

void ErrorWindow::Show(bool show) {
    if (show) {
        exec();
    } else {
        hide();
    }
}

bool EventPumpingTracker::Continue() {
    QCoreApplication::processEvents();
    return CancelTracker::Continue();
}

ProgressDialog::ProgressDialog(std::shared_ptr<ITrackCancel> tracker)
    : tracker_(std::move(tracker)) {
    description = new QLabel(this);
    message = new QLabel(this);
    message->setMinimumWidth(360);
    bar = new QProgressBar(this);
    bar->setTextVisible(false);
    cancelButton = new QPushButton(tr("Cancel"), this);
    cancelButton->setEnabled(false);
    connect(cancelButton, &QPushButton::clicked, this, [this] {
        if (tracker_) tracker_->Cancel();
    });
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(description);
    layout->addWidget(message);
    layout->addWidget(bar);
    layout->addWidget(cancelButton, 0, Qt::AlignRight);
    setWindowFlag(Qt::WindowCloseButtonHint, false);
    show();
    Repaint();
}

void ProgressDialog::Message(const std::string& text) {
    message->setText(Lines(text));
    Repaint();
}

void ProgressDialog::MinRange(std::int32_t value) {
    min_ = value;
    ShowBar();
}

void ProgressDialog::MaxRange(std::int32_t value) {
    max_ = value;
    ShowBar();
}

void ProgressDialog::Position(std::int32_t value) {
    position_ = value;
    ShowBar();
    Repaint();
}

// The platform's animations have no counterpart here; the bar shows the work.
void ProgressDialog::Animation(int) {}

void ProgressDialog::CancelEnabled(bool enabled) { cancelButton->setEnabled(enabled); }

void ProgressDialog::Title(const std::string& title) { setWindowTitle(Q(title)); }

void ProgressDialog::Description(const std::string& text) { description->setText(Lines(text)); }

void ProgressDialog::HideDialog() {
    hide();
    Repaint();
}

void ProgressDialog::ShowBar() {
    // The position is kept as given; a bar cannot show one outside its range,
    // so it is drawn at the nearer end.
    bar->setRange(min_, std::max(min_, max_));
    bar->setValue(std::clamp(position_, bar->minimum(), bar->maximum()));
}

void ProgressDialog::Repaint() { QCoreApplication::processEvents(); }

HelpWindow::HelpWindow() {
    setWindowTitle(QApplication::applicationDisplayName() + tr(" Help"));
    browser = new QTextBrowser(this);
    browser->setOpenLinks(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(browser);
    resize(640, 560);
}

bool HelpWindow::ShowTopic(const std::string& file, const std::string& topic) {
    const QDir folder(Q(file));
    const QFileInfo page(folder.filePath(Q(topic)));
    if (file.empty() || topic.empty() || !folder.exists() || !page.isFile()) return false;
    browser->setSource(QUrl::fromLocalFile(page.absoluteFilePath()));
    show();
    raise();
    return true;
}

}  // namespace halvane::ui::qt
