#pragma once

#include "reference/scene/Skin.h"

#include <boost/shared_ptr.hpp>

#include <memory>
#include <vector>

struct aiMesh;

namespace halvern::scene {

/// The skin of a mesh. `bones` are the nodes of the mesh's bones, empty where there is none; what follows
/// those follows the others alone. Of each vertex the strongest bones are kept. Empty where nothing follows
/// any bone. Expects indices in range.
std::shared_ptr<const Skin> readSkin(const aiMesh& source, const std::vector<boost::shared_ptr<Node>>& bones);

} // namespace halvern::scene
