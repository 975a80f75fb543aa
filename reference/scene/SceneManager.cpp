#include "engine/scene/SceneManager.h"

#include "engine/scene/Animation.h"
#include "engine/scene/CameraInstance.h"
#include "engine/scene/Effect.h"
#include "engine/scene/Evaluator.h"
#include "reference/scene/AnimationManagerPrivate.h"
#include "reference/scene/ControllerList.h"
#include "reference/scene/MaterialPrivate.h"
#include "reference/scene/SceneThread.h"
#include "reference/scene/Topology.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <atomic>
#include <chrono>

namespace halvern::scene {

namespace event = core::event;

struct SceneManager::Private
{
    const std::shared_ptr<SceneLink> link = std::make_shared<SceneLink>();
    const std::shared_ptr<SceneChanges> changes = link->journal->makeReader();
    const boost::shared_ptr<AnimationManager> animationManager = boost::make_shared<AnimationManager>();
    ControllerList controllers;
    SceneThread thread;

    std::mutex mutex;             // guards what follows
    boost::shared_ptr<Node> root; // changed under the topology lock too
    std::string sceneName;
    std::vector<boost::shared_ptr<CameraInstance>> cameras;
    std::vector<boost::shared_ptr<Material>> materials;
    std::vector<boost::shared_ptr<Effect>> effects;
    std::vector<boost::shared_ptr<Evaluator>> evaluators;
    std::vector<boost::shared_ptr<Animation>> animations;

    template <class Object>
    boost::shared_ptr<Object> at(std::vector<boost::shared_ptr<Object>> Private::*list, unsigned int index)
    {
        std::lock_guard lock(mutex);
        return index < (this->*list).size() ? (this->*list)[index] : boost::shared_ptr<Object>();
    }

    template <class Object, class Matches>
    boost::shared_ptr<Object> find(std::vector<boost::shared_ptr<Object>> Private::*list, Matches matches)
    {
        std::lock_guard lock(mutex);
        for (const auto& object : this->*list) {
            if (matches(*object))
                return object;
        }
        return {};
    }

    /// Appends what is neither empty nor in the list already.
    template <class Object>
    void add(std::vector<boost::shared_ptr<Object>> Private::*list, const boost::shared_ptr<Object>& object)
    {
        if (!object)
            return;
        std::lock_guard lock(mutex);
        if (std::find((this->*list).begin(), (this->*list).end(), object) == (this->*list).end())
            (this->*list).push_back(object);
    }

    template <class Value>
    Value get(Value Private::*value)
    {
        std::lock_guard lock(mutex);
        return this->*value;
    }

    void replaceRoot(boost::shared_ptr<Node> newRoot);

