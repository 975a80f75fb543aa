#include "qt/QtPropertiesModel.h"

#include "engine/scene/Camera.h"
#include "engine/scene/Light.h"
#include "engine/scene/Node.h"
#include "qt/PropertyItem.h"

#include <QColor>

#include <boost/bind/bind.hpp>

#include <Eigen/Geometry>

#include <algorithm>
#include <array>
#include <cmath>
#include <locale>
#include <sstream>
#include <string>
#include <utility>

namespace halvern::qt {

namespace {

enum Column { NameColumn, ValueColumn };

const std::vector<const char*> axisNames{"X", "Y", "Z"};
const std::vector<const char*> layerLabels{"Hidden", "Cast Shadow", "Transparent", "Post Render"};
const char* const layerNames[]{"hidden", "cast_shadow", "transparent", "post_render"};
constexpr int LayerCount = 4;
const std::vector<const char*> lensNames{"Near", "Far", "FOV"};

constexpr float DegreesPerRadian = 57.295776F;
constexpr float RadiansPerDegree = 0.017453292F;
constexpr float Pole = 0.999998F;           // sine of the attitude from which on heading and bank are one
constexpr float NoAxis = 0.000001F;         // squared length below which a rotation's axis is unknown
constexpr float QuarterTurn = 1.570796327F; // radians

QVariant getValue(const PropertyItem* group, int row)
{
    const PropertyItem* item = group ? group->child(row) : nullptr;
    return item ? item->data(ValueColumn) : QVariant();
}

Eigen::Vector3f getVector(const PropertyItem* group)
{
    return {getValue(group, 0).toFloat(), getValue(group, 1).toFloat(), getValue(group, 2).toFloat()};
}

/// Half up to two decimals.
double roundValue(float value)
{
    return std::floor(static_cast<double>(value * 100.0F) + 0.5) / 100.0;
}

/// Bank, heading and attitude in degrees.
Eigen::Vector3f toAngles(const Eigen::Matrix3f& rotation)
{
    const Eigen::AngleAxisf turn(rotation);
    const Eigen::Vector3f axis = turn.axis().normalized();
    const float x = axis.x();
    const float y = axis.y();
    const float z = axis.z();
    const float s = std::sin(turn.angle());
    const float t = 1 - std::cos(turn.angle());
    const float p = x * y * t + z * s;
    if (std::abs(p) > Pole) {
        const float side = p > 0 ? 1.0F : -1.0F;
        const float heading = 2 * std::atan2(x * std::sin(turn.angle() / 2), std::cos(turn.angle() / 2));
        return DegreesPerRadian * Eigen::Vector3f(0, side * heading, side * QuarterTurn);
    }
    const float heading = std::atan2(y * s - x * z * t, 1 - (y * y + z * z) * t);
    const float attitude = std::asin(p);
    const float bank = std::atan2(x * s - y * z * t, 1 - (x * x + z * z) * t);
    return DegreesPerRadian * Eigen::Vector3f(bank, heading, attitude);
}

/// From bank, heading and attitude in degrees.
Eigen::AngleAxisf toTurn(const Eigen::Vector3f& degrees)
{
    const Eigen::Vector3f half = degrees * RadiansPerDegree * 0.5F;
    const float c1 = std::cos(half.y());
    const float s1 = std::sin(half.y());
    const float c2 = std::cos(half.z());
    const float s2 = std::sin(half.z());
    const float c3 = std::cos(half.x());
    const float s3 = std::sin(half.x());
    const float w = c1 * c2 * c3 - s1 * s2 * s3;
    const Eigen::Vector3f axis(c1 * c2 * s3 + s1 * s2 * c3, s1 * c2 * c3 + c1 * s2 * s3,
                               c1 * s2 * c3 - s1 * c2 * s3);
    const float angle = 2 * std::acos(std::clamp(w, -1.0F, 1.0F)); // rounding may leave the range
    if (axis.squaredNorm() < NoAxis)
        return {angle, Eigen::Vector3f::UnitX()};
    return {angle, axis / axis.norm()};
}

/// A stream whose numbers have no decimal comma, whatever the locale.
std::ostringstream makeStream()
{
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    return stream;
}

} // namespace

QtPropertiesModel::QtPropertiesModel(QStringList headers, QObject* parent) :
    QAbstractItemModel(parent), HCE::EventBase(nullptr), rootItem(new PropertyItem(headers.size()))
{
    using namespace boost::placeholders;
    for (int column = 0; column < headers.size(); ++column)
        rootItem->setData(column, headers[column]);
    createFixedRows();

    registerHandler(HCE::EventType("ObjectSelected"),
                    boost::bind(&QtPropertiesModel::handleObjectSelected, this, _1));
    registerHandler(HCE::EventType("NodeTransformationUpdate"),
                    boost::bind(&QtPropertiesModel::handleNodeTransformationUpdate, this, _1));
    connect(this, SIGNAL(sceneSelection()), this, SLOT(createProperties()));
    connect(this, SIGNAL(nodeUpdate()), this, SLOT(fillProperties()));
}

QtPropertiesModel::~QtPropertiesModel()
{
    HCE::EventBase::setEventManager(nullptr);
}

QVariant QtPropertiesModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::EditRole))
        return {};
    return getItem(index)->data(index.column());
}

