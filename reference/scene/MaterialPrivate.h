#pragma once

#include "engine/scene/Material.h"
#include "reference/scene/Internals.h"
#include "reference/scene/SceneLink.h"
#include "reference/scene/StandardMaterial.h"

namespace halvern::scene {

struct Material::Private
{
    Private(std::string newID, std::string newEffectID) :
        id(std::move(newID)), effectID(std::move(newEffectID))
    {}

    const std::string id;
    const std::string effectID;
    SceneMarks scenes;

    mutable std::mutex mutex; // guards what follows
    std::shared_ptr<const StandardMaterial> values;
};

} // namespace halvern::scene
