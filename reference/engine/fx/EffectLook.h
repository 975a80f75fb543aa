#pragma once

#include "reference/engine/fx/EffectMaterial.h"

#include <osg/StateSet>

#include <vector>

namespace halvern::engine {
class PictureTextures;
}

namespace halvern::engine::fx {

/// What a material's values are for OpenGL: a state set with uniforms and textures for each pass.
class EffectLook
{
public:
    using Values = EffectMaterial::Values;

    void make(const Values& values, PictureTextures& textures);

    bool isMade() const { return !states.empty(); }

    /// Takes over other numbers. False, and nothing changes, where more than numbers differs.
    bool update(const Values& values);

    const Values& getValues() const { return made; }
    const std::vector<osg::ref_ptr<osg::StateSet>>& getStates() const { return states; }

    /// ShaderFeature bits.
    unsigned int getFeatures() const { return features; }

private:
    Values made;
    unsigned int features = 0;
    std::vector<osg::ref_ptr<osg::Uniform>> uniforms; // in the order of the parameters
    std::vector<osg::ref_ptr<osg::StateSet>> states;
};

} // namespace halvern::engine::fx