Qt::ItemFlags QtPropertiesModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    if (getItem(index)->isEditable(index.column()))
        return Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsEnabled;
    return Qt::ItemIsEnabled;
}

QVariant QtPropertiesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return rootItem->data(section);
}

QModelIndex QtPropertiesModel::index(int row, int column, const QModelIndex& parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column, getItem(parent)->child(row));
}

QModelIndex QtPropertiesModel::parent(const QModelIndex& index) const
{
    return index.isValid() ? getIndex(getItem(index)->parent(), NameColumn) : QModelIndex();
}

int QtPropertiesModel::rowCount(const QModelIndex& parent) const
{
    return parent.column() > NameColumn ? 0 : getItem(parent)->childCount();
}

int QtPropertiesModel::columnCount(const QModelIndex& /*parent*/) const
{
    return rootItem->columnCount();
}

bool QtPropertiesModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    PropertyItem* item = getItem(index);
    if (role != Qt::EditRole || !item->setData(index.column(), value))
        return false;
    PendingGroup group{shownNode, makeWrite(item->parent()), isBeingEdited(item->parent())};
    {
        const std::lock_guard<std::mutex> lock(pendingLock);
        if (group.isBeingEdited)
            ++unwrittenCount;
        pendingGroups.push_back(std::move(group));
    }
    emit dataChanged(index, index);
    return true;
}

bool QtPropertiesModel::setHeaderData(int section, Qt::Orientation orientation, const QVariant& value,
                                      int role)
{
    if (orientation != Qt::Horizontal || role != Qt::EditRole || !rootItem->setData(section, value))
        return false;
    emit headerDataChanged(orientation, section, section);
    return true;
}

bool QtPropertiesModel::insertColumns(int position, int count, const QModelIndex& parent)
{
    if (position < 0 || position > columnCount() || count < 1)
        return false;
    beginInsertColumns(parent, position, position + count - 1);
    rootItem->insertColumns(position, count);
    endInsertColumns();
    return true;
}

bool QtPropertiesModel::removeColumns(int position, int count, const QModelIndex& parent)
{
    if (position < 0 || count < 1 || count > columnCount() - position)
        return false;
    beginRemoveColumns(parent, position, position + count - 1);
    rootItem->removeColumns(position, count);
    endRemoveColumns();
    return true;
}

bool QtPropertiesModel::insertRows(int position, int count, const QModelIndex& parent)
{
    if (position < 0 || position > rowCount(parent) || count < 1 || parent.column() > NameColumn)
        return false;
    beginInsertRows(parent, position, position + count - 1);
    getItem(parent)->insertChildren(position, count, columnCount());
    endInsertRows();
    return true;
}

