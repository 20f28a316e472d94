#pragma once
// Handles of the host application, its document and its focus map, for code
// that only keeps them (the pages hold them until they add a layer).

#include <memory>

namespace halvane::map {

class IApplication;
class IMxDocument;
class IMap;

using ApplicationPtr = std::shared_ptr<IApplication>;
using MxDocumentPtr = std::shared_ptr<IMxDocument>;
using MapPtr = std::shared_ptr<IMap>;

}  // namespace halvane::map
