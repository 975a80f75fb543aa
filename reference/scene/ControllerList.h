#pragma once

#include "engine/scene/ISceneController.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace halvern::scene {

/// The controllers of a scene manager, called with no lock held. Any thread.
class ControllerList
{
public:
    /// Enters a controller once.
    void add(boost::shared_ptr<ISceneController> controller);

    /// When this returns, no update() of the controller runs or will start, except the one it is called
    /// from.
    void remove(const boost::shared_ptr<ISceneController>& controller);

    /// Calls update() of each controller; one that is just running on another thread, or further up on
    /// this one, is left out. Returns whether any returned true. An exception counts as false and stops
    /// nobody else.
    bool update();

private:
    struct Entry
    {
        const boost::shared_ptr<ISceneController> controller;
        std::thread::id runsOn;
        bool isRemoved = false;
    };
    bool run(Entry& entry);

    std::mutex mutex; // guards the list and its entries
    std::condition_variable ran;
    std::vector<std::shared_ptr<Entry>> entries;
};

} // namespace halvern::scene
