#include "engine/scene/ISceneController.h"

namespace halvern::scene {

ISceneController::~ISceneController() = default;

} // namespace halvern::scene
