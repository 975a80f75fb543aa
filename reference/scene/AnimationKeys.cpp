#include "reference/scene/AnimationKeys.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace halvern::scene {

namespace {

constexpr float SameTime = 0.0005f; // seconds

// Whole milliseconds, cut off, name a keyframe that is to go; a float of many seconds is not quite exact.
constexpr float Reach = 0.00105f;

Eigen::Vector3f between(const Eigen::Vector3f& first, const Eigen::Vector3f& second, float share)
{
    return first + (second - first) * share;
}

Eigen::Quaternionf between(const Eigen::Quaternionf& first, const Eigen::Quaternionf& second, float share)
{
    return first.slerp(share, second);
}

template <class Value>
std::optional<Value> sampleAt(const std::map<float, Value>& keys, float seconds)
{
    if (keys.empty())
        return {};
    const auto next = keys.upper_bound(seconds);
    if (next == keys.begin())
        return next->second;
    const auto last = std::prev(next);
    if (next == keys.end())
        return last->second;
    return between(last->second, next->second, (seconds - last->first) / (next->first - last->first));
}

/// From a map of keys or a set of times.
template <class Keys>
void removeAt(Keys& keys, float seconds)
{
    keys.erase(keys.lower_bound(seconds - SameTime), keys.upper_bound(seconds + SameTime));
}

template <class Value>
void insertAt(std::map<float, Value>& keys, float seconds, const std::optional<Value>& value)
{
    if (!value)
        return;
    removeAt(keys, seconds);
    keys.emplace(seconds, *value);
}

void insert(AnimationChannel& channel, float seconds, const Pose& pose)
{
    insertAt(channel.translations, seconds, pose.translation);
    insertAt(channel.rotations, seconds, pose.rotation);
    insertAt(channel.scales, seconds, pose.scale);
}

/// Gives what has no keys yet a key at each of the times.
void complete(AnimationChannel& channel, const std::vector<float>& times, const Pose& pose)
{
    const auto fill = [&](auto& keys, const auto& value) {
        if (!keys.empty())
            return;
        for (const float time : times)
            insertAt(keys, time, value);
    };
    fill(channel.translations, pose.translation);
    fill(channel.rotations, pose.rotation);
    fill(channel.scales, pose.scale);
}

/// Gives what has keys one at the time that changes nothing.
void hold(AnimationChannel& channel, float time)
{
    insert(channel, time, channel.sample(time));
}

/// The times of the keyframes before and after a time.
std::vector<float> neighboursOf(float seconds, const std::vector<float>& times)
{
    std::vector<float> neighbours;
    const auto next = std::upper_bound(times.begin(), times.end(), seconds);
    if (next != times.begin())
        neighbours.push_back(*std::prev(next));
    if (next != times.end())
        neighbours.push_back(*next);
    return neighbours;
}

bool isSame(const Pose& first, const Pose& second)
{
    return first.translation == second.translation && first.scale == second.scale &&
           first.rotation->coeffs() == second.rotation->coeffs();
}

template <class Keys>
float lastOf(const Keys& keys)
{
    return keys.empty() ? 0 : keys.rbegin()->first;
}

} // namespace

Pose AnimationChannel::sample(float seconds) const
{
    return {sampleAt(translations, seconds), sampleAt(rotations, seconds), sampleAt(scales, seconds)};
}

std::vector<float> AnimationKeys::times() const
{
    std::vector<float> times(recorded.begin(), recorded.end());
    const auto collect = [&](const auto& keys) {
        for (const auto& key : keys)
            times.push_back(key.first);
    };
    for (const AnimationChannel& channel : channels) {
        collect(channel.translations);
        collect(channel.rotations);
        collect(channel.scales);
    }
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    return times;
}

std::vector<float> AnimationKeys::timesBeside(float seconds) const
{
    std::vector<float> others = times();
    others.erase(std::lower_bound(others.begin(), others.end(), seconds - SameTime),
                 std::upper_bound(others.begin(), others.end(), seconds + SameTime));
    return others;
}

float AnimationKeys::end() const
{
    float end = recorded.empty() ? 0 : *recorded.rbegin();
    for (const AnimationChannel& channel : channels)
        end =
            std::max({end, lastOf(channel.translations), lastOf(channel.rotations), lastOf(channel.scales)});
    return end;
}

void AnimationKeys::record(float seconds, const Poses& now, const Poses& before)
{
    std::set<std::string> known;
    for (const AnimationChannel& channel : channels)
        known.insert(channel.nodeID);
    const std::vector<float> others = timesBeside(seconds);
    for (const auto& [id, pose] : now) {
        const auto old = before.find(id);
        if (known.count(id) == 0 && old != before.end() && !isSame(old->second, pose))
            channels.emplace_back().nodeID = id;
    }
    for (AnimationChannel& channel : channels) {
        const auto old = before.find(channel.nodeID);
        if (old != before.end())
            complete(channel, others, old->second);
        for (const float time : neighboursOf(seconds, others))
            hold(channel, time);
    }
    clear(seconds);
    for (AnimationChannel& channel : channels) {
        const auto pose = now.find(channel.nodeID);
        if (pose != now.end())
            insert(channel, seconds, pose->second);
    }
    recorded.insert(seconds);
}

AnimationChannel& AnimationKeys::add(const std::string& nodeID, const Pose& pose,
                                     const std::vector<float>& seconds)
{
    const auto known = std::find_if(channels.begin(), channels.end(), [&](const AnimationChannel& channel) {
        return channel.nodeID == nodeID;
    });
    if (known != channels.end())
        return *known;
    AnimationChannel& channel = channels.emplace_back();
    channel.nodeID = nodeID;
    complete(channel, seconds, pose);
    return channel;
}

void AnimationKeys::remove(float seconds)
{
    const std::vector<float> all = times();
    const auto distance = [seconds](float time) { return std::abs(time - seconds); };
    const auto nearest = std::min_element(all.begin(), all.end(), [&](float first, float second) {
        return distance(first) < distance(second);
    });
    if (nearest != all.end() && distance(*nearest) <= Reach)
        clear(*nearest);
}

void AnimationKeys::clear(float seconds)
{
    removeAt(recorded, seconds);
    for (AnimationChannel& channel : channels) {
        removeAt(channel.translations, seconds);
        removeAt(channel.rotations, seconds);
        removeAt(channel.scales, seconds);
    }
}

} // namespace halvern::scene
