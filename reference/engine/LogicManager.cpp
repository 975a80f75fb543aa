#include "engine/logic/LogicManager.h"

namespace halvern::engine::logic {

struct LogicManager::Private
{
    Eigen::Vector2i mousePosition = Eigen::Vector2i::Zero();
};

LogicManager::LogicManager() : d(new Private) {}

LogicManager::~LogicManager() = default;

void LogicManager::keyPressed(int, int) {}

void LogicManager::keyReleased(int, int) {}

void LogicManager::mousePressed(int, int x, int y, int)
{
    d->mousePosition = {x, y};
}

void LogicManager::mouseReleased(int, int x, int y, int)
{
    d->mousePosition = {x, y};
}

void LogicManager::mouseMoved(int x, int y, int)
{
    d->mousePosition = {x, y};
}

void LogicManager::mouseWheel(int, int, int x, int y, int)
{
    d->mousePosition = {x, y};
}

Eigen::Vector2i LogicManager::getMousePosition()
{
    return d->mousePosition;
}

void LogicManager::resetInputState() {}

} // namespace halvern::engine::logic
