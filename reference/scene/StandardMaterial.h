#pragma once

#include "engine/Export.h"
#include "reference/scene/Image.h"

#include <Eigen/Core>

#include <memory>
#include <string>

namespace halvern::scene {

class Material;

/// ID of the effect that imported materials are instances of.
inline constexpr char StandardEffectID[] = "standard";

/// The values of an imported material: the metallic-roughness model. A map multiplies its factor; an
/// empty map counts as white.
struct StandardMaterial
{
    enum class Alpha { Opaque, Mask, Blend };

    std::string name;
    Eigen::Vector4f baseColor = Eigen::Vector4f(0.8f, 0.8f, 0.8f, 1); ///< RGBA, colour in sRGB
    float metalness = 0;
    float roughness = 0.6f;
    Eigen::Vector3f emissive = Eigen::Vector3f::Zero();
    float normalScale = 1;
    bool twoSided = false;
    bool unlit = false;
    Alpha alpha = Alpha::Opaque;
    float alphaCutoff = 0.5f; ///< of Alpha::Mask

    std::shared_ptr<const Image> baseColorMap;
    std::shared_ptr<const Image> metalRoughMap; ///< green roughness, blue metalness
    std::shared_ptr<const Image> normalMap;     ///< tangent space, y upwards
    std::shared_ptr<const Image> emissiveMap;
    std::shared_ptr<const Image> occlusionMap; ///< red
};

/// Empty for a material that was not imported. The values are shared and immutable; setting them again
/// replaces them. Any thread.
HALVERN_SCENE_API void setStandardMaterial(Material& material,
                                           std::shared_ptr<const StandardMaterial> values);
HALVERN_SCENE_API std::shared_ptr<const StandardMaterial> getStandardMaterial(const Material& material);

} // namespace halvern::scene
