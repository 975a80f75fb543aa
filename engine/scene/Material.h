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
    Material(std::string id, std::string effectID);
    virtual ~Material();

    Material(const Material&) = delete;
    Material& operator=(const Material&) = delete;

    virtual std::string getMaterialID() const;
    virtual std::string getEffectID() const;

private:
    friend struct Internals;
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::scene
