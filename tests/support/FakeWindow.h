#pragma once

#include "engine/fx/FXRenderTarget.h"
#include "engine/logic/LogicManager.h"
#include "engine/window/Window.h"

#include <boost/make_shared.hpp>

#include <functional>
#include <initializer_list>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace halvern::test {

/// Lines of text, one per call, in the order of calling.
class CallLog
{
public:
    void add(const std::string& name, std::initializer_list<int> arguments = {})
    {
        std::ostringstream line;
        line << name;
        for (const int argument : arguments)
            line << ' ' << argument;
        calls.push_back(line.str());
        if (onCall)
            onCall(name);
    }

    /// The calls since the last take.
    std::vector<std::string> take() { return std::exchange(calls, {}); }

    std::vector<std::string> calls;

    /// Runs inside each call, after it was noted. It may throw.
    std::function<void(const std::string&)> onCall;
};

/// Notes the input it gets, the arguments in the order of the operation.
class FakeLogicManager : public engine::logic::LogicManager
{
public:
    explicit FakeLogicManager(CallLog& log) : log(log) {}

    void keyPressed(int key, int modifiers) override { log.add("keyPressed", {key, modifiers}); }
    void keyReleased(int key, int modifiers) override { log.add("keyReleased", {key, modifiers}); }
    void mousePressed(int button, int x, int y, int modifiers) override
    {
        log.add("mousePressed", {button, x, y, modifiers});
    }
    void mouseReleased(int button, int x, int y, int modifiers) override
    {
        log.add("mouseReleased", {button, x, y, modifiers});
    }
    void mouseMoved(int x, int y, int modifiers) override { log.add("mouseMoved", {x, y, modifiers}); }
    void mouseWheel(int first, int direction, int x, int y, int modifiers) override
    {
        log.add("mouseWheel", {first, direction, x, y, modifiers});
    }
    void resetInputState() override { log.add("resetInputState"); }

private:
    CallLog& log;
};

/// An engine window that draws nothing: it notes its calls and hands out what its members hold.
class FakeWindow : public engine::window::Window
{
public:
    explicit FakeWindow(CallLog& log) :
        Window(nullptr, "fake"), logicManager(boost::make_shared<FakeLogicManager>(log)), log(log)
    {}

    void init() override { log.add("init"); }
    void update() override { log.add("update"); }
    void render() override { log.add("render"); }
    void resize(Eigen::Vector2i newSize) override
    {
        size = newSize;
        log.add("resize", {newSize.x(), newSize.y()});
    }
    void attach(boost::shared_ptr<scene::SceneManager> newSceneManager) override
    {
        sceneManager = newSceneManager;
        log.add("attach");
    }
    void setEventManager(boost::shared_ptr<core::event::EventManager> newEventManager) override
    {
        eventManager = newEventManager;
        log.add("setEventManager");
    }
    boost::shared_ptr<engine::logic::LogicManager> getLogicManager() override { return logicManager; }
    boost::shared_ptr<scene::SceneManager> getSceneManager() override { return sceneManager; }
    boost::shared_ptr<engine::fx::FXRenderTarget> getColorRenderTarget() override { return colorTarget; }
    Eigen::Vector2i getSize() const override { return size; }

    boost::shared_ptr<engine::logic::LogicManager> logicManager;
    boost::shared_ptr<scene::SceneManager> sceneManager;
    boost::shared_ptr<engine::fx::FXRenderTarget> colorTarget;
    boost::shared_ptr<core::event::EventManager> eventManager;
    Eigen::Vector2i size = Eigen::Vector2i::Zero();

private:
    CallLog& log;
};

} // namespace halvern::test
