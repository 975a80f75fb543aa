#pragma once

#include "engine/Export.h"
#include "engine/scenegraph/IRenderScene.h"

#include <boost/shared_ptr.hpp>

namespace halvern::engine::light {
class LightManager;
}

namespace halvern::engine::scenegraph {

/// A render scene that has lights.
class HALVERN_ENGINE_API RenderSceneGraph : public IRenderScene
{
public:
    ~RenderSceneGraph() override;

    /// Empty here; a scene that renders has one.
    virtual boost::shared_ptr<light::LightManager> getLightManager();
};

} // namespace halvern::engine::scenegraph
