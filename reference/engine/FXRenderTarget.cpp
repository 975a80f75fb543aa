#include "engine/fx/FXRenderTarget.h"

namespace halvern::engine::fx {

FXRenderTarget::FXRenderTarget(unsigned int newTextureID) : textureID(newTextureID) {}

FXRenderTarget::~FXRenderTarget() = default;

unsigned int FXRenderTarget::getTextureID()
{
    return textureID;
}

} // namespace halvern::engine::fx
