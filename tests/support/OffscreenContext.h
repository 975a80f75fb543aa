#pragma once

#include <QImage>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>

namespace halvern::test {

/// An OpenGL context of the compatibility profile with a surface of its own that nobody sees; current from
/// the start, as far as there is OpenGL here.
class OffscreenContext
{
public:
    explicit OffscreenContext(QOpenGLContext* shared = nullptr)
    {
        QSurfaceFormat format;
        format.setVersion(2, 1);
        format.setProfile(QSurfaceFormat::CompatibilityProfile);
        format.setDepthBufferSize(24);
        format.setStencilBufferSize(8);
        context.setFormat(format);
        context.setShareContext(shared);
        context.create();
        surface.setFormat(context.format());
        surface.create();
        makeCurrent();
    }

    OffscreenContext(const OffscreenContext&) = delete;
    OffscreenContext& operator=(const OffscreenContext&) = delete;

    bool isValid() const { return context.isValid(); }
    bool makeCurrent() { return context.makeCurrent(&surface); }
    void doneCurrent() { context.doneCurrent(); }
    QOpenGLContext* get() { return &context; }

private:
    QOffscreenSurface surface;
    QOpenGLContext context;
};

/// Contents of a two-dimensional RGBA texture of the current context, the top row first.
inline QImage readTexture(unsigned int textureID)
{
    int bound = 0;
    int width = 0;
    int height = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    glBindTexture(GL_TEXTURE_2D, textureID);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
    QImage image(width, height, QImage::Format_RGBA8888);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    glBindTexture(GL_TEXTURE_2D, bound);
    return image.mirrored();
}

} // namespace halvern::test
