#pragma once

#include "engine/Export.h"

namespace halvern::engine::scenegraph {

/// The renderer's view of a scene. Cast with boost::dynamic_pointer_cast.
class HALVERN_ENGINE_API IRenderScene
{
public:
    virtual ~IRenderScene();
};

} // namespace halvern::engine::scenegraph
