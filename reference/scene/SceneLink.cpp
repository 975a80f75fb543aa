#include "reference/scene/SceneLink.h"

#include <algorithm>

namespace halvern::scene {

void SceneMarks::attach(const std::shared_ptr<ChangeJournal>& journal)
{
    std::lock_guard lock(mutex);
    const auto isGone = [&](auto& known) { return known.expired() || known.lock() == journal; };
    journals.erase(std::remove_if(journals.begin(), journals.end(), isGone), journals.end());
    journals.push_back(journal);
}

void SceneMarks::mark(unsigned sceneChange) const
{
    std::unique_lock lock(mutex);
    const auto copy = journals;
    lock.unlock();
    for (const auto& known : copy) {
        if (const auto journal = known.lock())
            journal->markScene(sceneChange);
    }
}

} // namespace halvern::scene
