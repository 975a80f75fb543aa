#pragma once

#include "reference/scene/ChangeJournal.h"
#include "reference/scene/NodeIndex.h"

#include <memory>
#include <mutex>
#include <vector>

namespace halvern::scene {

/// What the objects of a scene know of it. It outlives the scene manager while one of them holds it.
struct SceneLink
{
    const std::shared_ptr<ChangeJournal> journal = std::make_shared<ChangeJournal>();
    NodeIndex index;
};

/// The journals of all scenes that an object shared by several nodes came into: a light, a camera, a
/// material. It is not taken out again, one mark too many only costs a look. Any thread.
class SceneMarks
{
public:
    void attach(const std::shared_ptr<ChangeJournal>& journal);
    void mark(unsigned sceneChange) const;

private:
    mutable std::mutex mutex;
    std::vector<std::weak_ptr<ChangeJournal>> journals;
};

} // namespace halvern::scene
