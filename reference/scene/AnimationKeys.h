#pragma once

#include <Eigen/Geometry>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace halvern::scene {

/// Where a node stands; parts that are empty stay as they are.
struct Pose
{
    std::optional<Eigen::Vector3f> translation;
    std::optional<Eigen::Quaternionf> rotation;
    std::optional<Eigen::Vector3f> scale;
};

/// The keys of one node, by their time in seconds.
struct AnimationChannel
{
    std::string nodeID;
    bool goesWithView = false; // a camera that the user added
    std::map<float, Eigen::Vector3f> translations;
    std::map<float, Eigen::Quaternionf> rotations;
    std::map<float, Eigen::Vector3f> scales;

    /// Linear between two keys, the rotation along the shorter arc; the first and last key hold outside.
    Pose sample(float seconds) const;
};

/// What an animation does to which node when. Times are seconds; two that are less than half a millisecond
/// apart are the same.
class AnimationKeys
{
public:
    using Poses = std::unordered_map<std::string, Pose>; ///< by node ID

    std::vector<AnimationChannel> channels;

    /// Times of the keys, ascending, each once.
    std::vector<float> times() const;

    /// The last of the times, or 0.
    float end() const;

    /// Makes a keyframe of how the nodes stand now. A node that had no keys gets them if it stands
    /// elsewhere than before. Nothing changes beyond the keyframes
    /// before and after; where a node stood then is what they hold of all that had no keys.
    void record(float seconds, const Poses& now, const Poses& before);

    /// The keys of a node; of one without keys, a key of the pose at each of the times.
    AnimationChannel& add(const std::string& nodeID, const Pose& pose, const std::vector<float>& seconds);

    /// Takes the keyframe out that is nearest to the time, if one is within a millisecond.
    void remove(float seconds);

private:
    /// Without those that are the same as this one.
    std::vector<float> timesBeside(float seconds) const;

    /// Removes the keys of that very time.
    void clear(float seconds);

    std::set<float> recorded; // keyframes count even if they hold no node's key
};

} // namespace halvern::scene
