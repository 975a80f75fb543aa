#pragma once

#include <boost/shared_ptr.hpp>

#include <string>

struct aiCamera;

namespace halvern::scene {

class Camera;
struct FileFacts;
class Node;

/// The camera as the node carries it.
boost::shared_ptr<Camera> readCamera(const aiCamera& source, const FileFacts& file, const Node& node,
                                     const std::string& id);

} // namespace halvern::scene
