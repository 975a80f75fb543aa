#include "reference/scene/AnimationPrivate.h"

#include <cmath>

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
    std::lock_guard lock(d->mutex);
    return boost::posix_time::microseconds(std::llround(d->keys.end() * 1e6));
}

} // namespace halvern::scene
