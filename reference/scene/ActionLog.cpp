#include "reference/scene/ActionLog.h"

#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"

#include <algorithm>
#include <locale>
#include <sstream>
#include <utility>

namespace halvern::scene {

namespace event = core::event;

namespace {

constexpr int CyclesToSettle = 2;        // one may have begun before the action, and missed its edit
constexpr float TableTolerance = 0.011F; // values are edited at two decimals

TransformStep::Pose getPose(const Node& node)
{
    return {node.getTranslation().vector(), node.getRotation().topLeftCorner<3, 3>()};
}

/// False when the text is not that many numbers.
bool readNumbers(const std::string& text, int count, float* numbers)
{
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    for (int i = 0; i < count; ++i)
        if (!(stream >> numbers[i]))
            return false;
    return (stream >> std::ws).eof();
}

} // namespace

ActionLog::ActionLog(boost::shared_ptr<event::EventManager> eventManager, Listener listener) :
    EventBase(std::move(eventManager)), listener(std::move(listener))
{
    registerHandler(event::EventType("ObjectSelected"),
                    [this](const event::Event& selection) { handleSelection(selection); });
    registerHandler(event::EventType("TranslationAction"), [this](const event::Event& action) {
        handleAction(TransformStep::Kind::Translation, action);
    });
    registerHandler(event::EventType("RotationAction"), [this](const event::Event& action) {
        handleAction(TransformStep::Kind::Rotation, action);
    });
}

ActionLog::~ActionLog()
{
    EventBase::setEventManager(nullptr);
}

std::vector<TransformStep> ActionLog::getSteps(const std::string& nodeID) const
{
    const std::lock_guard<std::mutex> lock(mutex);
    const auto found = steps.find(nodeID);
    return found == steps.end() ? std::vector<TransformStep>() : found->second;
}

void ActionLog::undo(const TransformStep& step)
{
    put(step, step.before);
}

void ActionLog::redo(const TransformStep& step)
{
    put(step, step.after);
}

void ActionLog::setSceneManager(boost::shared_ptr<SceneManager> newSceneManager)
{
    const std::lock_guard<std::mutex> lock(mutex);
    sceneManager = newSceneManager;
}

bool ActionLog::update()
{
    for (Action& action : takeRipeActions())
        complete(std::move(action));
    return false;
}

void ActionLog::handleSelection(const event::Event& event)
{
    const std::string id = event.getEventData().getArg(1);
    const auto node = findNode(id);
    const auto pose = node ? getPose(*node) : TransformStep::Pose();
    const std::lock_guard<std::mutex> lock(mutex);
    // Selected again, the node may be on the way of an edit.
    if (std::exchange(selected, id) != id && node)
        known[id] = pose;
}

void ActionLog::handleAction(TransformStep::Kind kind, const event::Event& event)
{
    const bool isTurn = kind == TransformStep::Kind::Rotation;
    const event::EventData data = event.getEventData();
    Action action;
    Eigen::Matrix3f turn; // read to see that it is one; where the node stands says more
    if (!readNumbers(data.getArg(2), isTurn ? 9 : 3, isTurn ? turn.data() : action.change.data()))
        return;
    action.step.nodeID = data.getArg(1);
    action.step.kind = kind;
    const std::lock_guard<std::mutex> lock(mutex);
    actions.push_back(std::move(action));
}

std::vector<ActionLog::Action> ActionLog::takeRipeActions()
{
    const std::lock_guard<std::mutex> lock(mutex);
    for (Action& action : actions)
        ++action.cycles;
    const auto ripe = std::find_if(actions.begin(), actions.end(),
                                   [](const Action& action) { return action.cycles < CyclesToSettle; });
    std::vector<Action> taken(std::make_move_iterator(actions.begin()), std::make_move_iterator(ripe));
    actions.erase(actions.begin(), ripe);
    return taken;
}

void ActionLog::complete(Action action)
{
    TransformStep& step = action.step;
    const auto node = findNode(step.nodeID);
    if (!node)
        return;
    step.after = getPose(*node);
    {
        const std::lock_guard<std::mutex> lock(mutex);
        const auto found = known.find(step.nodeID);
        step.before = found == known.end() ? step.after : found->second;
        if (step.kind == TransformStep::Kind::Translation) {
            const Eigen::Vector3f byChange = step.after.translation - action.change;
            if ((step.before.translation - byChange).cwiseAbs().maxCoeff() > TableTolerance)
                step.before.translation = byChange;
        }
        known[step.nodeID] = step.after;
        steps[step.nodeID].push_back(step);
    }
    if (listener)
        listener(step);
}

void ActionLog::put(const TransformStep& step, const TransformStep::Pose& pose)
{
    const auto node = findNode(step.nodeID);
    if (!node)
        return;
    if (step.kind == TransformStep::Kind::Translation) {
        node->setTranslation(Eigen::Translation3f(pose.translation));
    } else {
        Eigen::Affine3f rotation = Eigen::Affine3f::Identity();
        rotation.linear() = pose.rotation;
        node->setRotation(rotation);
    }
    const auto now = getPose(*node);
    const std::lock_guard<std::mutex> lock(mutex);
    known[step.nodeID] = now;
}

boost::shared_ptr<Node> ActionLog::findNode(const std::string& id) const
{
    boost::shared_ptr<SceneManager> scene;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        scene = sceneManager.lock();
    }
    return scene ? scene->getNodeByID(id) : nullptr;
}

} // namespace halvern::scene
