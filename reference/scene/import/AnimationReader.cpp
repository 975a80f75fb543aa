#include "reference/scene/import/AnimationReader.h"

#include "reference/scene/AnimationPrivate.h"
#include "reference/scene/import/Conversions.h"

#include <assimp/anim.h>

#include <boost/make_shared.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>

namespace halvern::scene {

namespace {

constexpr double DefaultTicksPerSecond = 25;

const Eigen::Vector3f& coefficients(const Eigen::Vector3f& value)
{
    return value;
}

const Eigen::Vector4f& coefficients(const Eigen::Quaternionf& value)
{
    return value.coeffs();
}

/// The keys by their time in seconds, without those that are not finite.
template <class Value, class Key>
std::map<float, Value> readKeys(const Key* keys, unsigned count, double ticksPerSecond)
{
    std::map<float, Value> result;
    for (unsigned i = 0; keys && i < count; ++i) {
        const auto seconds = static_cast<float>(keys[i].mTime / ticksPerSecond);
        const Value value = toEigen(keys[i].mValue);
        if (std::isfinite(seconds) && coefficients(value).allFinite())
            result.insert_or_assign(result.end(), seconds, value);
    }
    return result;
}

} // namespace

boost::shared_ptr<Animation> readAnimation(const aiAnimation& source, const std::string& id,
                                           const std::function<std::string(const std::string&)>& nodeID,
                                           const std::set<std::string>& bones)
{
    const bool hasTicks = std::isfinite(source.mTicksPerSecond) && source.mTicksPerSecond > 0;
    const double ticksPerSecond = hasTicks ? source.mTicksPerSecond : DefaultTicksPerSecond;

    const auto animation = boost::make_shared<Animation>(id, "");
    auto& data = Internals::of(*animation);
    data.valid = source.mNumMeshChannels == 0 && source.mNumMorphMeshChannels == 0;
    for (unsigned i = 0; i < source.mNumChannels; ++i) {
        const aiNodeAnim& channel = *source.mChannels[i];
        const std::string name = channel.mNodeName.C_Str();
        data.valid = data.valid && bones.count(name) == 0;
        AnimationChannel keys;
        keys.nodeID = nodeID(name);
        keys.translations =
            readKeys<Eigen::Vector3f>(channel.mPositionKeys, channel.mNumPositionKeys, ticksPerSecond);
        keys.rotations =
            readKeys<Eigen::Quaternionf>(channel.mRotationKeys, channel.mNumRotationKeys, ticksPerSecond);
        keys.scales =
            readKeys<Eigen::Vector3f>(channel.mScalingKeys, channel.mNumScalingKeys, ticksPerSecond);
        if (!keys.nodeID.empty())
            data.keys.channels.push_back(std::move(keys));
    }
    const auto milliseconds = animation->getDuration().total_milliseconds();
    animation->setTimeRange(
        static_cast<int>(std::min<std::int64_t>(milliseconds, std::numeric_limits<int>::max())));
    return animation;
}

} // namespace halvern::scene
