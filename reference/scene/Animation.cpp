#include "reference/scene/AnimationPrivate.h"

#include <algorithm>
#include <cmath>

namespace halvern::scene {

namespace {

constexpr double LongestTime = 1e9; // seconds; a file may hold any number

} // namespace

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
    std::lock_guard lock(d->mutex);
    const double end = std::clamp<double>(d->keys.end(), -LongestTime, LongestTime);
    return boost::posix_time::microseconds(std::llround(end * 1e6));
}

} // namespace halvern::scene
