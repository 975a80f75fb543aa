#include "reference/engine/RenderTarget.h"

#include <GL/gl.h>

namespace halvern::engine {

namespace {

osg::ref_ptr<osg::Texture2D> makeTexture(RenderTarget::Kind kind, Eigen::Vector2i size)
{
    osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D;
    texture->setTextureSize(size.x(), size.y());
    texture->setResizeNonPowerOfTwoHint(false);
    texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR);
    texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    texture->setWrap(osg::Texture::WRAP_S, osg::Texture::CLAMP_TO_EDGE);
    texture->setWrap(osg::Texture::WRAP_T, osg::Texture::CLAMP_TO_EDGE);
    switch (kind) {
    case RenderTarget::Kind::Color:
    case RenderTarget::Kind::SceneColor:
    case RenderTarget::Kind::Picture:
        texture->setInternalFormat(GL_RGBA8);
        texture->setSourceFormat(GL_RGBA);
        texture->setSourceType(GL_UNSIGNED_BYTE);
        break;
    case RenderTarget::Kind::Mask:
        texture->setInternalFormat(GL_R8);
        texture->setSourceFormat(GL_RED);
        texture->setSourceType(GL_UNSIGNED_BYTE);
        break;
    case RenderTarget::Kind::ShadowDepth:
        texture->setInternalFormat(GL_DEPTH_COMPONENT24);
        texture->setSourceFormat(GL_DEPTH_COMPONENT);
        texture->setSourceType(GL_UNSIGNED_INT);
        texture->setShadowComparison(true);
        texture->setShadowCompareFunc(osg::Texture::LEQUAL);
        break;
    }
    return texture;
}

/// What a shader reads the depth of each pixel from.
osg::ref_ptr<osg::Texture2D> makeDepthTexture(Eigen::Vector2i size)
{
    osg::ref_ptr<osg::Texture2D> texture = makeTexture(RenderTarget::Kind::ShadowDepth, size);
    texture->setShadowComparison(false);
    texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::NEAREST);
    texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::NEAREST);
    return texture;
}

} // namespace

RenderTarget::RenderTarget(Kind newKind) : kind(newKind) {}

void RenderTarget::resize(Eigen::Vector2i size)
{
    if (size == currentSize)
        return;
    currentSize = size;
    targetTexture = makeTexture(kind, size);
    framebuffer = new osg::FrameBufferObject;
    const auto attachment = osg::FrameBufferAttachment(targetTexture.get());
    framebuffer->setAttachment(
        kind == Kind::ShadowDepth ? osg::Camera::DEPTH_BUFFER : osg::Camera::COLOR_BUFFER, attachment);
    if (kind == Kind::Color)
        framebuffer->setAttachment(
            osg::Camera::PACKED_DEPTH_STENCIL_BUFFER,
            osg::FrameBufferAttachment(new osg::RenderBuffer(size.x(), size.y(), GL_DEPTH24_STENCIL8)));
    if (kind == Kind::SceneColor) {
        targetDepth = makeDepthTexture(size);
        framebuffer->setAttachment(osg::Camera::DEPTH_BUFFER, osg::FrameBufferAttachment(targetDepth.get()));
    }
}

void RenderTarget::bind(osg::State& state)
{
    const bool isNew = textureID(state) == 0;
    framebuffer->apply(state);
    if (isNew && kind == Kind::ShadowDepth) {
        glDrawBuffer(GL_NONE);
        glReadBuffer(GL_NONE);
    }
}

unsigned int RenderTarget::textureID(const osg::State& state) const
{
    if (!targetTexture)
        return 0;
    const osg::Texture::TextureObject* object = targetTexture->getTextureObject(state.getContextID());
    return object ? object->id() : 0;
}

} // namespace halvern::engine
