#pragma once

#include <boost/shared_ptr.hpp>

#include <Eigen/Geometry>

#include <vector>

namespace halvern::scene {

struct ImportIDs;
class CameraInstance;
class Node;

/// The box round all geometry below the node in the coordinates of its parent; empty when there is none.
/// Values that are not finite do not count.
Eigen::AlignedBox3d boundsOf(const boost::shared_ptr<Node>& top);

/// Whether any of the cameras has a part of the box before it. What is not there is seen by every camera.
bool isSeen(const Eigen::AlignedBox3d& bounds, const std::vector<boost::shared_ptr<CameraInstance>>& cameras,
            const boost::shared_ptr<Node>& top);

/// Adds a camera below the parent that shows the whole box from the front right above.
boost::shared_ptr<CameraInstance> addDefaultCamera(Node& parent, const Eigen::AlignedBox3d& bounds,
                                                   ImportIDs& ids);

/// Adds a light at the eye, and one from the front left above, below the parent.
void addDefaultLights(Node& parent, const Eigen::AlignedBox3d& bounds, ImportIDs& ids);

} // namespace halvern::scene
