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
    CameraInstance(std::string sid, boost::shared_ptr<Node> node, boost::shared_ptr<Camera> camera);
    virtual ~CameraInstance();

    CameraInstance(const CameraInstance&) = delete;
    CameraInstance& operator=(const CameraInstance&) = delete;

    /// Names it in menus and in the event "ActiveCamera".
    virtual std::string getSID() const;

    virtual boost::shared_ptr<Node> getNode() const;
    virtual boost::shared_ptr<Camera> getCamera() const;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::scene
