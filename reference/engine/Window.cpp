#include "engine/window/Window.h"

#include "engine/fx/FXManager.h"
#include "engine/fx/FXPipeline.h"
#include "engine/scene/Camera.h"
#include "engine/scene/CameraInstance.h"
#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "engine/scenegraph/RenderSceneGraph.h"
#include "reference/engine/CameraControl.h"
#include "reference/engine/LightSet.h"
#include "reference/engine/LiveRenderTarget.h"
#include "reference/engine/NativeContext.h"
#include "reference/engine/Picker.h"
#include "reference/engine/Renderer.h"
#include "reference/engine/SceneMirror.h"
#include "reference/engine/WindowEvents.h"
#include "reference/engine/WindowLayout.h"
#include "reference/engine/fx/EffectLibrary.h"
#include "reference/engine/fx/EffectMessages.h"
#include "reference/engine/fx/SceneEffect.h"
#include "reference/scene/AnimationCamera.h"
#include "reference/scene/CameraPose.h"

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>

#include <optional>
#include <vector>

namespace halvern::engine::window {

namespace {

/// Keeps the full-screen effects of the window.
class Pipeline : public fx::FXPipeline
{
public:
    void pushBack(boost::shared_ptr<fx::FXSceneEffect> effect) override
    {
        if (const auto stage = boost::dynamic_pointer_cast<fx::SceneEffect>(effect))
            stages.push_back(stage);
    }

    fx::SceneEffects stages;
};

/// The scene in the window, with its lights.
class WindowScene : public scenegraph::RenderSceneGraph
{
public:
    explicit WindowScene(boost::shared_ptr<LightSet> newLights) : lights(newLights) {}

    boost::shared_ptr<light::LightManager> getLightManager() override { return lights; }

private:
    const boost::shared_ptr<LightSet> lights;
};

} // namespace

struct Window::Private : ControlledScene
{
    Private(boost::shared_ptr<core::event::EventManager> eventManager, std::string name);

    boost::optional<Eigen::Vector3d> getPointAt(Eigen::Vector2i point) override;
    Eigen::AlignedBox3d getBounds() override;
    Eigen::AlignedBox3d getSelectionBounds() override;
    void click(Eigen::Vector2i point) override;

    void reloadEffects();
    void syncScene();
    void activateCamera(const std::string& sid);
    void followCamera();
    bool tellView(const std::optional<scene::CameraPlace>& place);
    std::optional<scene::CameraPlace> placeOfView() const;
    void makeFXManager();
    void answer(const PickRequest& request);
    void forgetScene();
    int getSelectedEntry() const;
    boost::optional<PickHit> pickAt(Eigen::Vector2i point) const;
    PickRay rayAt(Eigen::Vector2i point) const;
    std::string idOf(const PickHit& hit) const;

    const std::string name;
    const boost::shared_ptr<WindowEvents> events;
    const boost::shared_ptr<FrameCounts> counts = boost::make_shared<FrameCounts>();
    const boost::shared_ptr<LiveRenderTarget> colorRenderTarget = boost::make_shared<LiveRenderTarget>();
    const boost::shared_ptr<Pipeline> pipeline = boost::make_shared<Pipeline>();
    const boost::shared_ptr<logic::CameraInputHandler> inputHandler = boost::make_shared<ViewInputHandler>();
    const boost::shared_ptr<LightSet> lights = boost::make_shared<LightSet>();
    const boost::shared_ptr<WindowScene> renderScene = boost::make_shared<WindowScene>(lights);
    ViewCamera camera;
    const boost::shared_ptr<CameraControl> control = boost::make_shared<CameraControl>(camera, *this);
    boost::shared_ptr<ILayout> layout;
    boost::shared_ptr<fx::FXManager> fxManager;
    Eigen::Vector2i size = Eigen::Vector2i::Ones();

