#pragma once

#include <Eigen/Core>

namespace halvern::engine {

/// A framebuffer with an RGBA8 colour texture and a depth-stencil buffer. Every operation wants its
/// context current; the destructor frees nothing.
class RenderTarget
{
public:
    RenderTarget() = default;
    RenderTarget(const RenderTarget&) = delete;
    RenderTarget& operator=(const RenderTarget&) = delete;

    /// Makes, or makes anew, what differs in size; leaves bindings changed. The texture keeps its name.
    void resize(Eigen::Vector2i size);
    void release();

    unsigned int framebuffer() const { return framebufferID; }
    unsigned int colorTexture() const { return colorID; }
    Eigen::Vector2i size() const { return currentSize; }

private:
    unsigned int framebufferID = 0;
    unsigned int colorID = 0;
    unsigned int depthStencilID = 0;
    Eigen::Vector2i currentSize = Eigen::Vector2i::Zero();
};

} // namespace halvern::engine
