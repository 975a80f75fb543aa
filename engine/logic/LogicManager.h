#pragma once

#include "engine/Export.h"
#include "engine/logic/IKeyboardListener.h"
#include "engine/logic/IMouseListener.h"

#include <Eigen/Core>

#include <memory>

namespace halvern::engine::logic {

/// Receives the input of one window. This class keeps the mouse position and does nothing else with the
/// input; derived classes act on it. GUI thread.
class HALVERN_ENGINE_API LogicManager : public IKeyboardListener, public IMouseListener
{
public:
    LogicManager();
    ~LogicManager() override;

    LogicManager(const LogicManager&) = delete;
    LogicManager& operator=(const LogicManager&) = delete;

    /** @{ */
    /// Does nothing here.
    void keyPressed(int key, int modifiers) override;
    void keyReleased(int key, int modifiers) override;
    /** @} */

    /** @{ */
    /// Keeps the position. What overrides it calls it, or answers getMousePosition itself.
    void mousePressed(int button, int x, int y, int modifiers) override;
    void mouseReleased(int button, int x, int y, int modifiers) override;
    void mouseMoved(int x, int y, int modifiers) override;
    void mouseWheel(int first, int direction, int x, int y, int modifiers) override;
    /** @} */

    /// Where the mouse was last reported, y upwards; (0, 0) before the first report.
    virtual Eigen::Vector2i getMousePosition();

    /// Forgets every held button and key, as when another window takes the mouse.
    virtual void resetInputState();

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::engine::logic
