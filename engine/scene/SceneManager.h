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
    /// An empty scene, without a root. The event manager may be empty. It answers "SelectObject" with
    /// "ObjectSelected", both with the same arguments.
    explicit SceneManager(boost::shared_ptr<core::event::EventManager> eventManager);
    ~SceneManager() override;

    /** @{ */
    /// The top of the scene graph; empty for a scene without one. Another root is announced by
    /// "SceneTopologyUpdate" in the next cycle.
    virtual boost::shared_ptr<Node> getRoot();
    virtual void setRoot(boost::shared_ptr<Node> root);
    /** @} */

    /** @{ */
    /// For people; it may be empty. Nothing announces a change.
    virtual std::string getSceneName();
    virtual void setSceneName(std::string name);
    /** @} */

    /// With equal IDs the first in depth-first pre-order.
    virtual boost::shared_ptr<Node> getNodeByID(std::string id);

    /// All nodes in depth-first pre-order, the root first.
    virtual std::vector<boost::shared_ptr<Node>> getNodeArray();

    /// An ID that no call returned before; it has no comma.
    virtual std::string generateID();

    /** @{ */
    /// The cameras that can be looked through, in the order of adding; a window begins with the first. An
    /// empty pointer, and one that is in the list, is not added.
    virtual unsigned int getCameraInstanceCount();
    virtual boost::shared_ptr<CameraInstance> getCameraInstanceAt(unsigned int index);
    virtual void addCameraInstance(boost::shared_ptr<CameraInstance> camera);
    /** @} */

    /// In the order of adding.
    virtual std::vector<boost::shared_ptr<Material>> getMaterialList();

    /// With equal IDs the first that was added.
    virtual boost::shared_ptr<Material> getMaterialWithID(std::string id);

    /// Announced by "SceneUpdate" with "MaterialList". An empty pointer is ignored; one that is in the list
    /// is announced but not added.
    virtual void addMaterial(boost::shared_ptr<Material> material);

    /// The first that was added with exactly that file name.
    virtual boost::shared_ptr<Effect> getEffectByFilename(std::string fileName);

    /// The scene only keeps it: engine::fx::FXManager::addEffect reads it. An empty pointer, and one that the
    /// scene has, is ignored.
    virtual void addEffect(boost::shared_ptr<Effect> effect);

    /** @{ */
    /// The lists of render steps, in the order of adding. An empty pointer, and one that is in the list, is
    /// not added.
    virtual boost::shared_ptr<Evaluator> getEvaluatorAt(unsigned int index);
    virtual void addEvaluator(boost::shared_ptr<Evaluator> evaluator);
    /** @} */

    /// The same object for as long as the scene lives; never empty here.
    virtual boost::shared_ptr<AnimationManager> getAnimationManager();

    /// All animations in the order of adding.
    virtual std::vector<boost::shared_ptr<Animation>> getAnimationsLibrary();

    /// Appends an animation; the current one stays. An empty pointer, and one that is in the library, is
    /// ignored.
    virtual void addAnimation(boost::shared_ptr<Animation> animation);

    /** @{ */
    /// Takes one animation, or all, out of the library. What is played goes on until
    /// AnimationManager::setAnimation. A bad index does nothing.
    virtual void removeAnimation(unsigned int index);
    virtual void removeAllAnimations();
    /** @} */

    /// Hands itself to the controller, on the caller's thread and with no lock held, before this returns
    /// and before its first update(). A second add of the same controller hands itself over again but
    /// enters it once. An empty pointer is ignored.
    virtual void addSceneController(boost::shared_ptr<ISceneController> controller);

    /// A barrier: when it returns, no update() of that controller runs or will start; called from inside
    /// that very update() it does not wait.
    virtual void removeSceneController(boost::shared_ptr<ISceneController> controller);

    /// One cycle: the animation's next step, each controller's update() once, then the events about what
    /// changed since the last cycle: "NodeTransformationUpdate" for each node that moved,
    /// "SceneTopologyUpdate", and "SyncScene" for anything at all. Returns true if any controller returned
    /// true.
    virtual bool update();

    /// Starts the scene thread, which runs update() sixty times a second and skips a cycle when it is late.
    /// It runs no longer than the manager lives. A second call does nothing.
    virtual void start();

    /// Ends the scene thread and waits for a running cycle, except when called from inside it. start() may
    /// follow.
    virtual void stop();

private:
    friend struct Internals;
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::scene

/// The scene namespace as the declarations of the widgets spell it.
namespace HS = halvern::scene;
