#include "reference/engine/fx/EffectChain.h"

#include "reference/engine/OsgMath.h"
#include "reference/engine/ShaderPrograms.h"

#include <algorithm>

namespace halvern::engine::fx {

namespace {

osg::ref_ptr<osg::Uniform> add(osg::StateSet& state, osg::Uniform::Type type, const char* name)
{
    osg::ref_ptr<osg::Uniform> uniform = new osg::Uniform(type, name);
    state.addUniform(uniform);
    return uniform;
}

Eigen::Vector2i scaled(Eigen::Vector2i size, float share)
{
    return (size.cast<float>() * share).array().round().cast<int>().cwiseMax(1);
}

} // namespace

EffectChain::EffectChain() :
    square(makeUnitSquare()),
    frameState(new osg::StateSet),
    eyeToClip(add(*frameState, osg::Uniform::FLOAT_MAT4, "eyeToClip")),
    clipToEye(add(*frameState, osg::Uniform::FLOAT_MAT4, "clipToEye")),
    viewSize(add(*frameState, osg::Uniform::FLOAT_VEC2, "viewSize")),
    time(add(*frameState, osg::Uniform::FLOAT, "time"))
{
    frameState->addUniform(new osg::Uniform("sceneColor", int(TextureUnit::SceneColor)));
    frameState->addUniform(new osg::Uniform("sceneDepth", int(TextureUnit::SceneDepth)));
}

RenderTarget& EffectChain::draw(osg::State& state, RenderTarget& scene, const View& view,
                                const SceneEffects& stages, ShaderPrograms& programs, float seconds)
{
    setFrame(view, seconds);
    dropUnused(stages);
    RenderTarget* from = &scene;
    for (const auto& effect : stages) {
        Stage& stage = known[effect.get()];
        stage.effect = effect;
        refresh(stage, textures);
        RenderTarget& to = results[from == &results[0] ? 1 : 0];
        to.resize(view.size);
        if (drawStage(stage, state, scene, *from, to, programs))
            from = &to;
    }
    textures.sweep();
    return *from;
}

void EffectChain::setFrame(const View& view, float seconds)
{
    eyeToClip->set(osg::Matrixf(toOsgMatrix(view.projection)));
    clipToEye->set(osg::Matrixf(toOsgMatrix(view.projection.inverse())));
    viewSize->set(osg::Vec2f(view.size.x(), view.size.y()));
    time->set(seconds);
}

bool EffectChain::drawStage(Stage& stage, osg::State& state, RenderTarget& scene, RenderTarget& from,
                            RenderTarget& to, ShaderPrograms& programs)
{
    const EffectLook::Values& values = stage.look.getValues();
    const auto& passes = values.effect->techniques[values.technique].passes;
    std::vector<osg::StateSet*> codes;
    for (unsigned int i = 0; i < passes.size(); ++i)
        codes.push_back(
            programs.getPicturePass({values.effect, values.technique, i}, stage.look.getFeatures()));
    if (std::count(codes.begin(), codes.end(), nullptr) > 0)
        return false;
    for (size_t i = 0; i < passes.size(); ++i) {
        const bool isLast = i + 1 == passes.size();
        RenderTarget& target = isLast ? to : *stage.targets[i];
        if (!isLast)
            target.resize(scaled(to.size(), passes[i].state.size));
        osg::StateSet& look = *stage.look.getStates()[i];
        look.setTextureAttribute(TextureUnit::SceneColor, from.texture());
        look.setTextureAttribute(TextureUnit::SceneDepth, scene.depthTexture());
        for (size_t before = 0; before < i; ++before)
            look.setTextureAttribute(TextureUnit::FirstPass + before, stage.targets[before]->texture());
        target.bind(state);
        drawPass.begin(state, target.size(), Eigen::Matrix4d::Identity(), frameState.get(), 0);
        drawPass.add(square.get(), osg::Matrixd(), 0, codes[i], &look);
        drawPass.draw();
    }
    return true;
}

void EffectChain::refresh(Stage& stage, PictureTextures& textures)
{
    const EffectLook::Values values = stage.effect->material->getValues();
    if (stage.look.isMade() && stage.look.update(values))
        return;
    stage.look.make(values, textures);
    stage.targets.clear();
    const auto& passes = values.effect->techniques[values.technique].passes;
    for (size_t i = 0; i + 1 < passes.size(); ++i) {
        stage.targets.push_back(std::make_unique<RenderTarget>(RenderTarget::Kind::Picture));
        if (passes[i].name.empty())
            continue;
        for (const auto& state : stage.look.getStates())
            state->addUniform(new osg::Uniform(passes[i].name.c_str(), int(TextureUnit::FirstPass + i)));
    }
}

void EffectChain::dropUnused(const SceneEffects& stages)
{
    for (auto it = known.begin(); it != known.end();)
        it = std::count(stages.begin(), stages.end(), it->second.effect) == 0 ? known.erase(it)
                                                                              : std::next(it);
}

} // namespace halvern::engine::fx
