#pragma once

#include "engine/Export.h"

namespace halvern::engine::logic {

/// Takes keyboard input. Keys and modifiers are the values of Qt::Key and Qt::KeyboardModifiers.
class HALVERN_ENGINE_API IKeyboardListener
{
public:
    /** @{ */
    /// A key goes down or up. A key that is held repeats both.
    virtual void keyPressed(int key, int modifiers) = 0;
    virtual void keyReleased(int key, int modifiers) = 0;
    /** @} */

    virtual ~IKeyboardListener();
};

} // namespace halvern::engine::logic
