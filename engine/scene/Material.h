#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

#include <memory>
#include <string>

namespace halvern::scene {

/// A material: an instance of an effect with values of its own. May be used from any thread.
class HALVERN_SCENE_API Material
{
public:
    /// With an effect that the scene does not know the material is drawn plain and grey.
    Material(std::string id, std::string effectID);
    virtual ~Material();

    Material(const Material&) = delete;
    Material& operator=(const Material&) = delete;

    /// Unique in the scene; it has no comma.
    virtual std::string getMaterialID() const;

    /// The ID of the Effect.
    virtual std::string getEffectID() const;

private:
    friend struct Internals;
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::scene
