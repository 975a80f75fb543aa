#pragma once

#include "engine/fx/FXRenderTarget.h"

namespace halvern::engine {

/// A render target whose texture is made, and made anew, behind the handle.
class LiveRenderTarget : public fx::FXRenderTarget
{
public:
    LiveRenderTarget() : FXRenderTarget(0) {}

    unsigned int getTextureID() override { return currentID; }
    void setTextureID(unsigned int textureID) { currentID = textureID; }

private:
    unsigned int currentID = 0;
};

} // namespace halvern::engine
