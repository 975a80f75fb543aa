#pragma once

#include "engine/scene/Light.h"
#include "reference/scene/Internals.h"
#include "reference/scene/LightSource.h"
#include "reference/scene/SceneLink.h"

namespace halvern::scene {

struct Light::Private
{
    explicit Private(std::string newID) : id(std::move(newID)) {}

    const std::string id;
    SceneMarks scenes;

    mutable std::mutex mutex; // guards what follows
    Eigen::Vector3f color = Eigen::Vector3f::Ones();
    LightSource source;
};

} // namespace halvern::scene
