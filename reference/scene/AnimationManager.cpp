#include "reference/scene/AnimationManagerPrivate.h"

#include "engine/scene/Node.h"
#include "reference/scene/AnimationPrivate.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace halvern::scene {

using boost::posix_time::microseconds;
using boost::posix_time::milliseconds;
using boost::posix_time::time_duration;

namespace {

const time_duration GlideTime = milliseconds(250);

/// A scene that was not updated for a while goes on where it was.
const time_duration LongestStep = milliseconds(100);

float toSeconds(const time_duration& time)
{
    return static_cast<float>(static_cast<double>(time.total_microseconds()) * 1e-6);
}

/// The time inside of an animation that is played over and over; before its begin, too.
time_duration wrap(const time_duration& time, const time_duration& length)
{
    const auto whole = length.total_microseconds();
    if (whole <= 0)
        return {};
    const auto rest = time.total_microseconds() % whole;
    return microseconds(rest < 0 ? rest + whole : rest);
}

/// The time at which the animation begins anew.
time_duration lengthOf(const Animation& animation)
{
    return std::max<time_duration>(animation.getDuration(), milliseconds(animation.getTimeRange()));
}

Pose poseOf(const Node& node)
{
    const Eigen::Matrix3f rotation = node.getRotation().topLeftCorner<3, 3>();
    return {node.getTranslation().translation(), Eigen::Quaternionf(rotation).normalized(), node.getScale()};
}

/// Sets what is not so already: what stands still is not announced.
void move(Node& node, const Pose& pose)
{
    if (pose.translation && node.getTranslation().translation() != *pose.translation)
        node.setTranslation(Eigen::Translation3f(*pose.translation));
    if (pose.rotation) {
        const Eigen::Affine3f rotation(*pose.rotation);
        if (node.getRotation() != rotation.matrix())
            node.setRotation(rotation);
    }
    if (pose.scale && node.getScale() != *pose.scale)
        node.setScale(*pose.scale);
}

AnimationKeys::Poses posesOf(const SceneLink* link)
{
    AnimationKeys::Poses poses;
    for (const auto& node : link ? link->index.getAll() : std::vector<boost::shared_ptr<Node>>())
        poses.emplace(node->getID(), poseOf(*node));
    return poses;
}

/// Moves the nodes to where they are at the time.
void apply(const Animation& animation, const SceneLink& link, float seconds)
{
    std::vector<std::pair<std::string, Pose>> poses;
    {
        const auto& data = Internals::of(animation);
        std::lock_guard lock(data.mutex);
        for (const AnimationChannel& channel : data.keys.channels)
            poses.emplace_back(channel.nodeID, channel.sample(seconds));
    }
    for (const auto& [id, pose] : poses) {
        if (const auto node = link.index.find(id).node)
            move(*node, pose);
    }
}

/// Calls change(keys) under the animation's lock.
template <class Change>
void edit(Animation& animation, Change change)
{
    auto& data = Internals::of(animation);
    std::lock_guard lock(data.mutex);
    change(data.keys);
    ++data.revision;
}

} // namespace

boost::shared_ptr<Animation> AnimationManager::Private::current()
{
    std::lock_guard lock(mutex);
    return animation;
}

bool AnimationManager::Private::goesWithView(const Node& camera)
{
    const auto animation = current();
    if (!animation)
        return false;
    const auto& data = Internals::of(*animation);
    std::lock_guard lock(data.mutex);
    const auto isIts = [&](const AnimationChannel& channel) {
        return channel.goesWithView && channel.nodeID == camera.getID();
    };
    return std::any_of(data.keys.channels.begin(), data.keys.channels.end(), isIts);
}

void AnimationManager::Private::advance(Clock::time_point now)
{
    const auto playing = current();
    const time_duration length = playing ? lengthOf(*playing) : time_duration();
    time_duration reached;
    {
        std::lock_guard lock(mutex);
        const auto last = lastCycle.value_or(now);
        const auto elapsed = std::chrono::duration_cast<std::chrono::microseconds>(now - last);
        lastCycle = last + elapsed; // what is left of a microsecond counts in the next cycle
        if (!playing || playing != animation ||
            !advanceTime(std::min<time_duration>(microseconds(elapsed.count()), LongestStep), length))
            return;
        reached = time;
    }
    if (link)
        apply(*playing, *link, toSeconds(reached));
}

