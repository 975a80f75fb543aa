#pragma once

#include "engine/scene/Animation.h"
#include "reference/scene/Internals.h"

#include <Eigen/Geometry>

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace halvern::scene {

/// The keys of one node, by their time in seconds; a part without keys stays as it is.
struct AnimationChannel
{
    std::string nodeID;
    std::map<float, Eigen::Vector3f> positions;
    std::map<float, Eigen::Quaternionf> rotations;
    std::map<float, Eigen::Vector3f> scales;
};

struct Animation::Private
{
    explicit Private(std::string newID) : id(std::move(newID)) {}

    const std::string id;

    mutable std::mutex mutex; // guards what follows
    bool valid = true;
    int timeRange = 0;
    std::vector<AnimationChannel> channels;
    std::atomic<unsigned> revision{0}; ///< counts the changes of the keys
};

/// The times at which any channel has a key, ascending, each once.
std::vector<float> keyTimes(const Animation& animation);

} // namespace halvern::scene
