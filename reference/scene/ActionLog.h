#pragma once

#include "engine/Export.h"
#include "engine/core/event/EventBase.h"
#include "engine/scene/ISceneController.h"

#include <boost/smart_ptr/weak_ptr.hpp>

#include <Eigen/Core>

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace halvern::scene {

class Node;

/// A confirmed move or turn of a node: where it stood before and where it stands since.
struct TransformStep
{
    enum class Kind { Translation, Rotation };

    /// Where a node stands, its scale left out.
    struct Pose
    {
        Eigen::Vector3f translation = Eigen::Vector3f::Zero();
        Eigen::Matrix3f rotation = Eigen::Matrix3f::Identity();
    };

    std::string nodeID;
    Kind kind = Kind::Translation;
    Pose before;
    Pose after;
};

/// Keeps the moves and turns that were announced with "TranslationAction" and "RotationAction", so that they
/// can be taken back: one step per action.
///
/// The node has moved, or is about to, when an action comes; the step is complete two cycles later. Where a
/// node stood before it is known from its selection ("ObjectSelected"), the end of its last step, or what was
/// undone or redone, whichever was last. A translation that does not fit to that, because something else
/// moved the node meanwhile, is taken by its change.
///
/// Takes part as a controller: add it with SceneManager::addSceneController and remove it before its end.
/// Every operation may be called from any thread.
class HALVERN_SCENE_API ActionLog : public core::event::EventBase, public ISceneController
{
public:
    /// The listener hears of each complete step once, inside update() and with no lock held. It may be empty.
    using Listener = std::function<void(const TransformStep&)>;

    ActionLog(boost::shared_ptr<core::event::EventManager> eventManager, Listener listener);
    ~ActionLog() override;

    /// The complete steps of a node, the oldest first.
    std::vector<TransformStep> getSteps(const std::string& nodeID) const;

    /// Puts the node's translation or rotation back to where it was before the step, or forth again. Does
    /// nothing when the scene has no such node any more.
    void undo(const TransformStep& step);
    void redo(const TransformStep& step);

    /// Keeps no reference to the scene alive.
    void setSceneManager(boost::shared_ptr<SceneManager> newSceneManager) override;

    /// Completes steps; never changes the scene.
    bool update() override;

private:
    struct Action
    {
        TransformStep step;
        Eigen::Vector3f change = Eigen::Vector3f::Zero(); // of a translation
        int cycles = 0;
    };

    void handleSelection(const core::event::Event& event);
    void handleAction(TransformStep::Kind kind, const core::event::Event& event);
    std::vector<Action> takeRipeActions();
    void complete(Action action);
    void put(const TransformStep& step, const TransformStep::Pose& pose);
    boost::shared_ptr<Node> findNode(const std::string& id) const;

    const Listener listener;

    mutable std::mutex mutex; // guards what follows
    boost::weak_ptr<SceneManager> sceneManager;
    std::string selected;
    std::map<std::string, TransformStep::Pose> known; // where nodes stood when nothing was under way
    std::vector<Action> actions;                      // to be completed, the oldest first
    std::map<std::string, std::vector<TransformStep>> steps;
};

} // namespace halvern::scene