    boost::shared_ptr<scene::SceneManager> sceneManager;
    boost::shared_ptr<fx::EffectLibrary> effects; // from the first update with a scene
    boost::shared_ptr<scene::CameraInstance> activeCamera;
    boost::weak_ptr<scene::Node> selected;
    std::unique_ptr<SceneMirror> mirror; // from the first update with a scene
    std::unique_ptr<Renderer> renderer;  // from init; its context is that of all OpenGL names here
};

Window::Private::Private(boost::shared_ptr<core::event::EventManager> eventManager, std::string newName) :
    name(newName),
    events(boost::make_shared<WindowEvents>(eventManager)),
    layout(boost::make_shared<WindowLayout>(events, counts))
{}

boost::optional<Eigen::Vector3d> Window::Private::getPointAt(Eigen::Vector2i point)
{
    if (const auto hit = pickAt(point))
        return rayAt(point).at(hit->depth);
    return {};
}

Eigen::AlignedBox3d Window::Private::getBounds()
{
    return mirror ? mirror->getBounds() : Eigen::AlignedBox3d();
}

Eigen::AlignedBox3d Window::Private::getSelectionBounds()
{
    const int entry = getSelectedEntry();
    return entry < 0 ? Eigen::AlignedBox3d() : mirror->getBounds(entry);
}

void Window::Private::click(Eigen::Vector2i point)
{
    const auto hit = pickAt(point);
    events->triggerEvent("ObjectSelected", (hit ? idOf(*hit) : "") + ", Window");
}

void Window::Private::reloadEffects()
{
    if (!effects)
        effects = fx::EffectLibrary::of(sceneManager);
    for (const std::string& id : effects->takeChanged()) {
        try {
            for (const std::string& message : effects->reload(id))
                fx::showEffectError(*events, message);
            events->triggerEvent("EffectReloaded", id);
        } catch (const fx::EffectError& error) {
            fx::showEffectError(*events, error.what());
        }
    }
}

void Window::Private::syncScene()
{
    if (!sceneManager)
        return;
    if (!mirror)
        mirror = std::make_unique<SceneMirror>(sceneManager);
    mirror->update();
    lights->update(*mirror);
}

void Window::Private::activateCamera(const std::string& sid)
{
    for (unsigned int i = 0; auto instance = sceneManager->getCameraInstanceAt(i); ++i) {
        if (instance->getSID() != sid)
            continue;
        activeCamera = instance;
        camera.reset();
        return;
    }
}

void Window::Private::followCamera()
{
    if (!activeCamera)
        activeCamera = sceneManager->getCameraInstanceAt(0);
    if (!activeCamera || !activeCamera->getNode() || !activeCamera->getCamera()) {
        if (camera.isFollowing())
            camera.frame(mirror->getBounds());
        tellView({});
        return;
    }
    const scene::Camera& lens = *activeCamera->getCamera();
    const Eigen::Affine3d pose(getCameraPose(lens).matrix().cast<double>());
    camera.follow(mirror->getWorld(*activeCamera->getNode()) * pose,
                  {lens.getZNear(), lens.getZFar(), lens.getYFov()});
    if (tellView(placeOfView()))
        camera.reset(); // the animations moved the camera to where the user looks from
}

/// Lets the animations record where the user looks from. Whether they moved the active camera there.
bool Window::Private::tellView(const std::optional<scene::CameraPlace>& place)
{
    const auto animations = sceneManager ? sceneManager->getAnimationManager() : nullptr;
    return animations && scene::setView(*animations, place);
}

/// Where the active camera's node would have to stand to look as the user does; nothing if it stands there.
std::optional<scene::CameraPlace> Window::Private::placeOfView() const
{
    if (camera.isFollowing())
        return {};
    const auto node = activeCamera->getNode();
    const int entry = mirror->findEntry(node.get());
    const int parent = entry < 0 ? -1 : mirror->getEntries()[entry].parent;
    const Eigen::Affine3d toParent =
        parent < 0 ? Eigen::Affine3d::Identity() : mirror->getEntries()[parent].world.inverse();
    if (!toParent.matrix().allFinite())
        return {};
    const Eigen::Isometry3d pose = getCameraPose(*activeCamera->getCamera()).cast<double>();
    const Eigen::Affine3d wanted(toParent.linear() * camera.getAxes() * pose.linear().transpose());
    const Eigen::Matrix3d turn = wanted.rotation();
    const Eigen::Vector3d eyeInNode = node->getScale().cast<double>().cwiseProduct(pose.translation());
    return scene::CameraPlace{node, (toParent * camera.getEye() - turn * eyeInNode).cast<float>(),
                              Eigen::Quaternionf(Eigen::Matrix3f(turn.cast<float>()))};
}

void Window::Private::makeFXManager()
{
    fxManager = boost::make_shared<fx::FXManager>(sceneManager, events->getEventManager());
}

void Window::Private::answer(const PickRequest& request)
{
    const auto hit = pickAt({request.x, request.y});
    const std::string place =
        hit ? idOf(*hit) + ", " + std::to_string(hit->index) + ", 0" : std::string(", , ");
    events->triggerEvent("ObjectPicked", place + ", " + std::to_string(request.x) + ", " +
                                             std::to_string(request.y) + ", " + request.tag);
}

void Window::Private::forgetScene()
{
    tellView({});
    mirror.reset();
    effects.reset();
    lights->clear();
    activeCamera.reset();
    selected.reset();
    camera.reset();
}

int Window::Private::getSelectedEntry() const
{
    const auto node = selected.lock();
    return mirror && node ? mirror->findEntry(node.get()) : -1;
}

boost::optional<PickHit> Window::Private::pickAt(Eigen::Vector2i point) const
{
    if (!mirror)
        return {};
    return pick(*mirror, rayAt(point));
}

PickRay Window::Private::rayAt(Eigen::Vector2i point) const
{
    // Through the middle of the pixel: hosts count y from the bottom edge up to the pixel's upper edge.
    return camera.getRay({point.x() + 0.5, point.y() - 0.5}, mirror->getBounds());
}

std::string Window::Private::idOf(const PickHit& hit) const
{
    return mirror->getEntries()[hit.entry].node->getID();
}

Window::Window(boost::shared_ptr<core::event::EventManager> eventManager, std::string name) :
    d(new Private(eventManager, name))
{}

Window::~Window()
{
    d->events->setEventManager({});
    d->control->detach();
    // What was drawn with the renderer's context goes before the context does.
    d->forgetScene();
    d->colorRenderTarget->setTextureID(0);
}

void Window::init()
{
    if (!d->fxManager)
        d->makeFXManager();
    if (!d->renderer && currentNativeContext())
        d->renderer = std::make_unique<Renderer>();
}

void Window::update()
{
    const WindowEvents::Pending pending = d->events->take();
    d->camera.resize(d->size);
    if (d->sceneManager) {
        d->reloadEffects();
        d->syncScene();
        if (pending.selection)
            d->selected = d->sceneManager->getNodeByID(*pending.selection);
        if (pending.activeCamera)
            d->activateCamera(*pending.activeCamera);
        d->control->advance();
        d->followCamera();
    }
    for (const PickRequest& request : pending.picks)
        d->answer(request);
}

void Window::render()
{
    if (d->renderer && !d->renderer->isContextCurrent()) {
        if (!currentNativeContext())
            return;
        // The view moved to another context: what was made in the old one is of no use here.
        d->mirror.reset();
        d->lights->clear();
        d->renderer.reset();
        d->syncScene();
    }
    init();
    if (!d->renderer)
        return;
    d->camera.resize(d->size);
    d->renderer->draw(d->camera.getView(d->getBounds()), d->mirror.get(), *d->lights, d->getSelectedEntry(),
                      d->pipeline->stages);
    for (const std::string& error : d->renderer->takeErrors())
        fx::showEffectError(*d->events, error);
    if (d->renderer->takeReadsTime() && d->effects)
        d->effects->requestFrame();
    d->counts->set(d->renderer->getTriangleCount(), d->renderer->getVertexCount());
    d->colorRenderTarget->setTextureID(d->renderer->getColorTexture());
}

void Window::resize(Eigen::Vector2i size)
{
    d->size = size.cwiseMax(1);
}

void Window::attach(boost::shared_ptr<scene::SceneManager> sceneManager)
{
    d->forgetScene();
    d->sceneManager = sceneManager;
    if (d->fxManager)
        d->makeFXManager();
    if (sceneManager)
        d->events->triggerEvent("SceneAttached", "");
}

void Window::setEventManager(boost::shared_ptr<core::event::EventManager> eventManager)
{
    d->events->setEventManager(eventManager);
    if (d->fxManager)
        d->makeFXManager();
}

boost::shared_ptr<ILayout> Window::getLayout()
{
    return d->layout;
}

bool Window::setLayout(boost::shared_ptr<ILayout> layout)
{
    if (!layout)
        return false;
    d->layout = layout;
    return true;
}

boost::shared_ptr<logic::LogicManager> Window::getLogicManager()
{
    return d->control;
}

boost::shared_ptr<logic::CameraInputHandler> Window::getCameraInputHandler()
{
    return d->inputHandler;
}

boost::shared_ptr<scene::SceneManager> Window::getSceneManager()
{
    return d->sceneManager;
}

boost::shared_ptr<fx::FXManager> Window::getFXManager()
{
    return d->fxManager;
}

boost::shared_ptr<fx::FXPipeline> Window::getFXPipeline()
{
    return d->pipeline;
}

boost::shared_ptr<scenegraph::IRenderScene> Window::getRenderScene()
{
    return d->renderScene;
}

boost::shared_ptr<fx::FXRenderTarget> Window::getColorRenderTarget()
{
    return d->colorRenderTarget;
}

std::string Window::getName() const
{
    return d->name;
}

Eigen::Vector2i Window::getSize() const
{
    return d->size;
}

} // namespace halvern::engine::window
