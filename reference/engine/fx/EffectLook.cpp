#include "reference/engine/fx/EffectLook.h"

#include "reference/engine/PictureTextures.h"
#include "reference/engine/fx/EffectUniforms.h"

namespace halvern::engine::fx {

void EffectLook::make(const Values& values, PictureTextures& textures)
{
    const EffectSyntax& effect = *values.effect;
    made = values;
    features = fx::getFeatures(effect, values.values);
    states.assign(effect.techniques[values.technique].passes.size(), nullptr);
    for (auto& state : states)
        state = new osg::StateSet;
    uniforms.clear();
    for (size_t i = 0; i < effect.parameters.size(); ++i) {
        const ParameterSyntax& parameter = effect.parameters[i];
        const ParameterValue& value = values.values[i];
        uniforms.push_back(makeUniform(effect, i));
        setUniform(*uniforms.back(), parameter.type, value.numbers);
        for (const auto& state : states) {
            // The program's state has the default values.
            if (value.numbers != parameter.numbers)
                state->addUniform(uniforms.back());
            if (isUsable(value.picture))
                state->setTextureAttribute(getTextureUnit(effect, i), textures.get(value.picture));
        }
    }
}

bool EffectLook::update(const Values& values)
{
    if (values.effect != made.effect || values.technique != made.technique ||
        fx::getFeatures(*values.effect, values.values) != features)
        return false;
    for (size_t i = 0; i < uniforms.size(); ++i)
        if (values.values[i].picture != made.values[i].picture)
            return false;
    for (size_t i = 0; i < uniforms.size(); ++i) {
        if (values.values[i].numbers == made.values[i].numbers)
            continue;
        setUniform(*uniforms[i], values.effect->parameters[i].type, values.values[i].numbers);
        for (const auto& state : states)
            state->addUniform(uniforms[i]);
    }
    made = values;
    return true;
}

} // namespace halvern::engine::fx
