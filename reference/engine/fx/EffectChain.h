#pragma once

#include "reference/engine/DrawPass.h"
#include "reference/engine/PictureTextures.h"
#include "reference/engine/RenderTarget.h"
#include "reference/engine/View.h"
#include "reference/engine/fx/EffectLook.h"
#include "reference/engine/fx/SceneEffect.h"

#include <boost/shared_ptr.hpp>

#include <map>
#include <memory>
#include <vector>

namespace halvern::engine {
class ShaderPrograms;
}

namespace halvern::engine::fx {

/// The stages of a pipeline, in the order of drawing.
using SceneEffects = std::vector<boost::shared_ptr<SceneEffect>>;

/// Draws effects over a picture, one after the other. Belongs to a renderer, whose context is current.
class EffectChain
{
public:
    EffectChain();

    /// Draws all stages that can be drawn, and returns where the last of them has drawn to: `scene` if there
    /// is none. `scene` is of the kind SceneColor.
    RenderTarget& draw(osg::State& state, RenderTarget& scene, const View& view, const SceneEffects& stages,
                       ShaderPrograms& programs, float seconds);

private:
    struct Stage
    {
        boost::shared_ptr<SceneEffect> effect;
        EffectLook look;
        std::vector<std::unique_ptr<RenderTarget>> targets; // of all passes but the last
    };

    void setFrame(const View& view, float seconds);
    bool drawStage(Stage& stage, osg::State& state, RenderTarget& scene, RenderTarget& from, RenderTarget& to,
                   ShaderPrograms& programs);
    static void refresh(Stage& stage, PictureTextures& textures);
    void dropUnused(const SceneEffects& stages);

    std::map<const SceneEffect*, Stage> known;
    RenderTarget results[2]{RenderTarget(RenderTarget::Kind::Color), RenderTarget(RenderTarget::Kind::Color)};
    PictureTextures textures;
    DrawPass drawPass;
    osg::ref_ptr<osg::Geometry> square;
    osg::ref_ptr<osg::StateSet> frameState;
    osg::ref_ptr<osg::Uniform> eyeToClip, clipToEye, viewSize, time;
};

} // namespace halvern::engine::fx
