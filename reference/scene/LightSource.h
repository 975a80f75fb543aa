#pragma once

#include "engine/Export.h"

#include <Eigen/Core>

namespace halvern::scene {

class Light;

/// How a light shines, beside its colour. It sits at the origin of its node and shines along the node's
/// negative z axis, unless `position` and `direction` say otherwise.
struct LightSource
{
    /// Where the light comes from.
    enum class Kind {
        Point,       ///< from `position`, in all directions
        Directional, ///< along `direction`, from infinitely far away
        Spot,        ///< from `position`, in a cone round `direction`
        Head         ///< directional, always shining from the eye into the picture
    };

    Kind kind = Kind::Point;                                ///< decides which of the others count
    Eigen::Vector3f position = Eigen::Vector3f::Zero();     ///< in the node's coordinates
    Eigen::Vector3f direction = Eigen::Vector3f(0, 0, -1);  ///< in the node's coordinates
    float intensity = 1;                                    ///< multiplies the colour
    Eigen::Vector3f attenuation = Eigen::Vector3f(1, 0, 0); ///< constant, linear, quadratic
    float innerCone = 0.5f;                                 ///< half angle of the full cone, radians
    float outerCone = 0.7f;                                 ///< half angle where the light ends, radians
};

/** @{ */
/// How the light shines; a Light begins as a LightSource does. Any thread.
HALVERN_SCENE_API void setLightSource(Light& light, LightSource source);
HALVERN_SCENE_API LightSource getLightSource(const Light& light);
/** @} */

} // namespace halvern::scene