bool QtPropertiesModel::removeRows(int position, int count, const QModelIndex& parent)
{
    if (position < 0 || count < 1 || count > rowCount(parent) - position)
        return false;
    beginRemoveRows(parent, position, position + count - 1);
    if (!parent.isValid())
        forgetGroups(position, count);
    getItem(parent)->removeChildren(position, count);
    endRemoveRows();
    return true;
}

void QtPropertiesModel::beginValueEdit(const QModelIndex& index)
{
    if (editInProgress)
        return;
    editInProgress = true;
    editIndex = index;
    const PropertyItem* group = getItem(index)->parent();
    if (group && group == translationItem)
        translationBefore = getVector(group);
    else if (group && group == rotationItem)
        rotationBefore = getVector(group);
}

void QtPropertiesModel::commitValueEdit()
{
    if (!std::exchange(editInProgress, false))
        return;
    const QModelIndex index = std::exchange(editIndex, QPersistentModelIndex());
    const PropertyItem* group = index.isValid() ? getItem(index)->parent() : nullptr;
    if (!group || index.row() > 2 || (group != translationItem && group != rotationItem))
        return;
    const int axis = index.row();
    const float value = getValue(group, axis).toFloat();
    if (group == translationItem)
        announceTranslation(axis, value - translationBefore[axis]);
    else
        announceRotation(axis, value - rotationBefore[axis]);
}

int QtPropertiesModel::getShownCount() const
{
    return shownCount;
}

void QtPropertiesModel::setSceneManager(boost::shared_ptr<HS::SceneManager> newSceneManager)
{
    if (newSceneManager)
        boost::atomic_store(&sceneManager, std::move(newSceneManager));
}

bool QtPropertiesModel::update()
{
    std::deque<PendingGroup> groups;
    {
        const std::lock_guard<std::mutex> lock(pendingLock);
        groups.swap(pendingGroups);
    }
    const bool isAny = !groups.empty();
    int writtenCount = 0;
    while (!groups.empty()) {
        const PendingGroup group = std::move(groups.front());
        groups.pop_front();
        if (group.node && group.write && boost::atomic_load(&node))
            group.write(*group.node);
        if (group.isBeingEdited)
            ++writtenCount;
    }
    const std::lock_guard<std::mutex> lock(pendingLock);
    unwrittenCount -= writtenCount;
    return isAny;
}

void QtPropertiesModel::createProperties()
{
    auto selected = boost::atomic_load(&node);
    if (selected != shownNode) {
        commitValueEdit(); // still of the old node; whoever hears of it may select yet another one
        selected = boost::atomic_load(&node);
    }
    const bool isAnother = std::exchange(shownNode, selected) != selected;
    if (isAnother)
        ++shownCount;
    if (isAnother || !areInstanceRowsHeld()) {
        removeInstanceRows(lightsItem);
        removeInstanceRows(camerasItem);
        createInstanceRows();
    }
    fillProperties();
}

void QtPropertiesModel::fillProperties()
{
    Cells cells;
    if (shownNode)
        fillFromNode(cells);
    else
        fillWithoutNode(cells);
    for (const QModelIndex cell : cells)
        if (cell.isValid())
            emit dataChanged(cell, cell);
}

void QtPropertiesModel::handleObjectSelected(const HCE::Event& event)
{
    const auto scene = boost::atomic_load(&sceneManager);
    if (!scene)
        return;
    boost::atomic_store(&node, scene->getNodeByID(event.getEventData().getArg(1)));
    emit sceneSelection();
}

void QtPropertiesModel::handleNodeTransformationUpdate(const HCE::Event& event)
{
    const auto selected = boost::atomic_load(&node);
    if (selected && selected->getID() == event.getEventData().getArg(1))
        emit nodeUpdate();
}

void QtPropertiesModel::createFixedRows()
{
    idItem = createGroup("ID", {});
    translationItem = createGroup("Translation", axisNames);
    rotationItem = createGroup("Rotation", axisNames);
    scaleItem = createGroup("Scale", axisNames);
    layersItem = createGroup("Layers", layerLabels);
    lightsItem = createGroup("Lights", {});
    camerasItem = createGroup("Cameras", {});
}

