#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

namespace halvern::engine::fx {

class FXSceneEffect;

/// The full-screen effects of a window, in the order of drawing. GUI thread.
class HALVERN_ENGINE_API FXPipeline
{
public:
    /// Appends a stage; an empty pointer is ignored.
    virtual void pushBack(boost::shared_ptr<FXSceneEffect> effect) = 0;

    virtual ~FXPipeline();
};

} // namespace halvern::engine::fx
