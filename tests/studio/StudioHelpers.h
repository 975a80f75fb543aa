#pragma once

#include "studio/SceneLoader.h"

#include <atomic>
#include <functional>
#include <future>

/// What the tests of the studio share.
namespace studiotest {

/// Processes events until the condition holds; false when it does not within ten seconds.
bool waitFor(const std::function<bool()>& condition);

/// Processes events for so long, for what must not happen.
void processEventsFor(int milliseconds);

/// A scene of one node without geometry.
halvern::scene::ImportedScene oneNodeScene();

/// An importer that works only when it is told to. It must outlive the loader.
class GatedImport
{
public:
    /// Waits until open() is called, then makes a scene or throws what `error` holds. Ends when cancelled.
    halvern::scene::ImportedScene operator()(const std::string& file,
                                             const halvern::scene::ImportOptions& options);

    void open() { gate.set_value(); }

    std::string error;
    std::atomic<int> calls{0};

private:
    std::promise<void> gate;
    std::shared_future<void> opened = gate.get_future().share();
};

} // namespace studiotest
