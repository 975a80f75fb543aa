#include "reference/scene/import/LightReader.h"

#include "engine/scene/Light.h"
#include "engine/scene/Node.h"
#include "reference/scene/LightSource.h"
#include "reference/scene/import/Conversions.h"
#include "reference/scene/import/FileFacts.h"

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

Eigen::Vector3f attenuationOf(const aiLight& source, const FileFacts& file)
{
    const Eigen::Vector3f none(1, 0, 0);
    Eigen::Vector3f values(source.mAttenuationConstant, source.mAttenuationLinear,
                           source.mAttenuationQuadratic);
    if (source.mType == aiLightSource_DIRECTIONAL || !values.allFinite() || values.maxCoeff() <= 0)
        return none;
    values =
        values.cwiseMax(0.0f).cwiseProduct(Eigen::Vector3f(1, 1 / file.unit, 1 / (file.unit * file.unit)));
    if (file.isGltf() || values.x() > 0)
        return values;
    // A linear value of 1 alone is what Assimp's lights begin with: the importer had nothing to say.
    if (source.mAttenuationLinear == 1)
        return none;
    return {1, values.y(), values.z()}; // or the light would have no bound near its lamp
}

/// Half the angle of a cone.
float coneAngle(float stored, const FileFacts& file)
{
    constexpr float Largest = static_cast<float>(M_PI) / 2;
    const float angle = file.isGltf() || file.isLightWave() ? stored : stored / 2;
    return std::isfinite(angle) ? std::clamp(angle, 0.0f, Largest) : Largest;
}

} // namespace

boost::shared_ptr<Light> readLight(const aiLight& source, const FileFacts& file, const Node& node,
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
    values.attenuation = attenuationOf(source, file);
    values.outerCone = coneAngle(source.mAngleOuterCone, file);
    values.innerCone = std::min(coneAngle(source.mAngleInnerCone, file), values.outerCone);

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
