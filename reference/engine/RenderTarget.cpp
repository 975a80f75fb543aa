#include "reference/engine/RenderTarget.h"

#include "reference/engine/GL.h"

namespace halvern::engine {

namespace {

void setColorParameters()
{
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
}

} // namespace

void RenderTarget::resize(Eigen::Vector2i size)
{
    if (size == currentSize)
        return;
    if (!framebufferID) {
        glGenFramebuffers(1, &framebufferID);
        glGenRenderbuffers(1, &depthStencilID);
        glGenTextures(1, &colorID);
    }
    glBindTexture(GL_TEXTURE_2D, colorID);
    setColorParameters();
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, size.x(), size.y(), 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glBindRenderbuffer(GL_RENDERBUFFER, depthStencilID);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH24_STENCIL8, size.x(), size.y());
    glBindFramebuffer(GL_FRAMEBUFFER, framebufferID);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, colorID, 0);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER, depthStencilID);
    currentSize = size;
}

void RenderTarget::release()
{
    glDeleteFramebuffers(1, &framebufferID);
    glDeleteRenderbuffers(1, &depthStencilID);
    glDeleteTextures(1, &colorID);
    framebufferID = depthStencilID = colorID = 0;
    currentSize.setZero();
}

} // namespace halvern::engine
