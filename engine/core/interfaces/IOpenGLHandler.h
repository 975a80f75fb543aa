#pragma once

#include "engine/Export.h"

namespace halvern::core::interfaces {

/// Draws something of the host's own in a view, after the scene and before the painted overlays.
/// All operations are called on the GUI thread with the view's OpenGL context current.
class HALVERN_CORE_API IOpenGLHandler
{
public:
    /// Whether initialize() need not be called. A handler that shall move with its view into another context
    /// answers false until it is initialised there.
    virtual bool isInitialized() = 0;

    /// Called before the first render(), and whenever isInitialized() is false before one.
    virtual void initialize() = 0;

    /// Called once per frame. The view restores the attributes, the program, the framebuffer, the vertex
    /// array and the buffer bindings afterwards. An exception ends the frame, which stays without overlays.
    virtual void render() = 0;

    virtual ~IOpenGLHandler();
};

} // namespace halvern::core::interfaces
