#pragma once

#include <boost/shared_ptr.hpp>

#include <string>

struct aiLight;

namespace halvern::scene {

class Light;
class Node;

/// The light as the node carries it; empty for ambient light. `format` is Assimp's name of the file
/// format: its importers do not agree on what a cone's angle is.
boost::shared_ptr<Light> readLight(const aiLight& source, const std::string& format, const Node& node,
                                   const std::string& id);

} // namespace halvern::scene
