#pragma once

#include "engine/scene/Animation.h"
#include "engine/scene/AnimationManager.h"
#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"

#include <boost/make_shared.hpp>

#include <cstdint>
#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace halvern::test {

/// Lines of text, one per call that changes something, in the order of calling.
class Calls
{
public:
    template <class... Arguments>
    void add(const char* name, const Arguments&... arguments)
    {
        std::ostringstream line;
        line.precision(9);
        line << name;
        ((line << ' ' << arguments), ...);
        lines.push_back(line.str());
    }

    /// The calls since the last take.
    std::vector<std::string> take() { return std::exchange(lines, {}); }

private:
    std::vector<std::string> lines;
};

/// An animation that is what its members say.
class FakeAnimation : public scene::Animation
{
public:
    FakeAnimation(Calls& calls, std::string id) : Animation(std::move(id), ""), calls(calls) {}

    bool isValid() const override { return valid; }
    int getTimeRange() const override { return timeRange; }
    void setTimeRange(int milliseconds) override
    {
        calls.add("setTimeRange", milliseconds);
        timeRange = milliseconds;
    }
    boost::posix_time::time_duration getDuration() const override { return duration; }

    bool valid = true;
    int timeRange = 10000;
    boost::posix_time::time_duration duration;

private:
    Calls& calls;
};

/// Plays nothing: it notes its calls, times in ticks and keyframes in seconds, and hands out what its members
/// hold.
class FakeAnimationManager : public scene::AnimationManager
{
public:
    explicit FakeAnimationManager(Calls& calls) : calls(calls) {}

    boost::shared_ptr<scene::Animation> getAnimation() override { return animation; }
    void setAnimation(boost::shared_ptr<scene::Animation> newAnimation) override
    {
        calls.add("setAnimation", nameOf(newAnimation));
        animation = std::move(newAnimation);
    }
    const std::vector<float>& getFrameTimes() override { return frameTimes; }
    boost::posix_time::time_duration getCurrentTime() override { return currentTime; }
    void setTime(boost::posix_time::time_duration time) override { calls.add("setTime", time.ticks()); }
    void setTimeTarget(boost::posix_time::time_duration time) override
    {
        calls.add("setTimeTarget", time.ticks());
    }
    void insertKeyframe(float seconds) override { calls.add("insertKeyframe", seconds); }
    void removeKeyFrame(boost::shared_ptr<scene::Animation> from, float seconds) override
    {
        calls.add("removeKeyFrame", nameOf(from), seconds);
    }
    void addAnimationCamera() override { calls.add("addAnimationCamera"); }
    void pause() override
    {
        calls.add("pause");
        isPaused = true;
    }
    void resume() override
    {
        calls.add("resume");
        isPaused = false;
    }
    bool paused() override { return isPaused; }

    boost::shared_ptr<scene::Animation> animation;
    std::vector<float> frameTimes;
    boost::posix_time::time_duration currentTime;
    bool isPaused = true;

private:
    static std::string nameOf(const boost::shared_ptr<scene::Animation>& animation)
    {
        return animation ? animation->getID() : "none";
    }

    Calls& calls;
};

/// A scene of one node whose animations are what its members say.
class FakeAnimationScene : public scene::SceneManager
{
public:
    explicit FakeAnimationScene(Calls& calls) :
        SceneManager(nullptr), animations(boost::make_shared<FakeAnimationManager>(calls)), calls(calls)
    {}

    boost::shared_ptr<scene::AnimationManager> getAnimationManager() override { return animations; }
    std::vector<boost::shared_ptr<scene::Node>> getNodeArray() override { return nodes; }
    std::vector<boost::shared_ptr<scene::Animation>> getAnimationsLibrary() override { return library; }
    void addAnimation(boost::shared_ptr<scene::Animation> animation) override
    {
        calls.add("addAnimation", animation->getID(), animation->getTimeRange());
        library.push_back(std::move(animation));
    }
    void removeAnimation(unsigned int index) override
    {
        calls.add("removeAnimation", index);
        if (index < library.size())
            library.erase(library.begin() + index);
    }
    void removeAllAnimations() override
    {
        calls.add("removeAllAnimations");
        library.clear();
    }

    /// Puts an animation into the library.
    boost::shared_ptr<FakeAnimation> put(const std::string& id, int timeRange = 10000)
    {
        const auto animation = boost::make_shared<FakeAnimation>(calls, id);
        animation->timeRange = timeRange;
        library.push_back(animation);
        return animation;
    }

    boost::shared_ptr<FakeAnimationManager> animations;
    std::vector<boost::shared_ptr<scene::Animation>> library;
    std::vector<boost::shared_ptr<scene::Node>> nodes{boost::make_shared<scene::Node>("node", "")};

private:
    Calls& calls;
};

} // namespace halvern::test
