#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

#include <Eigen/Geometry>

#include <optional>

namespace halvern::scene {

class AnimationManager;
class Node;

/// Where the node of a camera would have to stand, in its parent, to look as the user does.
struct CameraPlace
{
    boost::shared_ptr<Node> node;
    Eigen::Vector3f translation;
    Eigen::Quaternionf rotation;
};

/// Tells the animations where the user looks from, or with nothing, that he looks through the scene's camera.
/// That is where a camera is recorded that is added to the current animation; while the animation is paused
/// such a camera goes along with the user. Returns whether it went to the place. Any thread.
HALVERN_SCENE_API bool setView(AnimationManager& animations, const std::optional<CameraPlace>& place);

} // namespace halvern::scene
