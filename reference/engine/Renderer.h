#pragma once

#include "reference/engine/DrawPass.h"
#include "reference/engine/EmbeddedContext.h"
#include "reference/engine/Outline.h"
#include "reference/engine/RenderTarget.h"
#include "reference/engine/ShaderPrograms.h"
#include "reference/engine/View.h"

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
    void draw(const View& view, const SceneMirror* mirror, const LightSet& lights, int selected);

    unsigned int getColorTexture() const;

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
    void drawSurfaces(const View& view, const SceneMirror& mirror);

    // First, so that it closes after all that was made in it is gone.
    const ContextHandle context;

    RenderTarget target{RenderTarget::Kind::Color};
    ShaderPrograms programs;
    DrawPass mainPass;
    DrawPass postPass;
    DrawPass shadowPass;
    Outline outline;
    osg::ref_ptr<osg::StateSet> frameState;
    osg::ref_ptr<osg::StateSet> depthState;
    osg::ref_ptr<osg::Uniform> lightPosition, lightColor, lightFalloff, lightAxis, lightCone;
    osg::ref_ptr<osg::Uniform> shadowMatrix, shadowOffset, up;
    unsigned int triangles = 0;
    unsigned int vertices = 0;
};

} // namespace halvern::engine
