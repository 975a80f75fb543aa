#pragma once

#include "engine/Export.h"

namespace halvern::engine::fx {

/// A texture that is rendered into. GUI thread.
class HALVERN_ENGINE_API FXRenderTarget
{
public:
    /// For a texture that never changes; the target does not own it.
    explicit FXRenderTarget(unsigned int textureID);

    /// Name of the OpenGL texture; 0 before the first render.
    virtual unsigned int getTextureID();

    virtual ~FXRenderTarget();

private:
    unsigned int textureID;
};

} // namespace halvern::engine::fx
