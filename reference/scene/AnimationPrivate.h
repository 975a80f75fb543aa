#pragma once

#include "engine/scene/Animation.h"
#include "reference/scene/AnimationKeys.h"
#include "reference/scene/Internals.h"

#include <atomic>
#include <mutex>

namespace halvern::scene {

struct Animation::Private
{
    explicit Private(std::string newID) : id(std::move(newID)) {}

    const std::string id;
    std::atomic<unsigned> revision{0}; // counts the changes of the keys

    mutable std::mutex mutex; // guards what follows
    bool valid = true;
    int timeRange = 0;
    AnimationKeys keys;
};

} // namespace halvern::scene
