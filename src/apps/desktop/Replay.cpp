#include "apps/desktop/Replay.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTableWidget>
#include <algorithm>
#include <deque>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <sstream>

#include "apps/desktop/MainWindow.h"
#include "engine/Session.h"
#include "pages/Pages.h"
#include "platform/map/Layers.h"
#include "platform/map/Map.h"
#include "platform/raster/Storage.h"
#include "platform/runtime/Text.h"
#include "platform/ui/ScriptedServices.h"

namespace halvane::desktop {
namespace {

// --- one JSON object a line

std::string Quoted(const std::string& text) { return runtime::JsonString(text); }

class JsonLine {
public:
    explicit JsonLine(const std::string& event) { Text("event", event); }
    JsonLine& Text(const std::string& key, const std::string& value) {
        return Raw(key, Quoted(value));
    }
    JsonLine& Flag(const std::string& key, bool value) { return Raw(key, value ? "true" : "false"); }
    JsonLine& List(const std::string& key, const std::vector<std::string>& values) {
        return Raw(key, ListOf(values));
    }
    // A table, row by row.
    JsonLine& Rows(const std::string& key, const std::vector<std::vector<std::string>>& rows) {
        std::string list = "[";
        for (const auto& row : rows) list += (list.size() > 1 ? "," : "") + ListOf(row);
        return Raw(key, list + "]");
    }
    void WriteTo(std::ostream& out) const { out << body_ << "}\n" << std::flush; }

private:
    static std::string ListOf(const std::vector<std::string>& values) {
        std::string list = "[";
        for (const std::string& value : values) list += (list.size() > 1 ? "," : "") + Quoted(value);
        return list + "]";
    }
    JsonLine& Raw(const std::string& key, const std::string& value) {
        body_ += (body_.empty() ? "{" : ",") + Quoted(key) + ":" + value;
        return *this;
    }
    std::string body_;
};

// --- the dialogs, answered from the script

struct DialogAnswer {
    std::string kind;  // "folder", "raster", "open", "save" or "cancel"
    std::string path;
};

class ReplayServices : public ui::ScriptedServices {
public:
    explicit ReplayServices(std::ostream& out) : out_(out) {
        onUnexpected = [](const std::string&) {};
        onEvent = [this](const ui::Event& event) {
            if (event.kind == "error-window") JsonLine("report").Text("text", event.text).WriteTo(out_);
            if (event.kind == "help") JsonLine("help").Text("topic", event.text).WriteTo(out_);
        };
        onProgressMessage = [this](ui::ScriptedProgressDialog& dialog) {
            if (!cancels_.empty() && cancels_.front() == dialog.position) {
                cancels_.pop_front();
                dialog.PressCancel();
            }
        };
    }

    // Cancel on the progress dialog the next time its bar stands at `position`.
    void QueueCancel(std::int32_t position) { cancels_.push_back(position); }

    // The progress dialog now open, if any.
    const ui::ScriptedProgressDialog* OpenProgress() const {
        const auto& dialogs = ProgressDialogs();
        if (dialogs.empty() || !dialogs.back()->visible) return nullptr;
        return dialogs.back().get();
    }

    void QueueQuestion(ui::MsgBoxResult answer) { questions_.push_back(answer); }
    void QueueDialog(DialogAnswer answer) { dialogs_.push_back(std::move(answer)); }

    ui::MsgBoxResult MsgBox(const std::string& prompt, int buttons,
                            const std::string& title) override {
        Record({KindOfMessage(buttons), prompt, title, buttons});
        const int choice = buttons & ui::kButtonsMask;
        const bool question = choice == ui::vbYesNo || choice == ui::vbOKCancel;
        ui::MsgBoxResult answer = ui::vbOK;
        if (question) {
            if (questions_.empty()) {
                Unanswered("question");
                answer = choice == ui::vbYesNo ? ui::vbNo : ui::vbCancel;
            } else {
                answer = questions_.front();
                questions_.pop_front();
                if (choice == ui::vbOKCancel) answer = answer == ui::vbYes ? ui::vbOK : ui::vbCancel;
            }
        }
        const char* kind = question ? "question"
                           : (buttons & ui::kIconMask) == ui::vbCritical ? "stop"
                                                                         : "notice";
        const char* said = answer == ui::vbYes   ? "Yes"
                           : answer == ui::vbNo  ? "No"
                           : answer == ui::vbOK  ? "OK"
                                                 : "Cancel";
        JsonLine("message")
            .Text("kind", kind)
            .Text("title", title)
            .Text("text", prompt)
            .Text("answer", said)
            .WriteTo(out_);
        return answer;
    }

