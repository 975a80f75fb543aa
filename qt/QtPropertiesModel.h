#pragma once

#include "engine/Export.h"
#include "engine/core/event/EventBase.h"
#include "engine/scene/ISceneController.h"
#include "engine/scene/SceneManager.h"

#include <QAbstractItemModel>
#include <QPersistentModelIndex>
#include <QStringList>

#ifndef Q_MOC_RUN
#    include <boost/shared_ptr.hpp>
#    include <boost/smart_ptr/enable_shared_from_this.hpp>

#    include <Eigen/Core>
#endif

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace halvern::scene {
class Node;
}

namespace halvern::qt {

class PropertyItem;

/// The properties of the node that is selected anywhere, as a tree of names and values.
///
/// "ObjectSelected" shows another node, "NodeTransformationUpdate" of the node shown reads its values anew.
/// What is written into the table reaches the node with the next update() of the scene's cycle. A translation
/// or rotation that is edited between beginValueEdit and commitValueEdit is announced with
/// "TranslationAction" or "RotationAction", which carry the change.
///
/// Rows: 0 "ID", 1 "Translation", 2 "Rotation" (degrees; X is the bank, Y the heading, Z the attitude),
/// 3 "Scale", 4 "Layers", 5 "Lights", 6 "Cameras".
///
/// Held by a boost::shared_ptr. Every operation belongs to the model's thread, except setSceneManager, update
/// and the events. A derived class calls the qualified setEventManager(empty) first in its own destructor.
class HALVERN_QT_API QtPropertiesModel : public QAbstractItemModel,
                                         public HCE::EventBase,
                                         public HS::ISceneController,
                                         public boost::enable_shared_from_this<QtPropertiesModel>
{
    Q_OBJECT

public:
    /// A column per header. It has no event manager until setEventManager.
    explicit QtPropertiesModel(QStringList headers, QObject* parent = nullptr);
    ~QtPropertiesModel() override;

    /// The same for Qt::DisplayRole and Qt::EditRole, nothing for others. Numbers of a node are
    /// rounded to two decimals, those of a camera are not; layers are bools, colours QColors.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    /// Values of a node can be edited and selected; names, the ID and what is empty cannot.
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    /// The headers that were given to the constructor.
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    /** @{ */
    /// The tree as QAbstractItemModel asks for it. All rows have the same number of columns, and only the
    /// first has rows below it.
    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    /** @} */

    using QObject::parent;

    /// Writes the value and queues the whole group of the cell for the node, changed or not. Refuses every
    /// role but Qt::EditRole, but no kind of value and no cell, not even one that is not editable.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    /// Refuses all but Qt::Horizontal, Qt::EditRole and a column that exists.
    bool setHeaderData(int section, Qt::Orientation orientation, const QVariant& value,
                       int role = Qt::EditRole) override;

    /** @{ */
    /// Changes the whole tree, whatever the parent. A position or a count that does not fit is refused.
    bool insertColumns(int position, int count, const QModelIndex& parent = QModelIndex()) override;
    bool removeColumns(int position, int count, const QModelIndex& parent = QModelIndex()) override;
    /** @} */

    /// Inserts empty rows, which stand for nothing of a node. A position or a count that does not fit is
    /// refused.
    bool insertRows(int position, int count, const QModelIndex& parent = QModelIndex()) override;

    /// What a removed row stands for is neither shown nor written from then on. A position or a count that
    /// does not fit is refused.
    bool removeRows(int position, int count, const QModelIndex& parent = QModelIndex()) override;

    /// From here on changes of the cell's group are measured. Nothing while an edit is in progress, even one
    /// of another cell.
    void beginValueEdit(const QModelIndex& index);

    /// Ends the edit; announces how far the cell's translation or rotation changed, if it did.
    void commitValueEdit();

    /// How often another node came to be shown, no node included.
    int getShownCount() const;

    /// An empty pointer is ignored. Any thread.
    void setSceneManager(boost::shared_ptr<HS::SceneManager> newSceneManager) override;

    /// Writes what was edited to its nodes, in the order of the edits; while no node is selected the edits
    /// are dropped. Returns whether there were any. Any thread.
    bool update() override;

signals:
    /// Another node is selected, or none. Emitted in the thread of the event.
    void sceneSelection();

    /// The node shown has moved. Emitted in the thread of the event.
    void nodeUpdate();

public slots:
    /// Shows the node that was selected last: makes the rows of its lights and cameras, and fills all.
    void createProperties();

    /// Reads all values of the node shown anew, except those of a group that is being edited and not written
    /// yet.
    void fillProperties();

private:
    using GroupWrite = std::function<void(HS::Node&)>;
    using Cells = std::vector<QPersistentModelIndex>;

    /// The values of a group when one of them was edited, and the node that they are for.
    struct PendingGroup
    {
        boost::shared_ptr<HS::Node> node;
        GroupWrite write; // empty for a row that is no part of a node's state
        bool isBeingEdited = false;
    };

    void handleObjectSelected(const HCE::Event& event);
    void handleNodeTransformationUpdate(const HCE::Event& event);

    void createFixedRows();
    PropertyItem* createGroup(const char* name, const std::vector<const char*>& rows);
    void createInstanceRows();
    bool areInstanceRowsHeld() const;
    void insertInstanceRow(PropertyItem* group, int announcedRow, int valueCount);
    void removeInstanceRows(PropertyItem* group);
    void forgetGroups(int position, int count);

    void fillFromNode(Cells& cells);
    void fillWithoutNode(Cells& cells);
    void fillVector(PropertyItem* group, const Eigen::Vector3f& values, Cells& cells);
    void fillLayers(Cells& cells);
    void fillLight(Cells& cells);
    void fillCamera(Cells& cells);
    void fillCell(PropertyItem* item, int column, const QVariant& value, bool editable, Cells& cells);

    GroupWrite makeWrite(const PropertyItem* group) const;
    GroupWrite makeLayersWrite() const;
    GroupWrite makeLightsWrite() const;
    GroupWrite makeCamerasWrite() const;
    void announceTranslation(int axis, float difference);
    void announceRotation(int axis, float degrees);

    bool isBeingEdited(const PropertyItem* group) const;

    /// Whether the group is being edited and holds what its node has yet to get.
    bool isAheadOfItsNode(const PropertyItem* group) const;

    PropertyItem* getItem(const QModelIndex& index) const;
    QModelIndex getIndex(PropertyItem* item, int column) const;

    boost::shared_ptr<HS::SceneManager> sceneManager; // both are read and written atomically,
    boost::shared_ptr<HS::Node> node;                 // by several threads
    const std::unique_ptr<PropertyItem> rootItem;
    PropertyItem* translationItem = nullptr; // these are null once their row was removed
    PropertyItem* rotationItem = nullptr;
    PropertyItem* scaleItem = nullptr;
    PropertyItem* layersItem = nullptr;
    PropertyItem* lightsItem = nullptr;
    PropertyItem* camerasItem = nullptr;
    std::deque<PendingGroup> pendingGroups;
    mutable std::mutex pendingLock;
    bool editInProgress = false;
    QPersistentModelIndex editIndex;
    Eigen::Vector3f translationBefore = Eigen::Vector3f::Zero();
    Eigen::Vector3f rotationBefore = Eigen::Vector3f::Zero();

    PropertyItem* idItem = nullptr;
    boost::shared_ptr<HS::Node> shownNode; // what the rows show; `node` may be ahead of it
    int shownCount = 0;
    int unwrittenCount = 0; // edited groups on their way to a node; guarded by pendingLock
};

} // namespace halvern::qt
