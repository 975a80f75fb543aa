#include "reference/engine/NativeContext.h"

#include <EGL/egl.h>
#include <GL/glx.h>

namespace halvern::engine {

void* currentNativeContext()
{
    if (GLXContext context = glXGetCurrentContext())
        return context;
    return eglGetCurrentContext();
}

} // namespace halvern::engine
