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

/// Plays one current animation, in a loop and in real time; the nodes move in SceneManager::update(). May be
/// used from any thread, getFrameTimes excepted. Without a current animation the operations that need one do
/// nothing.
class HALVERN_SCENE_API AnimationManager
{
public:
    /// Paused, without an animation. Nodes are found only by the one that a SceneManager has.
    AnimationManager();
    virtual ~AnimationManager();

    AnimationManager(const AnimationManager&) = delete;
    AnimationManager& operator=(const AnimationManager&) = delete;

    /// Empty when there is none.
    virtual boost::shared_ptr<Animation> getAnimation();

    /// Chooses what is played, from time 0 on; an empty pointer clears it. How the nodes stand now is what
    /// the first keyframe compares with.
    virtual void setAnimation(boost::shared_ptr<Animation> animation);

    /// Times of the current animation's keyframes in seconds, ascending. The vector behind the reference
    /// changes only on the GUI thread, which alone may call this.
    virtual const std::vector<float>& getFrameTimes();

    /// The time that is played, or stood at; 0 without an animation.
    virtual boost::posix_time::time_duration getCurrentTime();

    /// Jumps to the time; the nodes follow in the next cycle, paused or not.
    virtual void setTime(boost::posix_time::time_duration time);

    /// Moves to the time smoothly, in a quarter of a second, while paused; else jumps there.
    virtual void setTimeTarget(boost::posix_time::time_duration time);

    /// Makes a keyframe, at the given time in seconds, of how the animated nodes stand now. Nodes that moved
    /// since the last keyframe, or since the animation was chosen, are animated from now on. A time that is
    /// no finite number is ignored.
    virtual void insertKeyframe(float seconds);

    /// Removes the keyframe nearest to the time in seconds, if one is within a millisecond.
    virtual void removeKeyFrame(boost::shared_ptr<Animation> animation, float seconds);

    /// Takes the node of the active camera ("ActiveCamera", else the scene's first) into the current
    /// animation, where the user looks from, with the keyframes there are, or one at 0. While the animation
    /// is paused the node goes along with the user's view, to be recorded in further keyframes.
    virtual void addAnimationCamera();

    /** @{ */
    /// Whether time goes on with each cycle. It is paused at first.
    virtual void pause();
    virtual void resume();
    virtual bool paused();
    /** @} */

private:
    friend struct Internals;
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::scene