    bool ShowGxDialog(const ui::GxDialog& dialog, ui::WindowHandle,
                      std::vector<std::string>& selection) override {
        Record({"browse", {}, dialog.Title, 0});
        const auto path = Take(dialog.ObjectFilter == ui::GxObjectFilter::Folders ? "folder" : "raster");
        if (!path) return false;
        selection = {*path};
        return true;
    }

    bool ShowFileDialog(ui::CommonDialog& dialog, ui::FileDialogMode mode) override {
        const bool save = mode == ui::FileDialogMode::Save;
        Record({save ? "file-save" : "file-open", dialog.FileName, dialog.DialogTitle, dialog.Flags});
        const auto path = Take(save ? "save" : "open");
        if (!path) return false;
        dialog.FileName = *path;
        return true;
    }

private:
    // The queued path for a dialog of `kind`; none after Cancel, or when the
    // next answer is for another kind of dialog (it then stays queued).
    std::optional<std::string> Take(const std::string& kind) {
        if (dialogs_.empty() || (dialogs_.front().kind != kind && dialogs_.front().kind != "cancel")) {
            Unanswered(kind);
            return std::nullopt;
        }
        DialogAnswer answer = std::move(dialogs_.front());
        dialogs_.pop_front();
        if (answer.kind == "cancel") return std::nullopt;
        return answer.path;
    }

    void Unanswered(const std::string& kind) { JsonLine("unanswered").Text("kind", kind).WriteTo(out_); }

