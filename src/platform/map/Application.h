#pragma once
// The host application as the system sees it: the application gives its
// document, and the document its focus map. The desktop host implements
// IApplication over its main window; Application serves the command line and
// the tests.

#include "platform/map/Fwd.h"
#include "platform/map/Map.h"
#include "platform/ui/Services.h"  // the window handle type only; nothing of a toolkit

namespace halvane::map {

class IMxDocument {
public:
    virtual ~IMxDocument() = default;
    virtual MapPtr FocusMap() const = 0;
};

// A document with one map, which is therefore always the focus map.
class MxDocument : public IMxDocument {
public:
    MxDocument();
    MapPtr FocusMap() const override { return map_; }

private:
    MapPtr map_;
};

class IApplication {
public:
    virtual ~IApplication() = default;
    virtual MxDocumentPtr Document() const = 0;
    // The main window, as owner of the dialogs the system opens.
    virtual ui::WindowHandle hWnd() const = 0;
};

// An application without a window (hWnd 0 unless given) and one document.
class Application : public IApplication {
public:
    explicit Application(ui::WindowHandle hWnd = 0);
    MxDocumentPtr Document() const override { return document_; }
    ui::WindowHandle hWnd() const override { return hWnd_; }

private:
    MxDocumentPtr document_;
    ui::WindowHandle hWnd_;
};

}  // namespace halvane::map