PropertyItem* QtPropertiesModel::createGroup(const char* name, const std::vector<const char*>& rows)
{
    const int position = rootItem->childCount();
    rootItem->insertChildren(position, 1, rootItem->columnCount());
    PropertyItem* group = rootItem->child(position);
    group->setData(NameColumn, name);
    group->insertChildren(0, static_cast<int>(rows.size()), rootItem->columnCount());
    for (int row = 0; row < group->childCount(); ++row)
        group->child(row)->setData(NameColumn, rows[static_cast<std::size_t>(row)]);
    return group;
}

void QtPropertiesModel::createInstanceRows()
{
    if (!shownNode)
        return;
    const int lightCount = static_cast<int>(shownNode->getInstanceLightCount());
    for (int i = 0; i < lightCount; ++i)
        insertInstanceRow(lightsItem, i, 1);
    const int cameraCount = static_cast<int>(shownNode->getInstanceCameraCount());
    for (int i = 0; i < cameraCount; ++i)
        insertInstanceRow(camerasItem, i, static_cast<int>(lensNames.size()));
}

/// An open editor, or the current cell of a view, holds on to a light's or camera's value, and the rows are
/// those of the node shown still.
bool QtPropertiesModel::areInstanceRowsHeld() const
{
    if (!shownNode || !lightsItem || !camerasItem)
        return false;
    if (static_cast<int>(shownNode->getInstanceLightCount()) != lightsItem->childCount() ||
        static_cast<int>(shownNode->getInstanceCameraCount()) != camerasItem->childCount())
        return false;
    const QModelIndexList held = persistentIndexList();
    return std::any_of(held.begin(), held.end(), [](const QModelIndex& index) {
        return index.column() == ValueColumn && index.parent().parent().isValid();
    });
}

/// Goes in front of the others although it is announced behind them, with one row too many, on purpose.
void QtPropertiesModel::insertInstanceRow(PropertyItem* group, int announcedRow, int valueCount)
{
    if (!group)
        return;
    beginInsertRows(getIndex(group, NameColumn), announcedRow, announcedRow + 1);
    group->insertChildren(0, 1, columnCount());
    group->child(0)->insertChildren(0, valueCount, columnCount());
    endInsertRows();
}

/// Announces one row more than there is, on purpose, even if there is none.
void QtPropertiesModel::removeInstanceRows(PropertyItem* group)
{
    if (!group)
        return;
    beginRemoveRows(getIndex(group, NameColumn), 0, group->childCount());
    group->removeChildren(0, group->childCount());
    endRemoveRows();
}

void QtPropertiesModel::forgetGroups(int position, int count)
{
    for (PropertyItem** group :
         {&idItem, &translationItem, &rotationItem, &scaleItem, &layersItem, &lightsItem, &camerasItem}) {
        const int row = *group ? (*group)->childNumber() : -1;
        if (row >= position && row < position + count)
            *group = nullptr;
    }
}

void QtPropertiesModel::fillFromNode(Cells& cells)
{
    fillCell(idItem, ValueColumn, QString::fromStdString(shownNode->getID()), false, cells);
    fillVector(translationItem, shownNode->getTranslation().vector(), cells);
    fillVector(rotationItem, toAngles(shownNode->getRotation().topLeftCorner<3, 3>()), cells);
    fillVector(scaleItem, shownNode->getScale(), cells);
    fillLayers(cells);
    fillLight(cells);
    fillCamera(cells);
}

void QtPropertiesModel::fillWithoutNode(Cells& cells)
{
    const QVariant emptyText(QStringLiteral(""));
    fillCell(idItem, ValueColumn, emptyText, false, cells);
    for (const PropertyItem* group : {translationItem, rotationItem, scaleItem, layersItem})
        for (int row = 0; group && row < group->childCount(); ++row)
            fillCell(group->child(row), ValueColumn, emptyText, false, cells);
    for (PropertyItem* group : {lightsItem, camerasItem})
        if (group && group->childCount() > 0)
            removeInstanceRows(group);
}

