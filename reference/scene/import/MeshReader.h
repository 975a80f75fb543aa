#pragma once

#include "reference/scene/Mesh.h"

#include <memory>

struct aiMesh;

namespace halvern::scene {

struct TextureCoordinates;

/// Empty for a mesh of which nothing can be drawn. Expects what the post-processing leaves: primitives of
/// one kind.
std::shared_ptr<const Mesh> readMesh(const aiMesh& source, const TextureCoordinates& textureCoordinates);

} // namespace halvern::scene
