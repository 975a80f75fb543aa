#include "reference/scene/AnimationPrivate.h"

#include <cmath>
#include <set>

namespace halvern::scene {

Animation::Animation(std::string name, std::string /*second*/) : d(std::make_unique<Private>(std::move(name)))
{}

Animation::~Animation() = default;

std::string Animation::getID() const
{
    return d->id;
}

bool Animation::isValid() const
{
    std::lock_guard lock(d->mutex);
    return d->valid;
}

int Animation::getTimeRange() const
{
    std::lock_guard lock(d->mutex);
    return d->timeRange;
}

void Animation::setTimeRange(int milliseconds)
{
    std::lock_guard lock(d->mutex);
    d->timeRange = milliseconds;
}

boost::posix_time::time_duration Animation::getDuration() const
{
    const auto times = keyTimes(*this);
    return boost::posix_time::microseconds(times.empty() ? 0 : std::llround(times.back() * 1e6));
}

std::vector<float> keyTimes(const Animation& animation)
{
    const auto& data = Internals::of(animation);
    std::set<float> times;
    const auto collect = [&](const auto& keys) {
        for (const auto& key : keys)
            times.insert(key.first);
    };
    std::lock_guard lock(data.mutex);
    for (const auto& channel : data.channels) {
        collect(channel.positions);
        collect(channel.rotations);
        collect(channel.scales);
    }
    return {times.begin(), times.end()};
}

} // namespace halvern::scene
