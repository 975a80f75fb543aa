#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

namespace halvern::scene {

class SceneManager;

/// Takes part in the cycle of a scene manager.
class HALVERN_SCENE_API ISceneController
{
public:
    virtual ~ISceneController();

    /// Called by SceneManager::addSceneController on the caller's thread, before the first update().
    virtual void setSceneManager(boost::shared_ptr<SceneManager> sceneManager) = 0;

    /// Called once per cycle, usually on the scene thread. Returns whether it changed anything.
    virtual bool update() = 0;
};

} // namespace halvern::scene
