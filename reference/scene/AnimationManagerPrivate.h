#pragma once

#include "engine/scene/AnimationManager.h"
#include "reference/scene/AnimationCamera.h"
#include "reference/scene/AnimationKeys.h"
#include "reference/scene/Internals.h"
#include "reference/scene/SceneLink.h"

#include <boost/smart_ptr/weak_ptr.hpp>

#include <chrono>
#include <mutex>
#include <optional>

namespace halvern::scene {

class Node;

struct AnimationManager::Private
{
    using Duration = boost::posix_time::time_duration;
    using Clock = std::chrono::steady_clock;

    /// A smooth move to a time while paused.
    struct Glide
    {
        Duration from;
        Duration to;
        Duration elapsed;
    };

    std::shared_ptr<SceneLink> link; // finds the nodes; empty without a scene; set before any use

    std::mutex mutex; // guards what follows
    boost::shared_ptr<Animation> animation;
    boost::weak_ptr<Node> cameraNode; // what addAnimationCamera takes
    std::optional<CameraPlace> view;  // where the user looks from, if not through the camera
    Duration time;
    bool isPaused = true;
    bool hasJumped = false;
    std::optional<Glide> glide;
    std::optional<Clock::time_point> lastCycle;
    AnimationKeys::Poses poses; // of all nodes when the animation was chosen or last recorded

    std::vector<float> frameTimes; // these three are the GUI thread's
    boost::shared_ptr<Animation> frameTimesOf;
    unsigned frameTimesRevision = 0;

    /// Part of a scene cycle: moves the time on and the nodes with it.
    void advance(Clock::time_point now);

    boost::shared_ptr<Animation> current();

    /// Whether the camera is to go along with the user.
    bool goesWithView(const Node& camera);

private:
    /// Under the lock. Returns whether the nodes have to follow.
    bool advanceTime(const Duration& elapsed, const Duration& length);
};

} // namespace halvern::scene
