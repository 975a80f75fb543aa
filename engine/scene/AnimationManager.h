#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

#ifndef Q_MOC_RUN
#    include <boost/date_time/posix_time/posix_time_duration.hpp>
#endif

#include <memory>
#include <vector>

namespace halvern::scene {

class Animation;

/// Plays one current animation. May be used from any thread, getFrameTimes excepted. Without a current
/// animation the operations that need one do nothing.
class HALVERN_SCENE_API AnimationManager
{
public:
    AnimationManager();
    virtual ~AnimationManager();

    AnimationManager(const AnimationManager&) = delete;
    AnimationManager& operator=(const AnimationManager&) = delete;

    /// Empty when there is none.
    virtual boost::shared_ptr<Animation> getAnimation();

    /// An empty pointer clears it.
    virtual void setAnimation(boost::shared_ptr<Animation> animation);

    /// Times of the current animation's keyframes in seconds, ascending. The vector behind the reference
    /// changes only on the GUI thread, which alone may call this.
    virtual const std::vector<float>& getFrameTimes();

    virtual boost::posix_time::time_duration getCurrentTime();

    /// Jumps to the time.
    virtual void setTime(boost::posix_time::time_duration time);

    /// Moves to the time smoothly while paused.
    virtual void setTimeTarget(boost::posix_time::time_duration time);

    /// Records the animated nodes as they stand at the given time in seconds.
    virtual void insertKeyframe(float seconds);

    virtual void removeKeyFrame(boost::shared_ptr<Animation> animation, float seconds);

    /// Takes the active camera into the current animation.
    virtual void addAnimationCamera();

    virtual void pause();
    virtual void resume();
    virtual bool paused();

private:
    friend struct Internals;
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::scene
