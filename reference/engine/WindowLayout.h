#pragma once

#include "engine/renderer/IRenderer.h"
#include "engine/window/ILayout.h"
#include "engine/window/Viewport.h"

#include <boost/shared_ptr.hpp>

namespace halvern::engine {

class WindowEvents;

/// What the last frame of a window drew.
class FrameCounts : public renderer::IRenderer
{
public:
    unsigned int getTriangleCount() override { return triangles; }
    unsigned int getVertexCount() override { return vertices; }

    void set(unsigned int newTriangles, unsigned int newVertices)
    {
        triangles = newTriangles;
        vertices = newVertices;
    }

private:
    unsigned int triangles = 0;
    unsigned int vertices = 0;
};

/// One viewport that fills the window.
class WindowLayout : public window::ILayout
{
public:
    WindowLayout(boost::shared_ptr<WindowEvents> events, boost::shared_ptr<FrameCounts> counts);

    boost::shared_ptr<window::Viewport> getViewport() override;
    void requestPick(int x, int y, std::string tag) override;

private:
    const boost::shared_ptr<WindowEvents> events;
    const boost::shared_ptr<window::Viewport> viewport;
};

} // namespace halvern::engine
