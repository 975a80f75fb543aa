#include "reference/engine/WindowLayout.h"

#include "reference/engine/WindowEvents.h"

#include <boost/make_shared.hpp>

#include <utility>

namespace halvern::engine {

namespace {

class WholeViewport : public window::Viewport
{
public:
    explicit WholeViewport(boost::shared_ptr<FrameCounts> newCounts) : counts(newCounts) {}

    boost::shared_ptr<renderer::IRenderer> getSceneRenderer() override { return counts; }

private:
    const boost::shared_ptr<FrameCounts> counts;
};

} // namespace

WindowLayout::WindowLayout(boost::shared_ptr<WindowEvents> newEvents, boost::shared_ptr<FrameCounts> counts) :
    events(newEvents), viewport(boost::make_shared<WholeViewport>(counts))
{}

boost::shared_ptr<window::Viewport> WindowLayout::getViewport()
{
    return viewport;
}

void WindowLayout::requestPick(int x, int y, std::string tag)
{
    events->requestPick({x, y, std::move(tag)});
}

} // namespace halvern::engine
