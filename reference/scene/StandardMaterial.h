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

/// The values of an imported material: the metallic-roughness model of glTF 2.0. A map multiplies its factor;
/// an empty map counts as white.
struct StandardMaterial
{
    /// What the opacity of the base colour does.
    enum class Alpha {
        Opaque, ///< nothing
        Mask,   ///< leaves out what is below `alphaCutoff`
        Blend   ///< shines through
    };

    std::string name;                                                 ///< as in the file, for people
    Eigen::Vector4f baseColor = Eigen::Vector4f(0.8f, 0.8f, 0.8f, 1); ///< RGBA, 0 to 1, colour in sRGB
    float metalness = 0;                                              ///< 0 to 1
    float roughness = 0.6f;                                           ///< 0 to 1
    Eigen::Vector3f emissive = Eigen::Vector3f::Zero(); ///< RGB in sRGB, added to the lit colour
    float normalScale = 1;                              ///< how deep the normal map is
    bool twoSided = false;       ///< as in the file; the renderer draws both sides of everything
    bool unlit = false;          ///< shows the base colour whatever the lights
    Alpha alpha = Alpha::Opaque; ///< also the technique of the effect
    float alphaCutoff = 0.5f;    ///< of Alpha::Mask, 0 to 1

    std::shared_ptr<const Image> baseColorMap;  ///< RGBA, colour in sRGB
    std::shared_ptr<const Image> metalRoughMap; ///< green roughness, blue metalness
    std::shared_ptr<const Image> normalMap;     ///< tangent space, y upwards
    std::shared_ptr<const Image> emissiveMap;   ///< RGB in sRGB
    std::shared_ptr<const Image> occlusionMap;  ///< red: the share of light from around that gets there
};

/** @{ */
/// Empty for a material that was not imported. The values are shared and immutable; setting them again
/// replaces them. Any thread.
HALVERN_SCENE_API void setStandardMaterial(Material& material,
                                           std::shared_ptr<const StandardMaterial> values);
HALVERN_SCENE_API std::shared_ptr<const StandardMaterial> getStandardMaterial(const Material& material);
/** @} */

} // namespace halvern::scene
