#pragma once

#include "engine/Export.h"

#include <Eigen/Geometry>

namespace halvern::scene {

class Camera;

/// Where the eye stands in the coordinates of the node that carries the camera; the eye looks along its
/// own negative z axis, y upwards. The identity unless the model file says otherwise. Any thread.
HALVERN_SCENE_API void setCameraPose(Camera& camera, const Eigen::Isometry3f& pose);
HALVERN_SCENE_API Eigen::Isometry3f getCameraPose(const Camera& camera);

} // namespace halvern::scene
