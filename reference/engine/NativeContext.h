#pragma once

namespace halvern::engine {

/// The OpenGL context that is current on this thread, GLX or EGL; null when there is none. Only good for
/// comparing: the address may be given to another context once this one is gone.
void* currentNativeContext();

} // namespace halvern::engine
