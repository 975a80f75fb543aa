#pragma once

#include "reference/scene/ActionLog.h"

#include <QUndoStack>

#include <boost/shared_ptr.hpp>

#include <mutex>
#include <vector>

class QAction;

namespace halvern::studio {

/// Takes the moves and turns that were made in the open scene back, one step per confirmed change. GUI
/// thread.
class UndoHistory : public QObject
{
    Q_OBJECT
public:
    explicit UndoHistory(boost::shared_ptr<core::event::EventManager> newEventManager,
                         QObject* parent = nullptr);
    ~UndoHistory() override;

    /// Follows this scene from now on and forgets the steps of the one before.
    void open(boost::shared_ptr<scene::SceneManager> newSceneManager);

    /// The entries of a menu, with their usual keys.
    QAction* createUndoAction(QObject* parent);
    QAction* createRedoAction(QObject* parent);

signals:
    /// Steps wait to be taken. Comes from the scene's thread.
    void stepped();

private slots:
    void takeSteps();

private:
    void close();
    void note(const scene::TransformStep& step);

    const boost::shared_ptr<core::event::EventManager> eventManager;
    boost::shared_ptr<scene::SceneManager> sceneManager;
    boost::shared_ptr<scene::ActionLog> log;
    QUndoStack stack;

    std::mutex mutex;
    std::vector<scene::TransformStep> waiting; ///< Guarded by the mutex.
};

} // namespace halvern::studio
