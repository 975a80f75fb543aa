#pragma once

#include "reference/engine/fx/EffectParameter.h"
#include "reference/engine/fx/EffectSyntax.h"

#include <osg/StateSet>
#include <osg/Uniform>

namespace halvern::engine::fx {

/// Texture unit of the parameter with that index, which is a texture.
unsigned int getTextureUnit(const EffectSyntax& effect, size_t index);

/// The uniform of the parameter with that index: its default value, the unit of a texture.
osg::ref_ptr<osg::Uniform> makeUniform(const EffectSyntax& effect, size_t index);

/// Sets a uniform to a value of the parameter's type. That of a texture stays.
void setUniform(osg::Uniform& uniform, ParameterType type, const std::vector<float>& numbers);

/// The bits of ShaderFeature that values, those of the effect's parameters, ask for.
unsigned int getFeatures(const EffectSyntax& effect, const std::vector<ParameterValue>& values);

/// Sets how a pass over surfaces draws. Passes after the first come after all that is opaque; what is
/// blended comes last.
void setPassState(osg::StateSet& state, const PassState& pass, unsigned int index);

} // namespace halvern::engine::fx
