#pragma once

#include "engine/Export.h"

namespace halvern::engine::fx {

/// A full-screen effect, ready to be put into a pipeline.
class HALVERN_ENGINE_API FXSceneEffect
{
public:
    virtual ~FXSceneEffect();
};

} // namespace halvern::engine::fx
