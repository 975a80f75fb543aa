#pragma once

#include "reference/scene/StandardMaterial.h"

#include <Eigen/Geometry>

struct aiMaterial;

namespace halvern::scene {

class TextureLoader;

/// Values and maps of a material as the file has them, whatever its format calls them.
StandardMaterial readMaterial(const aiMaterial& material, TextureLoader& textures);

/// Which of a mesh's texture coordinates the maps of a material use, and how they are moved first.
struct TextureCoordinates
{
    unsigned channel = 0;
    Eigen::Affine2f transform = Eigen::Affine2f::Identity();
};
TextureCoordinates readTextureCoordinates(const aiMaterial& material);

} // namespace halvern::scene