void QtPropertiesModel::fillVector(PropertyItem* group, const Eigen::Vector3f& values, Cells& cells)
{
    if (!group || isAheadOfItsNode(group))
        return;
    for (int axis = 0; axis < 3; ++axis)
        fillCell(group->child(axis), ValueColumn, roundValue(values[axis]), true, cells);
}

void QtPropertiesModel::fillLayers(Cells& cells)
{
    if (!layersItem || isAheadOfItsNode(layersItem))
        return;
    for (int row = 0; row < LayerCount; ++row)
        fillCell(layersItem->child(row), ValueColumn, shownNode->inLayer(layerNames[row]), true, cells);
}

/// All lights go into the first row, one over the other, on purpose: the last one's values stay.
void QtPropertiesModel::fillLight(Cells& cells)
{
    PropertyItem* row = lightsItem ? lightsItem->child(0) : nullptr;
    if (!row || isAheadOfItsNode(row))
        return;
    for (unsigned int i = shownNode->getInstanceLightCount(); i-- > 0;) {
        const auto light = shownNode->getInstanceLight(i);
        if (!light)
            continue;
        const Eigen::Vector3f color = light->getColor();
        const QVariant value = QColor::fromRgbF(color.x(), color.y(), color.z(), 1);
        fillCell(row, NameColumn, QString::fromStdString(light->getID()), false, cells);
        fillCell(row->child(0), NameColumn, "color", false, cells);
        fillCell(row->child(0), ValueColumn, value, true, cells);
        return;
    }
}

/// As with the lights, the last camera's values stay in the first row.
void QtPropertiesModel::fillCamera(Cells& cells)
{
    PropertyItem* row = camerasItem ? camerasItem->child(0) : nullptr;
    if (!row || isAheadOfItsNode(row))
        return;
    for (unsigned int i = shownNode->getInstanceCameraCount(); i-- > 0;) {
        const auto camera = shownNode->getInstanceCamera(i);
        if (!camera)
            continue;
        const std::array<float, 3> values{camera->getZNear(), camera->getZFar(), camera->getYFov()};
        fillCell(row, NameColumn, QString::fromStdString(camera->getID()), false, cells);
        for (std::size_t lens = 0; lens < values.size(); ++lens) {
            PropertyItem* item = row->child(static_cast<int>(lens));
            fillCell(item, NameColumn, lensNames[lens], false, cells);
            fillCell(item, ValueColumn, static_cast<double>(values[lens]), true, cells);
        }
        return;
    }
}

void QtPropertiesModel::fillCell(PropertyItem* item, int column, const QVariant& value, bool editable,
                                 Cells& cells)
{
    if (!item || !item->setData(column, value))
        return;
    item->setEditable(column, editable);
    cells.emplace_back(getIndex(item, column));
}

QtPropertiesModel::GroupWrite QtPropertiesModel::makeWrite(const PropertyItem* group) const
{
    if (!group || !group->parent())
        return {};
    const Eigen::Vector3f values = getVector(group);
    if (group == translationItem)
        return [values](HS::Node& target) { target.setTranslation(Eigen::Translation3f(values)); };
    if (group == rotationItem)
        return [values](HS::Node& target) { target.setRotation(Eigen::Affine3f(toTurn(values))); };
    if (group == scaleItem)
        return [values](HS::Node& target) { target.setScale(values); };
    if (group == layersItem)
        return makeLayersWrite();
    if (group->parent() == camerasItem)
        return makeCamerasWrite();
    if (group->parent() == lightsItem)
        return makeLightsWrite();
    return {};
}

