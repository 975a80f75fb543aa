#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

#include <Eigen/Core>

#include <memory>
#include <string>

namespace halvern::scene {

/// A light that nodes carry. May be used from any thread.
class HALVERN_SCENE_API Light
{
public:
    /// A white point light.
    explicit Light(std::string id);
    virtual ~Light();

    Light(const Light&) = delete;
    Light& operator=(const Light&) = delete;

    /// As given to the constructor.
    virtual std::string getID() const;

    /** @{ */
    /// Red, green and blue as light, not as sRGB, each 0 to 1; what was set comes back unclamped. The picture
    /// follows in the next frame.
    virtual Eigen::Vector3f getColor() const;
    virtual void setColor(float red, float green, float blue);
    /** @} */

private:
    friend struct Internals;
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::scene
