#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

#ifndef Q_MOC_RUN
#    include <boost/date_time/posix_time/posix_time_duration.hpp>
#endif

#include <memory>
#include <string>

namespace halvern::scene {

/// A named animation of nodes: keyframes on a time line. May be used from any thread.
class HALVERN_SCENE_API Animation
{
public:
    /// An animation without keyframes and with a time range of 0. The name is the ID; the second text is
    /// reserved and always empty.
    Animation(std::string name, std::string second);
    virtual ~Animation();

    Animation(const Animation&) = delete;
    Animation& operator=(const Animation&) = delete;

    /// The name given to the constructor.
    virtual std::string getID() const;

    /// False for an animation that can be played but not edited (skeletal or morph channels).
    virtual bool isValid() const;

    /** @{ */
    /// Length of the time line in milliseconds. Playing begins anew at its end, or at the last keyframe if
    /// that is later.
    virtual int getTimeRange() const;
    virtual void setTimeRange(int milliseconds);
    /** @} */

    /// Time of the last keyframe; 0 without keyframes.
    virtual boost::posix_time::time_duration getDuration() const;

private:
    friend struct Internals;
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::scene
