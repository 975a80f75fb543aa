#include "reference/engine/Motion.h"

#include "engine/window/Window.h"
#include "reference/engine/CameraControl.h"

namespace halvern::engine::window {

bool isMoving(Window& window)
{
    const auto control = boost::dynamic_pointer_cast<CameraControl>(window.getLogicManager());
    return control && control->isMoving();
}

} // namespace halvern::engine::window
