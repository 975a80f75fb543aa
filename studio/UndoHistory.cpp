#include "studio/UndoHistory.h"

#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"

#include <QAction>

#include <boost/make_shared.hpp>

#include <utility>

namespace halvern::studio {

namespace {

QString describe(const scene::TransformStep& step, scene::SceneManager& sceneManager)
{
    const auto node = sceneManager.getNodeByID(step.nodeID);
    QString name = QString::fromStdString(node && !node->getName().empty() ? node->getName() : step.nodeID);
    name.replace('&', "&&"); // no mnemonic of the menu
    if (step.kind == scene::TransformStep::Kind::Translation)
        //: Stands behind "Undo" or "Redo".
        return UndoHistory::tr("Move %1").arg(name);
    //: Stands behind "Undo" or "Redo".
    return UndoHistory::tr("Turn %1").arg(name);
}

class TransformCommand : public QUndoCommand
{
public:
    TransformCommand(boost::shared_ptr<scene::ActionLog> newLog, scene::TransformStep newStep,
                     const QString& text) :
        QUndoCommand(text), log(std::move(newLog)), step(std::move(newStep))
    {}

    void undo() override { log->undo(step); }

    void redo() override
    {
        // Pushing a command redoes it; the node stands there already.
        if (std::exchange(done, true))
            log->redo(step);
    }

private:
    const boost::shared_ptr<scene::ActionLog> log;
    const scene::TransformStep step;
    bool done = false;
};

} // namespace

UndoHistory::UndoHistory(boost::shared_ptr<core::event::EventManager> newEventManager, QObject* parent) :
    QObject(parent), eventManager(std::move(newEventManager))
{
    connect(this, SIGNAL(stepped()), this, SLOT(takeSteps()));
}

UndoHistory::~UndoHistory()
{
    close();
}

QAction* UndoHistory::createUndoAction(QObject* parent)
{
    QAction* action = stack.createUndoAction(parent, tr("&Undo"));
    action->setShortcut(QKeySequence::Undo);
    return action;
}

QAction* UndoHistory::createRedoAction(QObject* parent)
{
    QAction* action = stack.createRedoAction(parent, tr("&Redo"));
    action->setShortcut(QKeySequence::Redo);
    return action;
}

void UndoHistory::open(boost::shared_ptr<scene::SceneManager> newSceneManager)
{
    close();
    sceneManager = std::move(newSceneManager);
    log = boost::make_shared<scene::ActionLog>(eventManager,
                                               [this](const scene::TransformStep& step) { note(step); });
    sceneManager->addSceneController(log);
}

void UndoHistory::close()
{
    stack.clear();
    if (log)
        sceneManager->removeSceneController(log);
    log.reset();
    sceneManager.reset();
    const std::lock_guard<std::mutex> lock(mutex);
    waiting.clear();
}

void UndoHistory::note(const scene::TransformStep& step)
{
    {
        const std::lock_guard<std::mutex> lock(mutex);
        waiting.push_back(step);
    }
    emit stepped();
}

void UndoHistory::takeSteps()
{
    std::vector<scene::TransformStep> steps;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        steps.swap(waiting);
    }
    for (const scene::TransformStep& step : steps)
        stack.push(new TransformCommand(log, step, describe(step, *sceneManager)));
}

} // namespace halvern::studio
