#pragma once

#include "reference/engine/fx/EffectSyntax.h"

namespace halvern::engine::fx {

/// The effect of imported materials, data/effects/standard.fx as it was when the library was built.
std::shared_ptr<const EffectSyntax> getStandardEffect();

} // namespace halvern::engine::fx
