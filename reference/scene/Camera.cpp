#include "reference/scene/CameraPrivate.h"

namespace halvern::scene {

Camera::Camera(std::string id) : d(std::make_unique<Private>(std::move(id))) {}

Camera::~Camera() = default;

std::string Camera::getID() const
{
    return d->id;
}

float Camera::getZNear() const
{
    return d->get(&Private::zNear);
}

float Camera::getZFar() const
{
    return d->get(&Private::zFar);
}

float Camera::getYFov() const
{
    return d->get(&Private::yFov);
}

void Camera::setZNear(float zNear)
{
    d->set(&Private::zNear, zNear);
}

void Camera::setZFar(float zFar)
{
    d->set(&Private::zFar, zFar);
}

void Camera::setYFov(float degrees)
{
    d->set(&Private::yFov, degrees);
}

void setCameraPose(Camera& camera, const Eigen::Isometry3f& pose)
{
    auto& data = Internals::of(camera);
    data.set(&std::decay_t<decltype(data)>::pose, pose);
}

Eigen::Isometry3f getCameraPose(const Camera& camera)
{
    const auto& data = Internals::of(camera);
    return data.get(&std::decay_t<decltype(data)>::pose);
}

} // namespace halvern::scene
