#include "reference/scene/import/CameraReader.h"

#include "engine/scene/Camera.h"
#include "engine/scene/Node.h"
#include "reference/scene/CameraPose.h"
#include "reference/scene/import/Conversions.h"
#include "reference/scene/import/FileFacts.h"

#include <assimp/camera.h>

#include <boost/make_shared.hpp>

#include <algorithm>
#include <cmath>

namespace halvern::scene {

namespace {

bool isPositive(float value)
{
    return std::isfinite(value) && value > 0;
}

/// Vertical, in radians; 0 when the file has none that makes sense.
float fieldOfView(const aiCamera& source, const FileFacts& file)
{
    if (!isPositive(source.mHorizontalFOV))
        return 0;
    // These importers multiply the vertical angle by the aspect ratio, where there is one.
    if (file.isGltf() || file.isIrrlicht())
        return source.mHorizontalFOV / (isPositive(source.mAspect) ? source.mAspect : 1);
    const float aspect = isPositive(source.mAspect) ? source.mAspect : 4.0f / 3;
    return 2 * std::atan(std::tan(source.mHorizontalFOV / 2) / aspect);
}

Eigen::Vector3f viewDirection(const aiCamera& source, const FileFacts& file)
{
    // These importers forget to say that a camera of theirs looks along its negative z axis.
    if (file.isASE() || file.isLightWave())
        return -Eigen::Vector3f::UnitZ();
    return toEigen(source.mLookAt);
}

/// The importer's number for a glTF camera without a far plane.
constexpr float NoFarPlane = 100;

void setPlanes(Camera& camera, const aiCamera& source, const FileFacts& file)
{
    if (isPositive(source.mClipPlaneNear))
        camera.setZNear(source.mClipPlaneNear * file.unit);
    if (isPositive(source.mClipPlaneFar))
        camera.setZFar(source.mClipPlaneFar * file.unit);
    if (file.isGltf() && source.mClipPlaneFar == NoFarPlane)
        camera.setZFar(std::max(NoFarPlane, camera.getZNear() * 1e5f));
}

} // namespace

boost::shared_ptr<Camera> readCamera(const aiCamera& source, const FileFacts& file, const Node& node,
                                     const std::string& id)
{
    const auto camera = boost::make_shared<Camera>(id);
    const float degrees = fieldOfView(source, file) * 180 / static_cast<float>(M_PI);
    if (degrees > 0 && degrees < 180)
        camera->setYFov(degrees);
    setPlanes(*camera, source, file);

    Eigen::Isometry3f pose(Eigen::Isometry3f::Identity());
    pose.linear() = lookAlong(viewDirection(source, file), toEigen(source.mUp));
    pose.translation() = ownPosition(toEigen(source.mPosition), node);
    setCameraPose(*camera, pose);
    return camera;
}

} // namespace halvern::scene
