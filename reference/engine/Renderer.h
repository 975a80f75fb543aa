#pragma once

#include "reference/engine/DrawPass.h"
#include "reference/engine/EmbeddedContext.h"
#include "reference/engine/Outline.h"
#include "reference/engine/RenderTarget.h"
#include "reference/engine/ShaderPrograms.h"
#include "reference/engine/View.h"
#include "reference/engine/fx/EffectChain.h"

#include <chrono>

namespace halvern::engine {

class LightSet;
class SceneMirror;

/// Draws frames in the OpenGL context that is current when it is made. Made and used with that context
/// current; destroyed with any or none (after every other object that was drawn with it).
class Renderer
{
public:
    Renderer();
    ~Renderer();

    bool isContextCurrent() const { return context->isCurrent(); }

    /// Draws a frame. Without a scene the picture is the background; the selected entry is -1 for none.
    void draw(const View& view, const SceneMirror* mirror, const LightSet& lights, int selected,
              const fx::SceneEffects& effects);

    unsigned int getColorTexture() const;

    /// Why effects could not be drawn, since the last call.
    std::vector<std::string> takeErrors() { return programs.takeErrors(); }

    /// Whether a frame since the last call changes with the time.
    bool takeReadsTime() { return programs.takeReadsTime(); }

    // Of the last frame, what lay outside of the view left out.
    unsigned int getTriangleCount() const { return triangles; }
    unsigned int getVertexCount() const { return vertices; }

private:
    struct ContextHandle
    {
        ContextHandle() : context(new EmbeddedContext) {}
        ~ContextHandle() { context->close(); }
        EmbeddedContext* operator->() const { return context.get(); }
        const osg::ref_ptr<EmbeddedContext> context;
    };

    void prepareState();
    void finishState();
    void drawShadows(const SceneMirror& mirror, const LightSet& lights);
    void setFrameState(const View& view, const LightSet& lights);
    void drawScene(const View& view, const SceneMirror* mirror, const fx::SceneEffects& effects);
    bool addSurfaces(const View& view, const SceneMirror& mirror);
    float getTime() const; // in seconds

    // First, so that it closes after all that was made in it is gone.
    const ContextHandle context;

    RenderTarget target{RenderTarget::Kind::Color};
    RenderTarget effectsTarget{RenderTarget::Kind::SceneColor};
    RenderTarget* shown = &target; // the one with the picture
    ShaderPrograms programs;
    DrawPass mainPass;
    DrawPass postPass;
    DrawPass shadowPass;
    Outline outline;
    fx::EffectChain chain;
    osg::ref_ptr<osg::StateSet> frameState;
    osg::ref_ptr<osg::StateSet> depthState;
    osg::ref_ptr<osg::Uniform> lightPosition, lightColor, lightFalloff, lightAxis, lightCone;
    osg::ref_ptr<osg::Uniform> shadowMatrix, shadowOffset;
    osg::ref_ptr<osg::Uniform> up, worldToEye, eyeToWorld, viewSize, time;
    const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    unsigned int triangles = 0;
    unsigned int vertices = 0;
};

} // namespace halvern::engine
