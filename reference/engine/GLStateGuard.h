#pragma once

namespace halvern::engine {

/// Saves the OpenGL state of the current context and restores it at the end of its life, so that the
/// caller's painting goes on as if nothing had been drawn in between.
class GLStateGuard
{
public:
    GLStateGuard();
    ~GLStateGuard();

    GLStateGuard(const GLStateGuard&) = delete;
    GLStateGuard& operator=(const GLStateGuard&) = delete;

private:
    int drawFramebuffer = 0;
    int readFramebuffer = 0;
    int renderbuffer = 0;
    int program = 0;
    int arrayBuffer = 0;
    int vertexArray = 0;
    int elementBuffer = 0;
    int pixelPackBuffer = 0;
    int pixelUnpackBuffer = 0;
};

} // namespace halvern::engine