    std::ostream& out_;
    std::deque<ui::MsgBoxResult> questions_;
    std::deque<DialogAnswer> dialogs_;
    std::deque<std::int32_t> cancels_;
};

// --- the script

struct Action {
    int line = 0;
    std::string verb;
    std::string target;  // CONTROL, CLASSNAME, or the kind of answer
    std::string text;    // TEXT, PATH, KEY, or "ROW COL"
};

// A line the script cannot go on from.
struct ScriptError {
    int line;
    std::string what;
};

const std::map<std::string, int>& Keys() {
    static const std::map<std::string, int> keys = {
        {"Enter", Qt::Key_Return}, {"Left", Qt::Key_Left},     {"Up", Qt::Key_Up},
        {"Right", Qt::Key_Right},  {"Down", Qt::Key_Down},     {"Delete", Qt::Key_Delete}};
    return keys;
}

pages::PageSlot* PageNamed(const std::string& name) {
    for (pages::PageSlot* page : pages::AllPageSlots()) {
        if (page->Name() == name) return page;
    }
    return nullptr;
}

// Splits "first rest" at its first blank; the rest may be empty.
std::pair<std::string, std::string> Split(const std::string& text) {
    const std::size_t blank = text.find(' ');
    if (blank == std::string::npos) return {text, {}};
    return {text.substr(0, blank), text.substr(blank + 1)};
}

void CheckControlName(const Action& action) {
    const std::size_t dot = action.target.find('.');
    if (dot == std::string::npos || dot + 1 == action.target.size()) {
        throw ScriptError{action.line, "expected PAGE.CONTROL, not '" + action.target + "'"};
    }
    const std::string page = action.target.substr(0, dot);
    if (!PageNamed(page)) throw ScriptError{action.line, "unknown page '" + page + "'"};
}

bool IsPosition(const std::string& text) {
    return !text.empty() && text.size() < 6 &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The screen's mouse pointer, as `get` names it.
constexpr const char* kPointer = "Screen.MousePointer";

Action ParseLine(int number, const std::string& line) {
    Action action;
    action.line = number;
    auto [verb, rest] = Split(line);
    action.verb = verb;
    if (verb == "command" || verb == "click") {
        action.target = rest;
        if (rest.empty()) throw ScriptError{number, verb + " needs a name"};
        if (verb == "click") CheckControlName(action);
    } else if (verb == "type" || verb == "pick" || verb == "key" || verb == "cell") {
        std::tie(action.target, action.text) = Split(rest);
        CheckControlName(action);
        if (verb == "key" && !Keys().count(action.text)) {
            throw ScriptError{number, "unknown key '" + action.text + "'"};
        }
        if (verb == "cell") {
            std::istringstream numbers(action.text);
            int row = 0, col = 0;
            std::string more;
            if (!(numbers >> row >> col) || (numbers >> more)) {
                throw ScriptError{number, "cell needs ROW COL, not '" + action.text + "'"};
            }
        }
    } else if (verb == "answer") {
        std::tie(action.target, action.text) = Split(rest);
        const std::string& kind = action.target;
        const bool known = (kind == "question" && (action.text == "Yes" || action.text == "No")) ||
                           ((kind == "folder" || kind == "raster" || kind == "open" ||
                             kind == "save") && !action.text.empty()) ||
                           (kind == "cancel" && action.text.empty()) ||
                           (kind == "progress" && IsPosition(action.text));
        if (!known) throw ScriptError{number, "unknown answer '" + rest + "'"};
    } else if (verb == "get") {
        action.target = rest;
        if (rest != "shown" && rest != "progress" && rest != "map" && rest != kPointer &&
            rest.rfind("session.", 0) != 0) {
            CheckControlName(action);
        }
    } else {
        throw ScriptError{number, "unknown action '" + verb + "'"};
    }
    return action;
}

std::vector<Action> ReadScript(std::istream& in) {
    std::vector<Action> actions;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        const std::size_t start = line.find_first_not_of(" \t");
        if (start == std::string::npos || line[start] == '#') continue;
        actions.push_back(ParseLine(number, line.substr(start)));
    }
    return actions;
}

// --- the session record as text

std::string DatasetText(const raster::RasterDatasetPtr& dataset) {
    if (!dataset) return {};
    return dataset->IsTemporary() ? "(temporary)" : dataset->Path();
}

std::map<std::string, std::function<std::string()>> SessionTexts() {
    using std::string;
    std::map<string, std::function<string()>> texts;
    auto text = [&texts](const char* name, const string& value) {
        texts[name] = [&value] { return value; };
    };
    auto dataset = [&texts](const char* name, const raster::RasterDatasetPtr& value) {
        texts[name] = [&value] { return DatasetText(value); };
    };
    auto number = [&texts](const char* name, const double& value) {
        texts[name] = [&value] { return runtime::CStr(value); };
    };
    auto flag = [&texts](const char* name, const runtime::VbBool& value) {
        texts[name] = [&value] { return string(value ? "True" : "False"); };
    };
    flag("g_b_StandAloneRun", g_b_StandAloneRun);
    flag("g_b_Continue", g_b_Continue);
    texts["g_frm_PreviousPage"] = [] {
        return g_frm_PreviousPage ? string(g_frm_PreviousPage->Name()) : string();
    };
    text("g_s_WorkingDir", g_s_WorkingDir);
    dataset("g_p_InputRasterDataset", g_p_InputRasterDataset);
    text("g_s_InputDataSet", g_s_InputDataSet);
    text("g_s_InputDataPath", g_s_InputDataPath);
    text("g_s_InputDataCellSize", g_s_InputDataCellSize);
    text("g_s_ResampledDataSet", g_s_ResampledDataSet);
    dataset("g_p_CellSizeRasterDataset", g_p_CellSizeRasterDataset);
    dataset("g_p_BPI_RasterDataset", g_p_BPI_RasterDataset);
    text("g_s_BPI_DataSet", g_s_BPI_DataSet);
    text("g_s_BPI_DataPath", g_s_BPI_DataPath);
    text("g_s_BPI_CellSize", g_s_BPI_CellSize);
    text("g_i_SmScaleBPI_inner_radius", g_i_SmScaleBPI_inner_radius);
    text("g_i_SmScaleBPI_outer_radius", g_i_SmScaleBPI_outer_radius);
    text("g_i_LgScaleBPI_inner_radius", g_i_LgScaleBPI_inner_radius);
    text("g_i_LgScaleBPI_outer_radius", g_i_LgScaleBPI_outer_radius);
    text("g_s_SS_BPI_InputDataSet", g_s_SS_BPI_InputDataSet);
    text("g_s_SS_BPI_InputDataPath", g_s_SS_BPI_InputDataPath);
    dataset("g_p_SS_BPI_RasterDataset", g_p_SS_BPI_RasterDataset);
    number("g_d_SS_BPI_Mean", g_d_SS_BPI_Mean);
    number("g_d_SS_BPI_StdDev", g_d_SS_BPI_StdDev);
    text("g_s_LS_BPI_InputDataSet", g_s_LS_BPI_InputDataSet);
    text("g_s_LS_BPI_InputDataPath", g_s_LS_BPI_InputDataPath);
    dataset("g_p_LS_BPI_RasterDataset", g_p_LS_BPI_RasterDataset);
    number("g_d_LS_BPI_Mean", g_d_LS_BPI_Mean);
    number("g_d_LS_BPI_StdDev", g_d_LS_BPI_StdDev);
    text("g_s_Save_SmScale_Std_Grid", g_s_Save_SmScale_Std_Grid);
    text("g_s_SmScale_Std_GridPath", g_s_SmScale_Std_GridPath);
    dataset("g_p_SmScale_Std_RasterDataset", g_p_SmScale_Std_RasterDataset);
    text("g_s_Save_LgScale_Std_Grid", g_s_Save_LgScale_Std_Grid);
    text("g_s_LgScale_Std_GridPath", g_s_LgScale_Std_GridPath);
    dataset("g_p_LgScale_Std_RasterDataset", g_p_LgScale_Std_RasterDataset);
    text("g_s_ClassDictionary_Path", g_s_ClassDictionary_Path);
    text("g_s_SlopeGrid", g_s_SlopeGrid);
    texts["g_p_SlopeRaster"] = [] {
        return g_p_SlopeRaster ? DatasetText(g_p_SlopeRaster->Item(0)->RasterDataset()) : string();
    };
    text("g_s_OutputDataSet", g_s_OutputDataSet);
    dataset("g_p_OutputRasterDataset", g_p_OutputRasterDataset);
    texts["g_dict_Zones"] = [] {
        string entries;
        if (!g_dict_Zones) return entries;
        for (const auto& [position, zone] : *g_dict_Zones) {
            entries += (entries.empty() ? "" : "; ") + std::to_string(position) + "=" + zone;
        }
        return entries;
    };
    text("g_s_Rugosity_InputDataSet", g_s_Rugosity_InputDataSet);
    text("g_s_Rugosity_InputDataPath", g_s_Rugosity_InputDataPath);
    dataset("g_p_Rugosity_RasterDataset", g_p_Rugosity_RasterDataset);
    text("g_s_SaveRugosity_OutputData", g_s_SaveRugosity_OutputData);
    dataset("g_p_Rugosity_OutputRasterDataset", g_p_Rugosity_OutputRasterDataset);
    return texts;
}

// --- running it

class Replay {
public:
    Replay(MainWindow& window, std::ostream& out)
        : window_(window), out_(out), services_(out), scope_(services_), session_(SessionTexts()) {
        pages::ObservePageLife([this](pages::PageLife life, const pages::PageSlot& page) {
            static const char* const names[] = {"load", "show", "hide", "unload"};
            JsonLine(names[static_cast<int>(life)]).Text("page", page.Name()).WriteTo(out_);
        });
    }
    ~Replay() { pages::ObservePageLife({}); }

