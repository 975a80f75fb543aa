#pragma once

#include "reference/engine/DrawPass.h"
#include "reference/engine/RenderTarget.h"
#include "reference/engine/View.h"

namespace halvern::engine {

class SceneMirror;

/// Draws a line round what is seen, or would be seen, of a part of the scene.
class Outline
{
public:
    Outline();

    /// Round the surfaces at and below an entry, into the target.
    void draw(osg::State& state, RenderTarget& target, const View& view, const SceneMirror& mirror,
              int entry);

private:
    RenderTarget mask{RenderTarget::Kind::Mask};
    DrawPass maskPass;
    DrawPass linePass;
    osg::ref_ptr<osg::StateSet> maskState;
    osg::ref_ptr<osg::StateSet> lineState;
    osg::ref_ptr<osg::Geometry> rectangle;
    osg::ref_ptr<osg::Uniform> area;
    osg::ref_ptr<osg::Uniform> pixel;
};

} // namespace halvern::engine
