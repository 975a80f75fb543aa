#pragma once

#include "engine/Export.h"
#include "engine/core/event/EventBase.h"
#include "engine/scene/ISceneController.h"

#include <boost/smart_ptr/enable_shared_from_this.hpp>

#include <memory>
#include <string>
#include <vector>

namespace halvern::scene {

class Animation;
class AnimationManager;
class CameraInstance;
class Effect;
class Evaluator;
class Material;
class Node;

/// Owner of a scene: its graph, cameras, materials, effects and animations, and the cycle in which
/// controllers work on it. Held by a boost::shared_ptr. Every operation may be called from any thread;
/// lookups of unknown IDs and indices return empty pointers.
class HALVERN_SCENE_API SceneManager : public core::event::EventBase,
                                       public boost::enable_shared_from_this<SceneManager>
{
public:
    /// An empty scene. The event manager may be empty.
    explicit SceneManager(boost::shared_ptr<core::event::EventManager> eventManager);
    ~SceneManager() override;

    virtual boost::shared_ptr<Node> getRoot();
    virtual void setRoot(boost::shared_ptr<Node> root);
    virtual std::string getSceneName();
    virtual void setSceneName(std::string name);

    /// With equal IDs the first in depth-first pre-order.
    virtual boost::shared_ptr<Node> getNodeByID(std::string id);

    /// All nodes in depth-first pre-order, the root first.
    virtual std::vector<boost::shared_ptr<Node>> getNodeArray();

    /// An ID that no call returned before; it has no comma.
    virtual std::string generateID();

    virtual unsigned int getCameraInstanceCount();
    virtual boost::shared_ptr<CameraInstance> getCameraInstanceAt(unsigned int index);
    virtual void addCameraInstance(boost::shared_ptr<CameraInstance> camera);

    virtual std::vector<boost::shared_ptr<Material>> getMaterialList();
    virtual boost::shared_ptr<Material> getMaterialWithID(std::string id);

    /// Announced by "SceneUpdate" with "MaterialList".
    virtual void addMaterial(boost::shared_ptr<Material> material);

    virtual boost::shared_ptr<Effect> getEffectByFilename(std::string fileName);
    virtual void addEffect(boost::shared_ptr<Effect> effect);

    virtual boost::shared_ptr<Evaluator> getEvaluatorAt(unsigned int index);
    virtual void addEvaluator(boost::shared_ptr<Evaluator> evaluator);

    virtual boost::shared_ptr<AnimationManager> getAnimationManager();

    /// All animations in the order of adding.
    virtual std::vector<boost::shared_ptr<Animation>> getAnimationsLibrary();
    virtual void addAnimation(boost::shared_ptr<Animation> animation);

    /// A bad index does nothing.
    virtual void removeAnimation(unsigned int index);
    virtual void removeAllAnimations();

    /// Hands itself to the controller, on the caller's thread and with no lock held, before this returns
    /// and before its first update(). A second add of the same controller hands itself over again but
    /// enters it once. An empty pointer is ignored.
    virtual void addSceneController(boost::shared_ptr<ISceneController> controller);

    /// A barrier: when it returns, no update() of that controller runs or will start; called from inside
    /// that very update() it does not wait.
    virtual void removeSceneController(boost::shared_ptr<ISceneController> controller);

    /// One cycle: each controller's update() once, then the events about what changed since the last
    /// cycle. Returns true if any controller returned true.
    virtual bool update();

    /// Starts and stops the scene thread, which runs update() sixty times a second and skips a cycle when
    /// it is late. stop() waits for a running cycle, except when called from inside it.
    virtual void start();
    virtual void stop();

private:
    friend struct Internals;
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::scene

/// The scene namespace as the declarations of the widgets spell it.
namespace HS = halvern::scene;
