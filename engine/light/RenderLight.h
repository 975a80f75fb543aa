#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

namespace halvern::engine::fx {
class FXRenderTarget;
}

namespace halvern::engine::light {

/// A light as the renderer uses it. GUI thread.
class HALVERN_ENGINE_API RenderLight
{
public:
    /// Whether the shadow map has been rendered at least once.
    virtual bool isInited() = 0;

    /// A depth texture with the compare mode GL_COMPARE_R_TO_TEXTURE; empty for a light without one.
    virtual boost::shared_ptr<fx::FXRenderTarget> getShadowMap() = 0;

    virtual ~RenderLight();
};

} // namespace halvern::engine::light
