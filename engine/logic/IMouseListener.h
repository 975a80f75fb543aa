#pragma once

#include "engine/Export.h"

namespace halvern::engine::logic {

/// Takes mouse input. Positions are logical pixels with y running upwards; buttons and modifiers are the
/// values of Qt::MouseButton and Qt::KeyboardModifiers.
class HALVERN_ENGINE_API IMouseListener
{
public:
    /** @{ */
    /// A button goes down or up. A view does not report the second press of a double click.
    virtual void mousePressed(int button, int x, int y, int modifiers) = 0;
    virtual void mouseReleased(int button, int x, int y, int modifiers) = 0;
    /** @} */

    /// Reported with and without a button held.
    virtual void mouseMoved(int x, int y, int modifiers) = 0;

    /// One step of the wheel: the direction is 1 away from the user, -1 towards him; `first` is always 0.
    virtual void mouseWheel(int first, int direction, int x, int y, int modifiers) = 0;

    virtual ~IMouseListener();
};

} // namespace halvern::engine::logic
