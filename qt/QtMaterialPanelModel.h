#pragma once

#include "engine/Export.h"
#include "engine/core/event/EventBase.h"
#include "engine/scene/ISceneController.h"
#include "engine/scene/SceneManager.h"

#include <QAbstractTableModel>
#include <QSize>
#include <QString>

#ifndef Q_MOC_RUN
#    include <boost/function.hpp>
#    include <boost/shared_ptr.hpp>
#endif

#include <atomic>
#include <deque>
#include <mutex>
#include <vector>

namespace halvern::qt {

/// The IDs of a scene's materials as a grid, row by row in the order of the scene; a drag carries one ID as
/// its text.
///
/// "SceneAttached", "SceneUpdate" with "MaterialList" and a new scene manager ask for a rebuild each. What
/// was asked for is done after the next update() of the scene's cycle, on the model's own thread.
///
/// Every operation belongs to the model's thread, except setSceneManager, update and the events. A derived
/// class calls the qualified setEventManager(empty) first in its own destructor.
class HALVERN_QT_API QtMaterialPanelModel : public QAbstractTableModel,
                                            public HS::ISceneController,
                                            public HCE::EventBase
{
    Q_OBJECT

public:
    /// Empty, with no column and no row. It has no event manager until setEventManager.
    explicit QtMaterialPanelModel(QObject* parent = nullptr);
    ~QtMaterialPanelModel() override;

    /** @{ */
    /// As many columns as were set. Rows for all materials and one cell more; none without materials. The
    /// parent does not count.
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    /** @} */

    /// The material's ID for Qt::DisplayRole; nothing for cells behind the last material.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    /// Always nothing.
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    /// Null unless there is exactly one index, and it has a material.
    QMimeData* mimeData(const QModelIndexList& indexes) const override;

    /// Every cell can be selected and dragged, those behind the last material too.
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    /// Lays the grid out anew and rebuilds it at once. A count below 1 has the rows of one column.
    void setColumnCount(int newColumns);

    /// An empty pointer is ignored. Any thread.
    void setSceneManager(boost::shared_ptr<HS::SceneManager> newSceneManager) override;

    /// Whether there was something to do; off the model's thread it is left to that and never waited for.
    /// Any thread.
    bool update() override;

private:
    void handleSceneUpdate(const HCE::Event& event);
    void queueRebuild();
    void rebuild();
    int countRows() const;
    boost::shared_ptr<HS::SceneManager> getSceneManager();

    boost::shared_ptr<HS::SceneManager> sceneManager; // written and read under the lock
    std::vector<QString> materialIds;
    std::atomic<bool> dirty{true};
    const QSize previewSize{300, 200}; // used by nothing
    int columns = 0;
    int rows = 0;
    std::deque<boost::function<void()>> pendingTasks;
    std::mutex pendingLock;
};

} // namespace halvern::qt
