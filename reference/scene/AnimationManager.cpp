#include "engine/scene/AnimationManager.h"

#include "reference/scene/AnimationPrivate.h"

namespace halvern::scene {

using boost::posix_time::time_duration;

struct AnimationManager::Private
{
    std::mutex mutex; // guards what follows
    boost::shared_ptr<Animation> animation;
    time_duration time;
    bool isPaused = true;

    std::vector<float> frameTimes; // the GUI thread's
};

AnimationManager::AnimationManager() : d(std::make_unique<Private>()) {}

AnimationManager::~AnimationManager() = default;

boost::shared_ptr<Animation> AnimationManager::getAnimation()
{
    std::lock_guard lock(d->mutex);
    return d->animation;
}

void AnimationManager::setAnimation(boost::shared_ptr<Animation> animation)
{
    std::lock_guard lock(d->mutex);
    d->animation.swap(animation);
}

const std::vector<float>& AnimationManager::getFrameTimes()
{
    const auto animation = getAnimation();
    d->frameTimes = animation ? keyTimes(*animation) : std::vector<float>();
    return d->frameTimes;
}

time_duration AnimationManager::getCurrentTime()
{
    std::lock_guard lock(d->mutex);
    return d->time;
}

void AnimationManager::setTime(time_duration time)
{
    std::lock_guard lock(d->mutex);
    if (d->animation)
        d->time = time;
}

void AnimationManager::setTimeTarget(time_duration time)
{
    setTime(time);
}

void AnimationManager::insertKeyframe(float /*seconds*/) {}

void AnimationManager::removeKeyFrame(boost::shared_ptr<Animation> /*animation*/, float /*seconds*/) {}

void AnimationManager::addAnimationCamera() {}

void AnimationManager::pause()
{
    std::lock_guard lock(d->mutex);
    d->isPaused = true;
}

void AnimationManager::resume()
{
    std::lock_guard lock(d->mutex);
    d->isPaused = false;
}

bool AnimationManager::paused()
{
    std::lock_guard lock(d->mutex);
    return d->isPaused;
}

} // namespace halvern::scene
