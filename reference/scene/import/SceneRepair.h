#pragma once

#include <string>
#include <vector>

struct aiScene;

namespace halvern::scene {

/// Takes out of a scene what Assimp's later steps, or a renderer, would stumble over: faces with indices
/// out of range or with positions that are not finite, material and mesh indices out of range, bones and
/// weights that are not finite or of no vertex, gaps in the tree. Gives meshes whose faces share vertices the
/// normals that they lack. Drops morph targets, which nothing here shows. Notes what was left out.
void repairScene(aiScene& scene, std::vector<std::string>& warnings);

} // namespace halvern::scene
