#pragma once

#include "engine/core/event/EventManager.h"
#include "engine/scene/Camera.h"
#include "engine/scene/CameraInstance.h"
#include "engine/scene/Light.h"
#include "engine/scene/Material.h"
#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "engine/window/Window.h"
#include "reference/scene/LightSource.h"
#include "reference/scene/Mesh.h"
#include "reference/scene/StandardMaterial.h"
#include "tests/support/OffscreenContext.h"
#include "tests/support/SynchronousEventManager.h"

#include <QColor>
#include <QImage>

#include <memory>
#include <string>

namespace halvern::test {

using NodePtr = boost::shared_ptr<scene::Node>;
using MaterialPtr = boost::shared_ptr<scene::Material>;
using MeshPtr = std::shared_ptr<const scene::Mesh>;

/// A box round the origin with normals, texture coordinates and a side length of 2 * half.
MeshPtr boxMesh(float half = 1);

/// A square in the x-z plane, its normal upwards.
MeshPtr groundMesh(float half);

/// Shows its colour as it is, whatever the light.
MaterialPtr unlitMaterial(const QColor& color);
MaterialPtr litMaterial(const QColor& color);

/// Changes the values of a material in place.
template <class Change>
void changeMaterial(scene::Material& material, Change change)
{
    auto values = std::make_shared<scene::StandardMaterial>(*getStandardMaterial(material));
    change(*values);
    setStandardMaterial(material, values);
}

NodePtr makeNode(const std::string& id, MeshPtr mesh = {}, MaterialPtr material = {});
void moveTo(scene::Node& node, float x, float y, float z);

/// A transform that looks from one point to another.
void lookFrom(scene::Node& node, Eigen::Vector3f eye, Eigen::Vector3f target);

/// A scene with a root, and a camera at (0, 0, 5) that looks at the origin with a field of view of 45
/// degrees: the picture is about 4.14 high there.
struct Scene
{
    Scene();

    NodePtr add(const std::string& id, MeshPtr mesh = {}, MaterialPtr material = {});
    NodePtr addCamera(const std::string& sid, Eigen::Vector3f eye, Eigen::Vector3f target);
    boost::shared_ptr<scene::Light> addLight(const std::string& id, scene::LightSource source);

    const boost::shared_ptr<SynchronousEventManager> events;
    const boost::shared_ptr<scene::SceneManager> manager;
    const NodePtr root;
};

/// A window of 100 x 100 pixels that shows a scene, in a context of its own that is current.
struct Stage
{
    explicit Stage(Eigen::Vector2i size = {100, 100});

    /// The next frame.
    QImage draw();

    /// A pixel of the next frame, from the middle, y upwards.
    QColor draw(int right, int up);

    OffscreenContext context;
    Scene scene;
    std::unique_ptr<engine::window::Window> window;
};

/// A pixel, counted from the middle of the image, y upwards.
QColor pixel(const QImage& image, int right, int up);

bool isBackground(const QColor& color);

/// Whether two colours differ by no more than a rounding.
bool isNear(const QColor& a, const QColor& b, int tolerance = 3);

} // namespace halvern::test
