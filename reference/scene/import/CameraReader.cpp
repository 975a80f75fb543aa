#include "reference/scene/import/CameraReader.h"

#include "engine/scene/Camera.h"
#include "engine/scene/Node.h"
#include "reference/scene/CameraPose.h"
#include "reference/scene/import/Conversions.h"

#include <assimp/camera.h>

#include <boost/make_shared.hpp>

#include <cmath>

namespace halvern::scene {

namespace {

bool isPositive(float value)
{
    return std::isfinite(value) && value > 0;
}

/// Vertical, in radians; 0 when the file has none that makes sense.
float fieldOfView(const aiCamera& source, const std::string& format)
{
    if (!isPositive(source.mHorizontalFOV))
        return 0;
    // These importers multiply the vertical angle by the aspect ratio, where there is one.
    if (format.rfind("glTF", 0) == 0 || format.rfind("Irrlicht", 0) == 0)
        return source.mHorizontalFOV / (isPositive(source.mAspect) ? source.mAspect : 1);
    const float aspect = isPositive(source.mAspect) ? source.mAspect : 4.0f / 3;
    return 2 * std::atan(std::tan(source.mHorizontalFOV / 2) / aspect);
}

} // namespace

boost::shared_ptr<Camera> readCamera(const aiCamera& source, const std::string& format, const Node& node,
                                     const std::string& id)
{
    const auto camera = boost::make_shared<Camera>(id);
    const float degrees = fieldOfView(source, format) * 180 / static_cast<float>(M_PI);
    if (degrees > 0 && degrees < 180)
        camera->setYFov(degrees);
    if (isPositive(source.mClipPlaneNear))
        camera->setZNear(source.mClipPlaneNear);
    if (isPositive(source.mClipPlaneFar))
        camera->setZFar(source.mClipPlaneFar);

    Eigen::Isometry3f pose(Eigen::Isometry3f::Identity());
    pose.linear() = lookAlong(toEigen(source.mLookAt), toEigen(source.mUp));
    pose.translation() = ownPosition(toEigen(source.mPosition), node);
    setCameraPose(*camera, pose);
    return camera;
}

} // namespace halvern::scene
