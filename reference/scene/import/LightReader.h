#pragma once

#include <boost/shared_ptr.hpp>

#include <string>

struct aiLight;

namespace halvern::scene {

struct FileFacts;
class Light;
class Node;

/// The light as the node carries it; empty for ambient light.
boost::shared_ptr<Light> readLight(const aiLight& source, const FileFacts& file, const Node& node,
                                   const std::string& id);

} // namespace halvern::scene