QtPropertiesModel::GroupWrite QtPropertiesModel::makeLayersWrite() const
{
    std::array<bool, LayerCount> isMember{};
    for (int row = 0; row < LayerCount; ++row)
        isMember[static_cast<std::size_t>(row)] = getValue(layersItem, row).toBool();
    return [isMember](HS::Node& target) {
        for (std::size_t row = 0; row < isMember.size(); ++row)
            if (isMember[row])
                target.addToLayer(layerNames[row]);
            else
                target.removeFromLayer(layerNames[row]);
    };
}

/// Writes all lights, the blank rows' too, on purpose.
QtPropertiesModel::GroupWrite QtPropertiesModel::makeLightsWrite() const
{
    std::vector<QColor> colors;
    for (int row = 0; row < lightsItem->childCount(); ++row)
        colors.push_back(getValue(lightsItem->child(row), 0).value<QColor>());
    return [colors](HS::Node& target) {
        for (std::size_t i = 0; i < colors.size(); ++i)
            if (const auto light = target.getInstanceLight(static_cast<unsigned int>(i)))
                light->setColor(static_cast<float>(colors[i].red()) / 255,
                                static_cast<float>(colors[i].green()) / 255,
                                static_cast<float>(colors[i].blue()) / 255);
    };
}

/// Writes all cameras, the blank rows' too, on purpose.
QtPropertiesModel::GroupWrite QtPropertiesModel::makeCamerasWrite() const
{
    std::vector<std::array<double, 3>> lenses;
    for (int row = 0; row < camerasItem->childCount(); ++row) {
        const PropertyItem* item = camerasItem->child(row);
        lenses.push_back(
            {getValue(item, 0).toDouble(), getValue(item, 1).toDouble(), getValue(item, 2).toDouble()});
    }
    return [lenses](HS::Node& target) {
        for (std::size_t i = 0; i < lenses.size(); ++i) {
            const auto camera = target.getInstanceCamera(static_cast<unsigned int>(i));
            if (!camera)
                continue;
            camera->setZNear(static_cast<float>(lenses[i][0]));
            camera->setZFar(static_cast<float>(lenses[i][1]));
            camera->setYFov(static_cast<float>(lenses[i][2]));
        }
    };
}

void QtPropertiesModel::announceTranslation(int axis, float difference)
{
    const auto scene = boost::atomic_load(&sceneManager);
    if (!scene || !shownNode || difference == 0)
        return;
    Eigen::Vector3f change = Eigen::Vector3f::Zero();
    change[axis] = difference;
    auto text = makeStream();
    text << shownNode->getID() << ',' << change;
    scene->triggerEvent("TranslationAction", text.str());
}

void QtPropertiesModel::announceRotation(int axis, float degrees)
{
    const auto scene = boost::atomic_load(&sceneManager);
    if (!scene || !shownNode || degrees == 0)
        return;
    const Eigen::AngleAxisf turn(degrees * RadiansPerDegree, Eigen::Vector3f::Unit(axis));
    const Eigen::Matrix3f matrix = turn.toRotationMatrix();
    auto text = makeStream();
    text.precision(9);
    text << shownNode->getID() << ',';
    for (const float number : matrix.reshaped()) // column by column
        text << number << ' ';
    scene->triggerEvent("RotationAction", text.str());
}

bool QtPropertiesModel::isBeingEdited(const PropertyItem* group) const
{
    return editInProgress && editIndex.isValid() && getItem(editIndex)->parent() == group;
}

/// A value that is being typed would otherwise be overwritten by the node's, which is older.
bool QtPropertiesModel::isAheadOfItsNode(const PropertyItem* group) const
{
    if (!isBeingEdited(group))
        return false;
    const std::lock_guard<std::mutex> lock(pendingLock);
    return unwrittenCount > 0;
}

PropertyItem* QtPropertiesModel::getItem(const QModelIndex& index) const
{
    return index.isValid() ? static_cast<PropertyItem*>(index.internalPointer()) : rootItem.get();
}

QModelIndex QtPropertiesModel::getIndex(PropertyItem* item, int column) const
{
    return item && item != rootItem.get() ? createIndex(item->childNumber(), column, item) : QModelIndex();
}

} // namespace halvern::qt
