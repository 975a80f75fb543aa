#pragma once

#include <boost/shared_ptr.hpp>

#include <Eigen/Geometry>

namespace halvern::scene {

struct ImportIDs;
class Node;
class SceneManager;

/// The box round all geometry below the node in the coordinates of its parent; empty when there is none.
/// Values that are not finite do not count.
Eigen::AlignedBox3d boundsOf(const boost::shared_ptr<Node>& top);

/// Adds a camera below the parent that shows the whole box from the front right above.
void addDefaultCamera(SceneManager& sceneManager, Node& parent, const Eigen::AlignedBox3d& bounds,
                      ImportIDs& ids);

/// Adds a light at the eye, and one from the front left above, below the parent.
void addDefaultLights(Node& parent, const Eigen::AlignedBox3d& bounds, ImportIDs& ids);

} // namespace halvern::scene
