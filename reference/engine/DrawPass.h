#pragma once

#include "reference/engine/MeshGeometry.h"

#include <osgUtil/CullVisitor>

namespace halvern::engine {

/// One pass over surfaces that somebody else picked: sorts them by state and depth and draws them into
/// the framebuffer that is bound.
class DrawPass
{
public:
    DrawPass();

    /// Starts a list. `clearMask` says what is cleared before drawing; `state` lies under every surface.
    void begin(osg::State& osgState, Eigen::Vector2i size, const Eigen::Matrix4d& projection,
               osg::StateSet* state, GLbitfield clearMask);

    /// Adds a surface; the two state sets lie over the pass's, in this order, either may be null. `depth` is
    /// the distance from the eye.
    void add(osg::Drawable* drawable, const osg::Matrixd& modelView, float depth, osg::StateSet* first,
             osg::StateSet* second);

    /// Draws the list.
    void draw();

    osgUtil::RenderStage& stage() { return *renderStage; }

private:
    osg::RefMatrix* nextMatrix(const osg::Matrixd& value);

    osg::ref_ptr<osgUtil::CullVisitor> visitor;
    osg::ref_ptr<osgUtil::StateGraph> stateGraph;
    osg::ref_ptr<osgUtil::RenderStage> renderStage;
    osg::ref_ptr<osg::StateSet> viewportState;
    osg::RenderInfo renderInfo;

    // Kept from frame to frame: allocating them costs more than filling them.
    std::vector<osg::ref_ptr<osg::RefMatrix>> matrices;
    size_t matricesInUse = 0;
};

/// The square from (0, 0) to (1, 1), for drawing over a picture.
osg::ref_ptr<osg::Geometry> makeUnitSquare();

} // namespace halvern::engine
