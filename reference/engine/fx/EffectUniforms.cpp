#include "reference/engine/fx/EffectUniforms.h"

#include "reference/engine/PictureTextures.h"
#include "reference/engine/ShaderFeatures.h"
#include "reference/engine/fx/EffectCode.h"

#include <osg/BlendFunc>
#include <osg/CullFace>
#include <osg/Depth>
#include <osg/PolygonMode>

#include <algorithm>
#include <climits>

namespace halvern::engine::fx {

namespace {

/// Render bin of what is blended, after those of all passes of the opaque.
constexpr int blendedBin = mostPasses + 1;

osg::ref_ptr<osg::BlendFunc> makeBlending(PassState::Blend blend)
{
    // The target's alpha stays what it is: 1.
    switch (blend) {
    case PassState::Blend::Add:
        return new osg::BlendFunc(osg::BlendFunc::SRC_ALPHA, osg::BlendFunc::ONE, osg::BlendFunc::ZERO,
                                  osg::BlendFunc::ONE);
    case PassState::Blend::Multiply:
        return new osg::BlendFunc(osg::BlendFunc::DST_COLOR, osg::BlendFunc::ZERO, osg::BlendFunc::ZERO,
                                  osg::BlendFunc::ONE);
    default:
        return new osg::BlendFunc(osg::BlendFunc::SRC_ALPHA, osg::BlendFunc::ONE_MINUS_SRC_ALPHA,
                                  osg::BlendFunc::ONE, osg::BlendFunc::ONE_MINUS_SRC_ALPHA);
    }
}

void setDepth(osg::StateSet& state, PassState::Depth depth, bool isFirst)
{
    switch (depth) {
    case PassState::Depth::On:
        // The passes after the first lie where the first is.
        if (!isFirst)
            state.setAttribute(new osg::Depth(osg::Depth::LEQUAL));
        return;
    case PassState::Depth::Test:
        return state.setAttribute(new osg::Depth(osg::Depth::LEQUAL, 0, 1, false));
    case PassState::Depth::Behind:
        return state.setAttribute(new osg::Depth(osg::Depth::GREATER, 0, 1, false));
    case PassState::Depth::Off:
        return state.setAttribute(new osg::Depth(osg::Depth::ALWAYS, 0, 1, false));
    }
}

} // namespace

unsigned int getTextureUnit(const EffectSyntax& effect, size_t index)
{
    unsigned int unit = 0;
    for (size_t i = 0; i < index; ++i)
        unit += effect.parameters[i].type == ParameterType::Texture;
    return unit < TextureUnit::FirstShadow ? unit : unit + maxShadows;
}

osg::ref_ptr<osg::Uniform> makeUniform(const EffectSyntax& effect, size_t index)
{
    static const osg::Uniform::Type types[] = {
        osg::Uniform::FLOAT, osg::Uniform::FLOAT_VEC2, osg::Uniform::FLOAT_VEC3, osg::Uniform::FLOAT_VEC4,
        osg::Uniform::INT,   osg::Uniform::BOOL,       osg::Uniform::SAMPLER_2D};
    const ParameterSyntax& parameter = effect.parameters[index];
    osg::ref_ptr<osg::Uniform> uniform = new osg::Uniform(types[int(parameter.type)], parameter.name);
    if (parameter.type == ParameterType::Texture)
        uniform->set(int(getTextureUnit(effect, index)));
    setUniform(*uniform, parameter.type, parameter.numbers);
    return uniform;
}

void setUniform(osg::Uniform& uniform, ParameterType type, const std::vector<float>& n)
{
    switch (type) {
    case ParameterType::Float:
        uniform.set(n[0]);
        break;
    case ParameterType::Float2:
        uniform.set(osg::Vec2f(n[0], n[1]));
        break;
    case ParameterType::Float3:
        uniform.set(osg::Vec3f(n[0], n[1], n[2]));
        break;
    case ParameterType::Float4:
        uniform.set(osg::Vec4f(n[0], n[1], n[2], n[3]));
        break;
    case ParameterType::Int:
        // Between the most of a float and that of an int lies a rounding.
        uniform.set(int(std::clamp<double>(n[0], INT_MIN, INT_MAX)));
        break;
    case ParameterType::Bool:
        uniform.set(n[0] != 0);
        break;
    case ParameterType::Texture:
        break;
    }
}

unsigned int getFeatures(const EffectSyntax& effect, const std::vector<ParameterValue>& values)
{
    unsigned int features = 0;
    unsigned int bit = ShaderFeature::FirstSwitch;
    for (size_t i = 0; i < values.size(); ++i) {
        const ParameterType type = effect.parameters[i].type;
        if (type != ParameterType::Texture && type != ParameterType::Bool)
            continue;
        const bool isOn =
            type == ParameterType::Texture ? isUsable(values[i].picture) : values[i].numbers[0] != 0;
        features |= isOn ? bit : 0;
        bit <<= 1;
    }
    return features;
}

void setPassState(osg::StateSet& state, const PassState& pass, unsigned int index)
{
    if (pass.blend != PassState::Blend::None) {
        state.setAttributeAndModes(makeBlending(pass.blend));
        state.setRenderBinDetails(blendedBin, "DepthSortedBin");
    } else if (index > 0) {
        state.setRenderBinDetails(int(index), "RenderBin");
    }
    setDepth(state, pass.depth, index == 0);
    if (pass.cull != PassState::Cull::None)
        state.setAttributeAndModes(new osg::CullFace(
            pass.cull == PassState::Cull::Back ? osg::CullFace::BACK : osg::CullFace::FRONT));
    if (pass.wireframe)
        state.setAttribute(new osg::PolygonMode(osg::PolygonMode::FRONT_AND_BACK, osg::PolygonMode::LINE));
}

} // namespace halvern::engine::fx
