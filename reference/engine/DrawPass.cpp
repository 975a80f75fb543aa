#include "reference/engine/DrawPass.h"

#include "reference/engine/OsgMath.h"

#include <osgUtil/RenderStage>

namespace halvern::engine {

namespace {

constexpr size_t mostSortedByDepth = 3000;

} // namespace

DrawPass::DrawPass() :
    visitor(new osgUtil::CullVisitor),
    stateGraph(new osgUtil::StateGraph),
    renderStage(new osgUtil::RenderStage),
    viewportState(new osg::StateSet)
{}

void DrawPass::begin(osg::State& osgState, Eigen::Vector2i size, const Eigen::Matrix4d& projection,
                     osg::StateSet* state, GLbitfield clearMask)
{
    renderInfo.setState(&osgState);
    matricesInUse = 0;

    visitor->reset();
    visitor->setStateGraph(stateGraph.get());
    visitor->setRenderStage(renderStage.get());
    visitor->setRenderInfo(renderInfo);
    renderStage->reset();
    stateGraph->clean();

    osg::ref_ptr<osg::Viewport> viewport = new osg::Viewport(0, 0, size.x(), size.y());
    renderStage->setViewport(viewport.get());
    renderStage->setClearMask(clearMask);
    // As state of the pass, or the state would fall back to a viewport of 800 x 600 when it is dirty.
    viewportState->setAttribute(viewport.get());
    visitor->pushStateSet(viewportState.get());
    visitor->pushStateSet(state);
    visitor->pushViewport(viewport.get());
    visitor->pushProjectionMatrix(new osg::RefMatrix(toOsgMatrix(projection)));
    visitor->pushModelViewMatrix(new osg::RefMatrix, osg::Transform::ABSOLUTE_RF);
}

void DrawPass::add(osg::Drawable* drawable, const osg::Matrixd& modelView, float depth, osg::StateSet* first,
                   osg::StateSet* second)
{
    if (first)
        visitor->pushStateSet(first);
    if (second)
        visitor->pushStateSet(second);
    visitor->addDrawableAndDepth(drawable, nextMatrix(modelView), depth);
    if (second)
        visitor->popStateSet();
    if (first)
        visitor->popStateSet();
}

void DrawPass::draw()
{
    visitor->popModelViewMatrix();
    visitor->popProjectionMatrix();
    visitor->popViewport();
    visitor->popStateSet();
    visitor->popStateSet();
    // Shading costs more than changes of state, until there are very many.
    renderStage->setSortMode(matricesInUse > mostSortedByDepth
                                 ? osgUtil::RenderBin::SORT_BY_STATE_THEN_FRONT_TO_BACK
                                 : osgUtil::RenderBin::SORT_FRONT_TO_BACK);
    renderStage->sort();
    stateGraph->prune();

    osg::State& state = *renderInfo.getState();
    osgUtil::RenderLeaf* previous = nullptr;
    renderStage->draw(renderInfo, previous);
    // Forgets the matrices too, which are the same objects with other values in the next pass.
    state.popAllStateSets();
    // All switches and the program are off now, for OpenGL and for the state alike.
    state.apply();
}

osg::RefMatrix* DrawPass::nextMatrix(const osg::Matrixd& value)
{
    if (matricesInUse == matrices.size())
        matrices.push_back(new osg::RefMatrix);
    osg::RefMatrix* matrix = matrices[matricesInUse++].get();
    matrix->set(value);
    return matrix;
}

osg::ref_ptr<osg::Geometry> makeUnitSquare()
{
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setUseDisplayList(false);
    geometry->setUseVertexBufferObjects(true);
    geometry->setUseVertexArrayObject(true);
    osg::ref_ptr<osg::Vec2Array> corners = new osg::Vec2Array;
    for (const osg::Vec2& corner : {osg::Vec2(0, 0), osg::Vec2(1, 0), osg::Vec2(0, 1), osg::Vec2(1, 1)})
        corners->push_back(corner);
    geometry->setVertexArray(corners);
    geometry->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLE_STRIP, 0, 4));
    return geometry;
}

} // namespace halvern::engine
