#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

#include <memory>
#include <string>

namespace halvern::scene {

class Camera;
class Node;

/// A camera placed in the scene: a lens looking down the negative z axis of a node. Immutable.
class HALVERN_SCENE_API CameraInstance
{
public:
    /// Without a node or a camera it is listed but cannot be looked through. The SID has no comma.
    CameraInstance(std::string sid, boost::shared_ptr<Node> node, boost::shared_ptr<Camera> camera);
    virtual ~CameraInstance();

    CameraInstance(const CameraInstance&) = delete;
    CameraInstance& operator=(const CameraInstance&) = delete;

    /// Names it in menus and in the event "ActiveCamera".
    virtual std::string getSID() const;

    /// The node that the camera looks from.
    virtual boost::shared_ptr<Node> getNode() const;

    /// The lens.
    virtual boost::shared_ptr<Camera> getCamera() const;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::scene