bool AnimationManager::Private::advanceTime(const time_duration& elapsed, const time_duration& length)
{
    if (!isPaused) {
        time = wrap(time + elapsed, length);
        return true;
    }
    if (!glide)
        return std::exchange(hasJumped, false);

    glide->elapsed += elapsed;
    const double share = std::min(1.0, double(toSeconds(glide->elapsed) / toSeconds(GlideTime)));
    const double eased = 1 - std::pow(1 - share, 3); // fast at first: a moving target is followed closely
    const auto distance = static_cast<double>((glide->to - glide->from).total_microseconds());
    time = glide->from + microseconds(std::llround(distance * eased));
    if (share == 1)
        glide.reset();
    return true;
}

AnimationManager::AnimationManager() : d(std::make_unique<Private>()) {}

AnimationManager::~AnimationManager() = default;

boost::shared_ptr<Animation> AnimationManager::getAnimation()
{
    return d->current();
}

void AnimationManager::setAnimation(boost::shared_ptr<Animation> animation)
{
    auto poses = posesOf(animation ? d->link.get() : nullptr);
    std::lock_guard lock(d->mutex);
    d->animation.swap(animation);
    d->poses.swap(poses);
    d->time = {};
    d->hasJumped = false;
    d->glide.reset();
}

const std::vector<float>& AnimationManager::getFrameTimes()
{
    const auto animation = getAnimation();
    const unsigned revision = animation ? Internals::of(*animation).revision.load() : 0;
    if (animation == d->frameTimesOf && revision == d->frameTimesRevision)
        return d->frameTimes;
    d->frameTimesOf = animation;
    d->frameTimesRevision = revision;
    d->frameTimes.clear();
    if (animation) {
        auto& data = Internals::of(*animation);
        std::lock_guard lock(data.mutex);
        d->frameTimes = data.keys.times();
    }
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
    if (!d->animation)
        return;
    d->time = time;
    d->hasJumped = true;
    d->glide.reset();
}

void AnimationManager::setTimeTarget(time_duration time)
{
    std::lock_guard lock(d->mutex);
    if (!d->animation)
        return;
    if (d->isPaused)
        d->glide = Private::Glide{d->time, time, {}};
    else
        d->time = time;
}

void AnimationManager::insertKeyframe(float seconds)
{
    const auto animation = getAnimation();
    if (!animation || !std::isfinite(seconds))
        return;
    const AnimationKeys::Poses now = posesOf(d->link.get());
    AnimationKeys::Poses before = now;
    {
        std::lock_guard lock(d->mutex);
        if (d->animation != animation)
            return;
        d->poses.swap(before);
    }
    edit(*animation, [&](AnimationKeys& keys) { keys.record(seconds, now, before); });
}

void AnimationManager::removeKeyFrame(boost::shared_ptr<Animation> animation, float seconds)
{
    if (animation && std::isfinite(seconds))
        edit(*animation, [&](AnimationKeys& keys) { keys.remove(seconds); });
}

void AnimationManager::addAnimationCamera()
{
    const auto animation = getAnimation();
    boost::shared_ptr<Node> node;
    std::optional<CameraPlace> place;
    {
        std::lock_guard lock(d->mutex);
        node = d->cameraNode.lock();
        place = d->view;
    }
    if (!animation || !node)
        return;
    if (place && place->node == node)
        move(*node, {place->translation, place->rotation, {}});
    const Pose pose = poseOf(*node);
    edit(*animation, [&](AnimationKeys& keys) {
        std::vector<float> keyframes = keys.times();
        if (keyframes.empty())
            keyframes.push_back(0);
        keys.add(node->getID(), pose, keyframes).goesWithView = true;
    });
}

void AnimationManager::pause()
{
    std::lock_guard lock(d->mutex);
    d->isPaused = true;
}

void AnimationManager::resume()
{
    std::lock_guard lock(d->mutex);
    d->isPaused = false;
    d->glide.reset();
}

bool AnimationManager::paused()
{
    std::lock_guard lock(d->mutex);
    return d->isPaused;
}

bool setView(AnimationManager& animations, const std::optional<CameraPlace>& place)
{
    auto& data = Internals::of(animations);
    const auto before = [&] { // goes after the lock
        std::lock_guard lock(data.mutex);
        return std::exchange(data.view, place);
    }();
    if (!place || !animations.paused() || !data.goesWithView(*place->node))
        return false;
    move(*place->node, {place->translation, place->rotation, {}});
    return true;
}

} // namespace halvern::scene
