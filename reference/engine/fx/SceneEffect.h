#pragma once

#include "engine/fx/FXSceneEffect.h"
#include "reference/engine/fx/EffectMaterial.h"

namespace halvern::engine::fx {

/// A stage of a window's pipeline: a material of a scene effect.
class SceneEffect : public FXSceneEffect
{
public:
    explicit SceneEffect(boost::shared_ptr<EffectMaterial> newMaterial) : material(newMaterial) {}

    const boost::shared_ptr<EffectMaterial> material;
};

} // namespace halvern::engine::fx
