#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

#include <memory>
#include <string>

namespace halvern::scene {

/// A perspective lens that nodes carry. May be used from any thread.
///
/// Every value is kept as it was set, nonsense included (near = far = field of view = 0); whoever builds
/// a projection from it clamps.
class HALVERN_SCENE_API Camera
{
public:
    /// Near 0.1, far 1000, field of view 45 degrees.
    explicit Camera(std::string id);
    virtual ~Camera();

    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    virtual std::string getID() const;

    /// Distances of the clipping planes along the view direction.
    virtual float getZNear() const;
    virtual float getZFar() const;

    /// Vertical field of view in degrees.
    virtual float getYFov() const;

    virtual void setZNear(float zNear);
    virtual void setZFar(float zFar);
    virtual void setYFov(float degrees);

private:
    friend struct Internals;
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::scene