    /// The camera that "ActiveCamera" names, or the first of all, is the one that animations take.
    void setActiveCamera(const boost::shared_ptr<CameraInstance>& camera);
};

void SceneManager::Private::replaceRoot(boost::shared_ptr<Node> newRoot)
{
    std::lock_guard topologyLock(topology::lock());
    {
        std::lock_guard lock(mutex);
        root.swap(newRoot);
    }
    if (newRoot)
        topology::leave(newRoot, link);
    if (root)
        topology::enter(root, link);
}

void SceneManager::Private::setActiveCamera(const boost::shared_ptr<CameraInstance>& camera)
{
    if (!camera)
        return;
    auto& animation = Internals::of(*animationManager);
    std::lock_guard lock(animation.mutex);
    animation.cameraNode = camera->getNode();
}

SceneManager::SceneManager(boost::shared_ptr<event::EventManager> eventManager) :
    EventBase(std::move(eventManager)), d(std::make_unique<Private>())
{
    Internals::of(*d->animationManager).link = d->link;
    registerHandler(event::EventType("SelectObject"), [this](event::Event selection) {
        triggerEvent("ObjectSelected", selection.getEventData().getData());
    });
    registerHandler(event::EventType("ActiveCamera"), [this](event::Event active) {
        const std::string sid = active.getEventData().getData();
        d->setActiveCamera(d->find(&Private::cameras, [&](auto& camera) { return camera.getSID() == sid; }));
    });
}

SceneManager::~SceneManager()
{
    SceneManager::setEventManager({});
    SceneManager::stop();
    d->replaceRoot({});
}

boost::shared_ptr<Node> SceneManager::getRoot()
{
    return d->get(&Private::root);
}

void SceneManager::setRoot(boost::shared_ptr<Node> root)
{
    const auto before = getRoot(); // released last, with no lock held
    d->replaceRoot(std::move(root));
    d->link->journal->markScene(SceneChanges::Root);
}

std::string SceneManager::getSceneName()
{
    return d->get(&Private::sceneName);
}

void SceneManager::setSceneName(std::string name)
{
    std::lock_guard lock(d->mutex);
    d->sceneName = std::move(name);
}

boost::shared_ptr<Node> SceneManager::getNodeByID(std::string id)
{
    auto found = d->link->index.find(id);
    if (found.isSure)
        return found.node;

    std::lock_guard topologyLock(topology::lock());
    boost::shared_ptr<Node> first;
    if (d->root) {
        topology::walk(d->root, [&](const boost::shared_ptr<Node>& node) {
            if (Internals::of(*node).id == id)
                first = node;
            return !first;
        });
    }
    return first;
}

std::vector<boost::shared_ptr<Node>> SceneManager::getNodeArray()
{
    std::vector<boost::shared_ptr<Node>> nodes;
    std::lock_guard topologyLock(topology::lock());
    if (d->root) {
        topology::walk(d->root, [&](const boost::shared_ptr<Node>& node) {
            nodes.push_back(node);
            return true;
        });
    }
    return nodes;
}

std::string SceneManager::generateID()
{
    static std::atomic<unsigned long> issued{0};
    for (;;) {
        std::string id = "id-" + std::to_string(++issued);
        if (!getNodeByID(id) && !getMaterialWithID(id))
            return id;
    }
}

unsigned int SceneManager::getCameraInstanceCount()
{
    std::lock_guard lock(d->mutex);
    return static_cast<unsigned int>(d->cameras.size());
}

boost::shared_ptr<CameraInstance> SceneManager::getCameraInstanceAt(unsigned int index)
{
    return d->at(&Private::cameras, index);
}

void SceneManager::addCameraInstance(boost::shared_ptr<CameraInstance> camera)
{
    d->add(&Private::cameras, camera);
    if (getCameraInstanceCount() == 1)
        d->setActiveCamera(camera);
    d->link->journal->markScene(SceneChanges::CameraList);
}

std::vector<boost::shared_ptr<Material>> SceneManager::getMaterialList()
{
    return d->get(&Private::materials);
}

boost::shared_ptr<Material> SceneManager::getMaterialWithID(std::string id)
{
    return d->find(&Private::materials, [&](auto& material) { return material.getMaterialID() == id; });
}

void SceneManager::addMaterial(boost::shared_ptr<Material> material)
{
    if (!material)
        return;
    Internals::of(*material).scenes.attach(d->link->journal);
    d->add(&Private::materials, material);
    d->link->journal->markScene(SceneChanges::MaterialList);
    triggerEvent("SceneUpdate", "MaterialList");
}

boost::shared_ptr<Effect> SceneManager::getEffectByFilename(std::string fileName)
{
    return d->find(&Private::effects, [&](auto& effect) { return effect.getFileName() == fileName; });
}

void SceneManager::addEffect(boost::shared_ptr<Effect> effect)
{
    d->add(&Private::effects, effect);
}

boost::shared_ptr<Evaluator> SceneManager::getEvaluatorAt(unsigned int index)
{
    return d->at(&Private::evaluators, index);
}

void SceneManager::addEvaluator(boost::shared_ptr<Evaluator> evaluator)
{
    d->add(&Private::evaluators, evaluator);
}

boost::shared_ptr<AnimationManager> SceneManager::getAnimationManager()
{
    return d->animationManager;
}

std::vector<boost::shared_ptr<Animation>> SceneManager::getAnimationsLibrary()
{
    return d->get(&Private::animations);
}

void SceneManager::addAnimation(boost::shared_ptr<Animation> animation)
{
    d->add(&Private::animations, animation);
    d->link->journal->markScene(SceneChanges::AnimationList);
}

void SceneManager::removeAnimation(unsigned int index)
{
    boost::shared_ptr<Animation> removed; // released after the lock
    {
        std::lock_guard lock(d->mutex);
        if (index >= d->animations.size())
            return;
        removed = d->animations[index];
        d->animations.erase(d->animations.begin() + index);
    }
    d->link->journal->markScene(SceneChanges::AnimationList);
}

void SceneManager::removeAllAnimations()
{
    std::vector<boost::shared_ptr<Animation>> removed; // released after the lock
    {
        std::lock_guard lock(d->mutex);
        d->animations.swap(removed);
    }
    d->link->journal->markScene(SceneChanges::AnimationList);
}

void SceneManager::addSceneController(boost::shared_ptr<ISceneController> controller)
{
    if (!controller)
        return;
    controller->setSceneManager(shared_from_this());
    d->controllers.add(std::move(controller));
}

void SceneManager::removeSceneController(boost::shared_ptr<ISceneController> controller)
{
    d->controllers.remove(controller);
}

bool SceneManager::update()
{
    const auto self = weak_from_this().lock(); // a controller may drop the last other reference
    Internals::of(*d->animationManager).advance(std::chrono::steady_clock::now());
    const bool changed = d->controllers.update();

    const auto batch = d->changes->take();
    bool topologyChanged = (batch.scene & SceneChanges::Root) != 0;
    for (const auto& node : batch.nodes) {
        if (node.changes & SceneChanges::Transform)
            triggerEvent("NodeTransformationUpdate", node.id);
        topologyChanged |= (node.changes & SceneChanges::Children) != 0;
    }
    if (topologyChanged)
        triggerEvent("SceneTopologyUpdate", "");
    if (!batch.empty())
        triggerEvent("SyncScene", "");
    return changed;
}

void SceneManager::start()
{
    d->thread.start([manager = boost::weak_ptr<SceneManager>(shared_from_this())] {
        const auto alive = manager.lock();
        if (alive)
            alive->update();
        return alive != nullptr;
    });
}

void SceneManager::stop()
{
    d->thread.stop();
}

std::shared_ptr<SceneChanges> readChanges(SceneManager& sceneManager)
{
    return Internals::of(sceneManager).link->journal->makeReader();
}

} // namespace halvern::scene
