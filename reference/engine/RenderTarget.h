#pragma once

#include <Eigen/Core>

#include <osg/FrameBufferObject>
#include <osg/Texture2D>

namespace halvern::engine {

/// A framebuffer that draws into a texture.
class RenderTarget
{
public:
    enum class Kind {
        Color,      ///< RGBA8 with a depth and stencil buffer
        SceneColor, ///< RGBA8 with a depth texture
        Picture,    ///< RGBA8 alone
        Mask,       ///< one 8-bit channel
        ShadowDepth ///< 24-bit depth, set up for shadow comparison
    };

    explicit RenderTarget(Kind kind);

    /// Makes the objects anew if the size differs.
    void resize(Eigen::Vector2i size);

    /// Binds the framebuffer for drawing and reading.
    void bind(osg::State& state);

    Eigen::Vector2i size() const { return currentSize; }

    /// Name of the texture in the state's context, 0 before the first bind.
    unsigned int textureID(const osg::State& state) const;

    osg::Texture2D* texture() const { return targetTexture.get(); }
    osg::Texture2D* depthTexture() const { return targetDepth.get(); } ///< of the kind SceneColor

private:
    const Kind kind;
    Eigen::Vector2i currentSize = Eigen::Vector2i::Zero();
    osg::ref_ptr<osg::Texture2D> targetTexture;
    osg::ref_ptr<osg::Texture2D> targetDepth;
    osg::ref_ptr<osg::FrameBufferObject> framebuffer;
};

} // namespace halvern::engine
