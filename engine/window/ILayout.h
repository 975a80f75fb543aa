#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

#include <string>

namespace halvern::engine::window {

class Viewport;

/// The arrangement of a window's viewports.
class HALVERN_ENGINE_API ILayout
{
public:
    /// The one that statistics are shown of; it may be empty.
    virtual boost::shared_ptr<Viewport> getViewport() = 0;

    /// Asks which object is at a point: logical pixels, y running upwards. Any thread. The answer is the
    /// event "ObjectPicked" with the arguments node ID, geometry, material slot (the numbers of
    /// scene::Node::setMaterial), x, y and the tag; the first three are empty where nothing is. It comes
    /// later, never inside the call.
    virtual void requestPick(int x, int y, std::string tag) = 0;

    virtual ~ILayout();
};

} // namespace halvern::engine::window
