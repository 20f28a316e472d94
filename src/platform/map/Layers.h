#pragma once
// What a map holds: layers with a name and a visibility, and the raster layer
// that shows a grid.

#include <memory>
#include <string>

#include "platform/map/Renderers.h"
#include "platform/raster/Fwd.h"

namespace halvane::map {

class ILayer {
public:
    virtual ~ILayer() = default;

    const std::string& Name() const { return name_; }
    void Name(std::string name) { name_ = std::move(name); }
    bool Visible() const { return visible_; }
    void Visible(bool visible) { visible_ = visible; }

protected:
    ILayer() = default;

private:
    std::string name_;
    bool visible_ = true;
};
using LayerPtr = std::shared_ptr<ILayer>;

class RasterLayer : public ILayer {
public:
    // Shows the dataset under its name, with the default rendering. A null
    // dataset fails with 91.
    void CreateFromDataset(const raster::RasterDatasetPtr& dataset);
    // The same from a raster's full path; fails when it does not open.
    void CreateFromFilePath(const std::string& path);

    // The dataset's default raster, made once by CreateFromDataset; null before.
    const raster::RasterPtr& Raster() const { return raster_; }

    // Null means the default rendering: the view stretches the values.
    const RasterRendererPtr& Renderer() const { return renderer_; }
    void Renderer(RasterRendererPtr renderer) { renderer_ = std::move(renderer); }

private:
    raster::RasterPtr raster_;
    RasterRendererPtr renderer_;
};
using RasterLayerPtr = std::shared_ptr<RasterLayer>;

// Gives the layer one class per row of its grid's table, labelled and
// coloured with the names and colours stored with the grid; false, with the
// layer unchanged, when the grid stores none.
bool ShowStoredClasses(RasterLayer& layer);

}  // namespace halvane::map
