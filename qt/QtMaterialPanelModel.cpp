#include "qt/QtMaterialPanelModel.h"

#include "engine/core/event/Event.h"
#include "engine/scene/Material.h"

#include <QMetaObject>
#include <QMimeData>
#include <QThread>

#include <boost/bind/bind.hpp>

#include <algorithm>
#include <utility>

namespace halvern::qt {

QtMaterialPanelModel::QtMaterialPanelModel(QObject* parent) :
    QAbstractTableModel(parent), HCE::EventBase(nullptr)
{
    using namespace boost::placeholders;
    registerHandler(HCE::EventType("SceneAttached"), boost::bind(&QtMaterialPanelModel::queueRebuild, this));
    registerHandler(HCE::EventType("SceneUpdate"),
                    boost::bind(&QtMaterialPanelModel::handleSceneUpdate, this, _1));
}

QtMaterialPanelModel::~QtMaterialPanelModel()
{
    QtMaterialPanelModel::setEventManager(nullptr);
}

int QtMaterialPanelModel::rowCount(const QModelIndex& /*parent*/) const
{
    return rows;
}

int QtMaterialPanelModel::columnCount(const QModelIndex& /*parent*/) const
{
    return columns;
}

QVariant QtMaterialPanelModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || role != Qt::DisplayRole)
        return QVariant();
    const auto k = std::size_t(columns) * std::size_t(index.row()) + std::size_t(index.column());
    return k < materialIds.size() ? QVariant(materialIds[k]) : QVariant();
}

QVariant QtMaterialPanelModel::headerData(int /*section*/, Qt::Orientation /*orientation*/,
                                          int /*role*/) const
{
    return QVariant();
}

QMimeData* QtMaterialPanelModel::mimeData(const QModelIndexList& indexes) const
{
    if (indexes.size() != 1)
        return nullptr;
    const QString id = data(indexes.first()).toString();
    if (id.isEmpty())
        return nullptr;
    auto* mime = new QMimeData;
    mime->setText(id);
    return mime;
}

/// Cells without a material can be selected and dragged too, on purpose; such a drag carries nothing.
Qt::ItemFlags QtMaterialPanelModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsEnabled;
}

void QtMaterialPanelModel::setColumnCount(int newColumns)
{
    columns = newColumns;
    rows = countRows();
    rebuild();
}

void QtMaterialPanelModel::setSceneManager(boost::shared_ptr<HS::SceneManager> newSceneManager)
{
    if (!newSceneManager)
        return;
    {
        const std::lock_guard<std::mutex> lock(pendingLock);
        sceneManager.swap(newSceneManager); // the one before is released after the lock
    }
    queueRebuild();
}

/// Reset from another thread, the model would pull the indexes from under a view that shows it.
bool QtMaterialPanelModel::update()
{
    if (!dirty) // not under the lock: asked sixty times a second
        return false;
    std::deque<boost::function<void()>> tasks;
    {
        const std::lock_guard<std::mutex> lock(pendingLock);
        tasks.swap(pendingTasks);
        dirty = false;
    }
    const bool isOwnThread = QThread::currentThread() == thread();
    for (const auto& task : tasks) {
        if (isOwnThread)
            task();
        else
            QMetaObject::invokeMethod(this, task, Qt::QueuedConnection);
    }
    return true;
}

void QtMaterialPanelModel::handleSceneUpdate(const HCE::Event& event)
{
    if (event.getEventData().getArg(1) == "MaterialList")
        queueRebuild();
}

void QtMaterialPanelModel::queueRebuild()
{
    const std::lock_guard<std::mutex> lock(pendingLock);
    pendingTasks.emplace_back(boost::bind(&QtMaterialPanelModel::rebuild, this));
    dirty = true;
}

void QtMaterialPanelModel::rebuild()
{
    beginResetModel();
    materialIds.clear();
    if (const auto scene = getSceneManager()) {
        for (const auto& material : scene->getMaterialList())
            if (material)
                materialIds.push_back(QString::fromStdString(material->getMaterialID()));
        rows = countRows();
    }
    endResetModel();
}

/// Always one more than the quotient, on purpose: a grid that is full ends in an empty row.
int QtMaterialPanelModel::countRows() const
{
    return materialIds.empty() ? 0 : int(materialIds.size()) / std::max(columns, 1) + 1;
}

boost::shared_ptr<HS::SceneManager> QtMaterialPanelModel::getSceneManager()
{
    const std::lock_guard<std::mutex> lock(pendingLock);
    return sceneManager;
}

} // namespace halvern::qt