    void Run(const Action& action) {
        if (action.verb == "command") {
            Command(action);
        } else if (action.verb == "answer") {
            Answer(action);
        } else if (action.verb == "get") {
            Get(action);
        } else {
            UserInput(action);
        }
        // Pages unloaded by the action go now, as they would between two clicks.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

private:
    struct Control {
        pages::PageSlot* page;
        QWidget* widget;  // null for the page's caption
    };

    Control Find(const Action& action) const {
        const std::size_t dot = action.target.find('.');
        pages::PageSlot* page = PageNamed(action.target.substr(0, dot));
        const std::string name = action.target.substr(dot + 1);
        if (name == "Caption") return {page, nullptr};
        // A page not loaded is made as it was designed, without Form_Load.
        auto* widget = page->Get().findChild<QWidget*>(QString::fromStdString(name));
        if (!widget) throw ScriptError{action.line, "unknown control '" + action.target + "'"};
        return {page, widget};
    }

    void Command(const Action& action) {
        host::ICommand* command = window_.Component().Command("Halvane." + action.target);
        if (!command) throw ScriptError{action.line, "unknown command '" + action.target + "'"};
        command->OnClick();
    }

    void Answer(const Action& action) {
        if (action.target == "question") {
            services_.QueueQuestion(action.text == "Yes" ? ui::vbYes : ui::vbNo);
        } else if (action.target == "progress") {
            services_.QueueCancel(std::stoi(action.text));
        } else {
            services_.QueueDialog({action.target, action.text});
        }
    }

    // What a person does with mouse and keyboard: only on a page on the
    // screen, to a control that is there and enabled.
    void UserInput(const Action& action) {
        const Control control = Find(action);
        QWidget* widget = control.widget;
        if (!widget) throw ScriptError{action.line, "the caption takes no " + action.verb};
        // A tab that is not in front is still there to click.
        QTabWidget* tabs = TabsOf(*widget);
        QWidget* seen = tabs ? tabs : widget;
        const char* why = !control.page->Shown()                        ? "page not shown"
                          : !seen->isVisibleTo(&control.page->Get())   ? "hidden"
                          : !widget->isEnabled()                        ? "disabled"
                                                                        : nullptr;
        if (why) {
            JsonLine("ignored").Text("control", action.target).Text("why", why).WriteTo(out_);
            return;
        }
        if (action.verb == "click" && tabs) {
            tabs->setCurrentWidget(widget);
        } else if (action.verb == "click") {
            Click(*widget);
        } else if (action.verb == "type") {
            Type(action, *widget);
        } else if (action.verb == "pick") {
            Pick(action, *widget);
        } else if (action.verb == "cell") {
            Cell(action, *widget);
        } else {
            widget->setFocus();
            const int key = Keys().at(action.text);
            QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
            QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
            QApplication::sendEvent(widget, &press);
            QApplication::sendEvent(widget, &release);
        }
    }

    // The tab control that `widget` is a tab of, if it is one.
    static QTabWidget* TabsOf(QWidget& widget) {
        auto* stack = qobject_cast<QStackedWidget*>(widget.parentWidget());
        if (!stack) return nullptr;
        auto* tabs = qobject_cast<QTabWidget*>(stack->parentWidget());
        return tabs && tabs->indexOf(&widget) >= 0 ? tabs : nullptr;
    }

    static void ClickAt(QWidget& widget, const QPoint& where) {
        QMouseEvent press(QEvent::MouseButtonPress, where, Qt::LeftButton, Qt::LeftButton,
                          Qt::NoModifier);
        QMouseEvent release(QEvent::MouseButtonRelease, where, Qt::LeftButton, Qt::NoButton,
                            Qt::NoModifier);
        QApplication::sendEvent(&widget, &press);
        QApplication::sendEvent(&widget, &release);
    }

    static void Click(QWidget& widget) {
        if (auto* button = qobject_cast<QAbstractButton*>(&widget)) {
            button->click();
        } else {
            ClickAt(widget, widget.rect().center());
        }
    }

    static QLineEdit* BoxOf(QWidget& widget) {
        if (auto* box = qobject_cast<QLineEdit*>(&widget)) return box;
        if (auto* combo = qobject_cast<QComboBox*>(&widget)) return combo->lineEdit();
        return nullptr;
    }

    static void Type(const Action& action, QWidget& widget) {
        QLineEdit* box = BoxOf(widget);
        if (!box) throw ScriptError{action.line, "'" + action.target + "' takes no typing"};
        pages::TypeInto(*box, QString::fromStdString(action.text));
    }

    static void Pick(const Action& action, QWidget& widget) {
        auto* combo = qobject_cast<QComboBox*>(&widget);
        if (!combo) throw ScriptError{action.line, "'" + action.target + "' is no combo box"};
        const int entry = combo->findText(QString::fromStdString(action.text), Qt::MatchExactly);
        if (entry < 0) {
            throw ScriptError{action.line, "'" + action.target + "' has no entry '" + action.text + "'"};
        }
        combo->setCurrentIndex(entry);
    }

    static void Cell(const Action& action, QWidget& widget) {
        auto* grid = qobject_cast<QAbstractItemView*>(&widget);
        if (!grid || !grid->model()) throw ScriptError{action.line, "'" + action.target + "' is no grid"};
        std::istringstream numbers(action.text);
        int row = 0, col = 0;
        numbers >> row >> col;
        const QModelIndex index = grid->model()->index(row, col);
        if (!index.isValid()) {
            throw ScriptError{action.line, "'" + action.target + "' has no cell " + action.text};
        }
        grid->setCurrentIndex(index);
        grid->scrollTo(index);
        ClickAt(*grid->viewport(), grid->visualRect(index).center());
    }

    void Get(const Action& action) {
        if (action.target == "shown") {
            std::vector<std::string> shown;
            for (const pages::PageSlot* page : pages::AllPageSlots()) {
                if (page->Shown()) shown.emplace_back(page->Name());
            }
            std::sort(shown.begin(), shown.end());
            JsonLine("shown").List("pages", shown).WriteTo(out_);
            return;
        }
        if (action.target == kPointer) {
            JsonLine("value")
                .Text("name", action.target)
                .Text("text", std::to_string(services_.MousePointer()))
                .WriteTo(out_);
            return;
        }
        if (action.target == "map") {
            const map::MapPtr focus = window_.FocusMap();
            std::vector<std::string> layers;
            for (std::int32_t i = 0; focus && i < focus->LayerCount(); ++i) {
                layers.push_back(focus->Layer(i)->Name());
            }
            JsonLine("value").Text("name", action.target).List("layers", layers).WriteTo(out_);
            return;
        }
        if (action.target == "progress") {
            const ui::ScriptedProgressDialog* open = services_.OpenProgress();
            JsonLine("value")
                .Text("name", action.target)
                .Text("text", open ? open->message : std::string())
                .Flag("visible", open != nullptr)
                .WriteTo(out_);
            return;
        }
        if (action.target.rfind("session.", 0) == 0) {
            const auto found = session_.find(action.target.substr(8));
            if (found == session_.end()) {
                throw ScriptError{action.line, "unknown session variable '" + action.target + "'"};
            }
            JsonLine("value").Text("name", action.target).Text("text", found->second()).WriteTo(out_);
            return;
        }
        const Control control = Find(action);
        pages::Page& page = control.page->Get();
        if (!control.widget) {
            JsonLine("value")
                .Text("name", action.target)
                .Text("text", page.windowTitle().toStdString())
                .Flag("visible", page.isVisible())
                .Flag("enabled", page.isEnabled())
                .WriteTo(out_);
            return;
        }
        QWidget& widget = *control.widget;
        JsonLine value("value");
        value.Text("name", action.target)
            .Text("text", TextOf(widget))
            .Flag("visible", widget.isVisibleTo(&page))
            .Flag("enabled", widget.isEnabled());
        if (auto* option = qobject_cast<QRadioButton*>(&widget)) {
            value.Flag("checked", option->isChecked());
        }
        if (auto* grid = qobject_cast<QAbstractItemView*>(&widget); grid && grid->model()) {
            value.Rows("cells", CellsOf(*grid->model()));
        }
        value.WriteTo(out_);
    }

    static std::vector<std::vector<std::string>> CellsOf(const QAbstractItemModel& model) {
        std::vector<std::vector<std::string>> rows(model.rowCount());
        for (int row = 0; row < model.rowCount(); ++row) {
            for (int col = 0; col < model.columnCount(); ++col) {
                rows[row].push_back(model.index(row, col).data().toString().toStdString());
            }
        }
        return rows;
    }

    static std::string TextOf(QWidget& widget) {
        QString text;
        if (auto* label = qobject_cast<QLabel*>(&widget)) text = label->text();
        if (auto* button = qobject_cast<QAbstractButton*>(&widget)) text = button->text();
        if (auto* box = qobject_cast<QLineEdit*>(&widget)) text = box->text();
        if (auto* combo = qobject_cast<QComboBox*>(&widget)) text = combo->currentText();
        if (auto* tabs = qobject_cast<QTabWidget*>(&widget)) text = tabs->tabText(tabs->currentIndex());
        if (auto* grid = qobject_cast<QAbstractItemView*>(&widget)) {
            text = grid->currentIndex().data().toString();
        }
        return text.toStdString();
    }

    MainWindow& window_;
    std::ostream& out_;
    ReplayServices services_;
    ui::ServicesScope scope_;
    std::map<std::string, std::function<std::string()>> session_;
};

}  // namespace

int RunReplay(const std::string& file, MainWindow& window, std::ostream& out,
              std::ostream& errors) {
    std::ifstream in(file);
    if (!in) {
        errors << "halvane-desktop: cannot read " << file << "\n";
        return kReplayBadScript;
    }
    try {
        const std::vector<Action> actions = ReadScript(in);
        Replay replay(window, out);
        for (const Action& action : actions) replay.Run(action);
    } catch (const ScriptError& error) {
        errors << "halvane-desktop: " << file << ":" << error.line << ": " << error.what << "\n";
        return kReplayBadScript;
    }
    return kReplayDone;
}

}  // namespace halvane::desktop
