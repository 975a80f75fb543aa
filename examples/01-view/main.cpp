// A view with a cube: drag to orbit, turn the wheel to zoom.
#include "engine/core/event/EventManager.h"
#include "engine/scene/Light.h"
#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "qt/QtView.h"
#include "reference/scene/LightSource.h"
#include "reference/scene/Mesh.h"

#include <QApplication>
#include <QTimer>

#include <boost/make_shared.hpp>

#include <utility>

using namespace halvern;

namespace {

/// Two units wide, with a normal for each side.
std::shared_ptr<const scene::Mesh> makeCube()
{
    auto mesh = std::make_shared<scene::Mesh>();
    for (int side = 0; side < 6; ++side) {
        const float sign = side < 3 ? 1 : -1;
        const Eigen::Vector3f normal = sign * Eigen::Vector3f::Unit(side % 3);
        const Eigen::Vector3f u = Eigen::Vector3f::Unit((side + 1) % 3);
        const Eigen::Vector3f v = normal.cross(u);
        const uint32_t first = uint32_t(mesh->positions.size());
        for (const auto& [x, y] : {std::pair(-1, -1), {1, -1}, {1, 1}, {-1, 1}}) {
            mesh->positions.push_back(normal + x * u + y * v);
            mesh->normals.push_back(normal);
            mesh->bounds.extend(mesh->positions.back());
        }
        for (const uint32_t index : {0, 1, 2, 0, 2, 3})
            mesh->indices.push_back(first + index);
    }
    return mesh;
}

boost::shared_ptr<scene::SceneManager> makeScene(const boost::shared_ptr<HCE::EventManager>& events)
{
    auto light = boost::make_shared<scene::Light>("light");
    scene::LightSource source;
    source.kind = scene::LightSource::Kind::Head;
    scene::setLightSource(*light, source);

    auto cube = boost::make_shared<scene::Node>("cube", "Cube");
    scene::setGeometries(*cube, {makeCube()});
    cube->setRotation(Eigen::Affine3f(Eigen::AngleAxisf(0.6f, Eigen::Vector3f(1, 1, 0).normalized())));

    auto root = boost::make_shared<scene::Node>("root", "Scene");
    root->addInstanceLight(light);
    root->addChildNode(cube);

    auto sceneManager = boost::make_shared<scene::SceneManager>(events);
    sceneManager->setRoot(root);
    return sceneManager;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    const QApplication application(argc, argv);

    auto events = boost::make_shared<HCE::EventManager>(true);
    auto sceneManager = makeScene(events);

    qt::QtView view;
    view.setObjectName("Halvern_Rendering_QtView");
    view.setEventManager(events);
    view.resize(800, 600);
    view.show(); // makes the view's window, which the scene is shown in
    view.attach(sceneManager);
    sceneManager->start();

    // The engine asks for a frame when the scene changes; a camera in motion wants more.
    QTimer frames;
    QObject::connect(&frames, SIGNAL(timeout()), &view, SLOT(update()));
    frames.start(1000 / view.getUpdateFrequency());

    const int code = QApplication::exec();
    sceneManager->stop();
    return code;
}
