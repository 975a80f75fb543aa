#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

namespace halvern::engine::light {

class RenderLight;

/// The lights of a render scene. GUI thread.
class HALVERN_ENGINE_API LightManager
{
public:
    /// Of the lights that are used for rendering, which may be fewer than the scene has.
    virtual unsigned int getLightCount() = 0;

    /// Empty for an index out of range.
    virtual boost::shared_ptr<RenderLight> getLightAt(unsigned int index) = 0;

    virtual ~LightManager();
};

} // namespace halvern::engine::light
