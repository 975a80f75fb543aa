#pragma once

#include "engine/Export.h"

namespace halvern::engine::logic {

/// Moves a window's camera by the user's input.
class HALVERN_ENGINE_API CameraInputHandler
{
public:
    virtual ~CameraInputHandler();
};

} // namespace halvern::engine::logic
