#pragma once

#include "engine/scene/Camera.h"
#include "reference/scene/CameraPose.h"
#include "reference/scene/Internals.h"
#include "reference/scene/SceneLink.h"

namespace halvern::scene {

struct Camera::Private
{
    explicit Private(std::string newID) : id(std::move(newID)) {}

    const std::string id;
    SceneMarks scenes;

    mutable std::mutex mutex; // guards what follows
    float zNear = 0.1f;
    float zFar = 1000;
    float yFov = 45;
    Eigen::Isometry3f pose = Eigen::Isometry3f::Identity();

    template <class Value>
    Value get(Value Private::*value) const
    {
        std::lock_guard lock(mutex);
        return this->*value;
    }

    template <class Value>
    void set(Value Private::*value, const Value& newValue)
    {
        {
            std::lock_guard lock(mutex);
            this->*value = newValue;
        }
        scenes.mark(SceneChanges::CameraValues);
    }
};

} // namespace halvern::scene
