#include "tests/engine/Stage.h"

#include "engine/fx/FXRenderTarget.h"

#include <boost/make_shared.hpp>

#include <atomic>
#include <cmath>

namespace halvern::test {

namespace {

void addFace(scene::Mesh& mesh, const Eigen::Vector3f& center, const Eigen::Vector3f& right,
             const Eigen::Vector3f& up)
{
    const uint32_t first = mesh.positions.size();
    for (const Eigen::Vector2f& corner :
         {Eigen::Vector2f(0, 1), Eigen::Vector2f(1, 1), Eigen::Vector2f(1, 0), Eigen::Vector2f(0, 0)}) {
        mesh.positions.push_back(center + right * (2 * corner.x() - 1) + up * (1 - 2 * corner.y()));
        mesh.normals.push_back(right.cross(up).normalized());
        mesh.texCoords.push_back(corner);
    }
    for (uint32_t index : {0, 1, 2, 0, 2, 3})
        mesh.indices.push_back(first + index);
}

void findBounds(scene::Mesh& mesh)
{
    for (const Eigen::Vector3f& position : mesh.positions)
        mesh.bounds.extend(position);
}

MaterialPtr makeMaterial(const QColor& color, bool unlit)
{
    static std::atomic<int> count{0};
    auto material =
        boost::make_shared<scene::Material>("material" + std::to_string(++count), scene::StandardEffectID);
    auto values = std::make_shared<scene::StandardMaterial>();
    values->baseColor = {float(color.redF()), float(color.greenF()), float(color.blueF()),
                         float(color.alphaF())};
    values->unlit = unlit;
    setStandardMaterial(*material, values);
    return material;
}

} // namespace

MeshPtr boxMesh(float half)
{
    auto mesh = std::make_shared<scene::Mesh>();
    const Eigen::Vector3f x(half, 0, 0);
    const Eigen::Vector3f y(0, half, 0);
    const Eigen::Vector3f z(0, 0, half);
    addFace(*mesh, z, x, y);
    addFace(*mesh, -z, -x, y);
    addFace(*mesh, x, -z, y);
    addFace(*mesh, -x, z, y);
    addFace(*mesh, y, x, -z);
    addFace(*mesh, -y, x, z);
    findBounds(*mesh);
    return mesh;
}

MeshPtr groundMesh(float half)
{
    auto mesh = std::make_shared<scene::Mesh>();
    addFace(*mesh, Eigen::Vector3f::Zero(), {half, 0, 0}, {0, 0, -half});
    findBounds(*mesh);
    return mesh;
}

MaterialPtr unlitMaterial(const QColor& color)
{
    return makeMaterial(color, true);
}

MaterialPtr litMaterial(const QColor& color)
{
    return makeMaterial(color, false);
}

NodePtr makeNode(const std::string& id, MeshPtr mesh, MaterialPtr material)
{
    auto node = boost::make_shared<scene::Node>(id, id);
    if (mesh)
        setGeometries(*node, {mesh});
    if (material)
        node->setMaterial(material, 0, 0);
    return node;
}

void moveTo(scene::Node& node, float x, float y, float z)
{
    node.setTranslation(Eigen::Translation3f(x, y, z));
}

void lookFrom(scene::Node& node, Eigen::Vector3f eye, Eigen::Vector3f target)
{
    Eigen::Matrix3f axes;
    axes.col(2) = (eye - target).normalized();
    const bool steep = std::abs(axes(1, 2)) > 0.99f;
    const Eigen::Vector3f up = steep ? Eigen::Vector3f(0, 0, -1) : Eigen::Vector3f(0, 1, 0);
    axes.col(0) = up.cross(axes.col(2)).normalized();
    axes.col(1) = axes.col(2).cross(axes.col(0));
    node.setTranslation(Eigen::Translation3f(eye));
    Eigen::Affine3f rotation = Eigen::Affine3f::Identity();
    rotation.linear() = axes;
    node.setRotation(rotation);
}

Scene::Scene() :
    events(boost::make_shared<SynchronousEventManager>()),
    manager(boost::make_shared<scene::SceneManager>(events)),
    root(makeNode("root"))
{
    manager->setRoot(root);
    addCamera("camera", {0, 0, 5}, {0, 0, 0});
}

NodePtr Scene::add(const std::string& id, MeshPtr mesh, MaterialPtr material)
{
    const NodePtr node = makeNode(id, mesh, material);
    root->addChildNode(node);
    return node;
}

NodePtr Scene::addCamera(const std::string& sid, Eigen::Vector3f eye, Eigen::Vector3f target)
{
    const NodePtr node = add(sid);
    lookFrom(*node, eye, target);
    const auto camera = boost::make_shared<scene::Camera>(sid + ".lens");
    node->addInstanceCamera(camera);
    manager->addCameraInstance(boost::make_shared<scene::CameraInstance>(sid, node, camera));
    return node;
}

boost::shared_ptr<scene::Light> Scene::addLight(const std::string& id, scene::LightSource source)
{
    auto light = boost::make_shared<scene::Light>(id);
    setLightSource(*light, source);
    add(id + ".node")->addInstanceLight(light);
    return light;
}

Stage::Stage(Eigen::Vector2i size) : window(std::make_unique<engine::window::Window>(scene.events, "window"))
{
    window->resize(size);
    window->attach(scene.manager);
}

QImage Stage::draw()
{
    window->update();
    window->render();
    return readTexture(window->getColorRenderTarget()->getTextureID());
}

QColor Stage::draw(int right, int up)
{
    return pixel(draw(), right, up);
}

QColor pixel(const QImage& image, int right, int up)
{
    return image.pixelColor(image.width() / 2 + right, image.height() / 2 - up);
}

bool isBackground(const QColor& color)
{
    return isNear(color, QColor::fromRgbF(0.16, 0.17, 0.19), 1);
}

bool isNear(const QColor& a, const QColor& b, int tolerance)
{
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

} // namespace halvern::test
