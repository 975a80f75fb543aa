#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

namespace halvern::engine::renderer {
class IRenderer;
}

namespace halvern::engine::window {

/// A part of a window that shows a scene.
class HALVERN_ENGINE_API Viewport
{
public:
    /// Empty here; a viewport that draws has one.
    virtual boost::shared_ptr<renderer::IRenderer> getSceneRenderer();
    virtual ~Viewport();
};

} // namespace halvern::engine::window
