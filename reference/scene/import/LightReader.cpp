#include "reference/scene/import/LightReader.h"

#include "engine/scene/Light.h"
#include "engine/scene/Node.h"
#include "reference/scene/LightSource.h"
#include "reference/scene/import/Conversions.h"

#include <assimp/light.h>

#include <boost/make_shared.hpp>

#include <algorithm>
#include <cmath>

namespace halvern::scene {

namespace {

LightSource::Kind kindOf(const aiLight& source)
{
    switch (source.mType) {
    case aiLightSource_DIRECTIONAL:
        return LightSource::Kind::Directional;
    case aiLightSource_SPOT:
        return LightSource::Kind::Spot;
    default:
        return LightSource::Kind::Point;
    }
}

Eigen::Vector3f attenuationOf(const aiLight& source)
{
    const Eigen::Vector3f none(1, 0, 0);
    const Eigen::Vector3f stored(source.mAttenuationConstant, source.mAttenuationLinear,
                                 source.mAttenuationQuadratic);
    if (source.mType == aiLightSource_DIRECTIONAL || !stored.allFinite() || stored.maxCoeff() <= 0)
        return none;
    return stored.cwiseMax(0.0f);
}

/// Half the angle of a cone.
float coneAngle(float stored, const std::string& format)
{
    constexpr float Largest = static_cast<float>(M_PI) / 2;
    const bool isHalf = format.rfind("glTF", 0) == 0 || format.rfind("LightWave", 0) == 0;
    const float angle = isHalf ? stored : stored / 2;
    return std::isfinite(angle) ? std::clamp(angle, 0.0f, Largest) : Largest;
}

} // namespace

boost::shared_ptr<Light> readLight(const aiLight& source, const std::string& format, const Node& node,
                                   const std::string& id)
{
    if (source.mType == aiLightSource_AMBIENT)
        return {};
    LightSource values;
    values.kind = kindOf(source);
    values.position = ownPosition(toEigen(source.mPosition), node);
    const Eigen::Vector3f direction = toEigen(source.mDirection).stableNormalized();
    if (direction.allFinite() && !direction.isZero())
        values.direction = direction;
    values.attenuation = attenuationOf(source);
    values.outerCone = coneAngle(source.mAngleOuterCone, format);
    values.innerCone = std::min(coneAngle(source.mAngleInnerCone, format), values.outerCone);

    Eigen::Vector3f color = toEigen(source.mColorDiffuse);
    if (!color.allFinite())
        color.setOnes();
    if (color.maxCoeff() > 1) {
        values.intensity = color.maxCoeff();
        color /= values.intensity;
    }

    const auto light = boost::make_shared<Light>(id);
    light->setColor(color.x(), color.y(), color.z());
    setLightSource(*light, values);
    return light;
}

} // namespace halvern::scene
