#pragma once

#include "engine/Export.h"

namespace halvern::engine::window {

class Window;

/// Whether the picture changes by itself, without input or changes of the scene, so that the host must go
/// on rendering: the user is flying, or a movement of the camera is not finished. GUI thread.
HALVERN_ENGINE_API bool isMoving(Window& window);

} // namespace halvern::engine::window
