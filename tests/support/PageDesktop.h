#pragma once
// Pages on the scripted desktop, driven as a user drives them: click what is
// on the screen, type into boxes, read what a page shows. A click on a button
// the user could not reach (page not shown, button hidden or disabled) fails
// the test instead of running the handler.
//
// Before and after each test the session is empty, every page unloaded and
// the reporting layer as a fresh component has it.

#include <QAbstractButton>
#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>
#include <algorithm>
#include <string>
#include <vector>

#include "engine/Session.h"
#include "pages/Pages.h"
#include "platform/reporting/ErrorHandling.h"
#include "support/ScriptedDesktop.h"

namespace halvane::testing {

class PageDesktop : public ScriptedDesktop {
protected:
    PageDesktop() { Clean(); }
    void TearDown() override {
        Clean();
        ScriptedDesktop::TearDown();
    }

    // Lets the event loop take away the pages that were unloaded.
    static void FlushUnloads() {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    // What the wizard's command does.
    static void StartWizard() {
        g_b_StandAloneRun = false;
        pages::frmIntro.Show();
    }

    template <class Control = QWidget>
    static Control* Find(pages::PageSlot& page, const char* control) {
        if (!page.Loaded()) {
            ADD_FAILURE() << page.Name() << " is not loaded";
            return nullptr;
        }
        auto* found = page.Get().findChild<Control*>(QString::fromLatin1(control));
        if (!found) ADD_FAILURE() << page.Name() << " has no " << control;
        return found;
    }

    static void Click(pages::PageSlot& page, const char* button) {
        auto* found = Find<QAbstractButton>(page, button);
        if (!found) return;
        if (!page.Shown()) {
            ADD_FAILURE() << "clicked " << button << " on " << page.Name() << ", not shown";
        } else if (!found->isVisible() || !found->isEnabled()) {
            ADD_FAILURE() << button << " on " << page.Name() << " cannot be clicked";
        } else {
            found->click();
        }
    }

    // Replaces the box's text as typing would, within its maximum length.
    static void Type(pages::PageSlot& page, const char* box, const std::string& text) {
        if (auto* found = Find<QLineEdit>(page, box)) {
            pages::TypeInto(*found, QString::fromStdString(text));
        }
    }

    // The text a label, button or box shows.
    static std::string Text(pages::PageSlot& page, const char* control) {
        QWidget* found = Find(page, control);
        if (auto* label = qobject_cast<QLabel*>(found)) return label->text().toStdString();
        if (auto* button = qobject_cast<QAbstractButton*>(found)) {
            return button->text().toStdString();
        }
        if (auto* box = qobject_cast<QLineEdit*>(found)) return box->text().toStdString();
        return {};
    }

    // Whether the control is shown on its page (as far as the page goes).
    static bool Visible(pages::PageSlot& page, const char* control) {
        QWidget* found = Find(page, control);
        return found && found->isVisibleTo(&page.Get());
    }

    static std::vector<std::string> ShownPages() {
        return PagesWhere([](const pages::PageSlot& page) { return page.Shown(); });
    }
    static std::vector<std::string> LoadedPages() {
        return PagesWhere([](const pages::PageSlot& page) { return page.Loaded(); });
    }

private:
    template <class Test>
    static std::vector<std::string> PagesWhere(Test test) {
        std::vector<std::string> names;
        for (const pages::PageSlot* page : pages::AllPageSlots()) {
            if (test(*page)) names.push_back(page->Name());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    static void Clean() {
        for (pages::PageSlot* page : pages::AllPageSlots()) page->Unload();
        FlushUnloads();
        ResetSession();
        g_b_StandAloneRun = false;
        ErrorHandling::m_bErrorTextBuilt = false;
        ErrorHandling::ReleaseErrorWindow();
    }
};

}  // namespace halvane::testing
