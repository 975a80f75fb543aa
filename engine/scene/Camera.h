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

    /// As given to the constructor.
    virtual std::string getID() const;

    /** @{ */
    /// Distance of a clipping plane along the view direction.
    virtual float getZNear() const;
    virtual float getZFar() const;
    /** @} */

    /// Vertical field of view in degrees, from the lower edge of the picture to the upper.
    virtual float getYFov() const;

    /** @{ */
    /// Takes any value; the picture follows in the next frame.
    virtual void setZNear(float zNear);
    virtual void setZFar(float zFar);
    virtual void setYFov(float degrees);
    /** @} */

private:
    friend struct Internals;
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::scene
