#pragma once

#include "engine/Export.h"

#include <string>

namespace halvern::engine::fx {

/// An effect as the renderer uses it. GUI thread.
class HALVERN_ENGINE_API FXEffect
{
public:
    /// The ID of the scene::Effect.
    virtual const std::string& getID() = 0;

    /// "scene", in any case, marks a full-screen effect; anything else an effect of an object.
    virtual const std::string& getScriptClass() = 0;

    /// The source text of the effect file.
    virtual const std::string& getEffectCode() = 0;

    /// At least 1 for an effect that can be drawn.
    virtual unsigned int getTechniqueCount() = 0;

    /// Empty for an index out of range.
    virtual std::string getTechniqueNameAt(unsigned int index) = 0;

    virtual ~FXEffect();
};

} // namespace halvern::engine::fx
