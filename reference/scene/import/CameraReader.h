#pragma once

#include <boost/shared_ptr.hpp>

#include <string>

struct aiCamera;

namespace halvern::scene {

class Camera;
class Node;

/// The camera as the node carries it. `format` is Assimp's name of the file format: each of its importers
/// has a notion of its own of the field of view.
boost::shared_ptr<Camera> readCamera(const aiCamera& source, const std::string& format, const Node& node,
                                     const std::string& id);

} // namespace halvern::scene
