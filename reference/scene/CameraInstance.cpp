#include "engine/scene/CameraInstance.h"

#include "engine/scene/Camera.h"
#include "engine/scene/Node.h"

namespace halvern::scene {

struct CameraInstance::Private
{
    const std::string sid;
    const boost::shared_ptr<Node> node;
    const boost::shared_ptr<Camera> camera;
};

CameraInstance::CameraInstance(std::string sid, boost::shared_ptr<Node> node,
                               boost::shared_ptr<Camera> camera) :
    d(new Private{std::move(sid), std::move(node), std::move(camera)})
{}

CameraInstance::~CameraInstance() = default;

std::string CameraInstance::getSID() const
{
    return d->sid;
}

boost::shared_ptr<Node> CameraInstance::getNode() const
{
    return d->node;
}

boost::shared_ptr<Camera> CameraInstance::getCamera() const
{
    return d->camera;
}

} // namespace halvern::scene
