#pragma once

#include "engine/scene/Camera.h"
#include "engine/scene/Light.h"
#include "qt/QtPropertiesModel.h"
#include "tests/qt/ScenePanel.h"
#include "tests/support/SynchronousEventManager.h"

#include <QColor>

#include <ostream>
#include <vector>

namespace halvern::test {

/// Rows under the root, as a table of the properties has them.
enum PropertyGroup {
    IDGroup,
    TranslationGroup,
    RotationGroup,
    ScaleGroup,
    LayersGroup,
    LightsGroup,
    CamerasGroup
};

using ModelPtr = boost::shared_ptr<qt::QtPropertiesModel>;

inline boost::shared_ptr<scene::Light> addLight(scene::Node& node, const std::string& id, float red,
                                                float green, float blue)
{
    auto light = boost::make_shared<scene::Light>(id);
    light->setColor(red, green, blue);
    node.addInstanceLight(light);
    return light;
}

inline boost::shared_ptr<scene::Camera> addCamera(scene::Node& node, const std::string& id, float zNear,
                                                  float zFar, float yFov)
{
    auto camera = boost::make_shared<scene::Camera>(id);
    camera->setZNear(zNear);
    camera->setZFar(zFar);
    camera->setYFov(yFov);
    node.addInstanceCamera(camera);
    return camera;
}

/// The cell of a row under one of the groups; the group's own with a negative row.
inline QModelIndex cellOf(const QAbstractItemModel& model, int group, int row, int column = 1)
{
    return row < 0 ? model.index(group, column) : model.index(row, column, model.index(group, 0));
}

/// The cell of a value of a light or camera.
inline QModelIndex instanceCellOf(const QAbstractItemModel& model, int group, int row, int child,
                                  int column = 1)
{
    return model.index(child, column, model.index(row, 0, model.index(group, 0)));
}

inline void moveTo(scene::Node& node, float x, float y, float z)
{
    node.setTranslation(Eigen::Translation3f(x, y, z));
}

inline Eigen::Vector3f positionOf(const scene::Node& node)
{
    return node.getTranslation().vector();
}

/// A scene with the nodes "a" and "b", a manager that delivers at once and keeps every event, and a model
/// that takes part in both.
class PropertiesStage
{
public:
    PropertiesStage()
    {
        scene->setRoot(makeNode("root", {a, b}));
        model->setEventManager(events);
        scene->addSceneController(model);
    }
    ~PropertiesStage()
    {
        scene->removeSceneController(model);
        model->setEventManager(nullptr);
        scene->setEventManager(nullptr);
    }

    void select(const std::string& id) { events->triggerEvent("ObjectSelected", id + ", Window"); }

    QModelIndex cell(int group, int row, int column = 1) const { return cellOf(*model, group, row, column); }
    QModelIndex instance(int group, int row, int child, int column = 1) const
    {
        return instanceCellOf(*model, group, row, child, column);
    }
    QVariant value(int group, int row, int column = 1) const { return cell(group, row, column).data(); }
    QVariant instanceValue(int group, int row, int child, int column = 1) const
    {
        return instance(group, row, child, column).data();
    }

    /// The three values of a group.
    std::vector<double> values(int group) const
    {
        return {value(group, 0).toDouble(), value(group, 1).toDouble(), value(group, 2).toDouble()};
    }

    bool edit(int group, int row, const QVariant& newValue)
    {
        return model->setData(cell(group, row), newValue);
    }

    /// A whole edit, as an editor makes it.
    void change(int group, int row, const QVariant& newValue)
    {
        model->beginValueEdit(cell(group, row));
        edit(group, row, newValue);
        model->commitValueEdit();
    }

    std::vector<std::string> translations() const { return events->getData("TranslationAction"); }
    std::vector<std::string> rotations() const { return events->getData("RotationAction"); }
    std::size_t actionCount() const { return translations().size() + rotations().size(); }

    boost::shared_ptr<SynchronousEventManager> events = boost::make_shared<SynchronousEventManager>();
    NodePtr a = makeNode("a");
    NodePtr b = makeNode("b");
    ScenePtr scene = boost::make_shared<scene::SceneManager>(events);
    ModelPtr model = boost::make_shared<qt::QtPropertiesModel>(QStringList({"Property", "Value"}));
};

} // namespace halvern::test
