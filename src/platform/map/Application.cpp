#include "platform/map/Application.h"

namespace halvane::map {

MxDocument::MxDocument() : map_(std::make_shared<Map>()) {}

Application::Application(ui::WindowHandle hWnd)
    : document_(std::make_shared<MxDocument>()), hWnd_(hWnd) {}

}  // namespace halvane::map
