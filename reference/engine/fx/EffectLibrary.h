#pragma once

#include "engine/scene/ISceneController.h"
#include "reference/engine/fx/EffectFiles.h"
#include "reference/engine/fx/EffectMaterial.h"
#include "reference/engine/fx/LoadedEffect.h"

#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace halvern::scene {
class Effect;
class Material;
class SceneManager;
} // namespace halvern::scene

namespace halvern::engine::fx {

/// The effects and effect materials of a scene, shared by all windows that show it. As a controller of the
/// scene it looks at the effects' files on the scene thread; they are read again on the GUI thread.
class EffectLibrary : public scene::ISceneController
{
public:
    /// The library of a scene, made when it is first asked for; one of its own where there is no scene. It
    /// lives as long as the scene, or as somebody holds it.
    static boost::shared_ptr<EffectLibrary> of(const boost::shared_ptr<scene::SceneManager>& sceneManager);

    /// Reads the effect's file, and returns what is wrong with it though it can be used. Throws EffectError;
    /// the file is watched all the same, and the effect comes in when it is mended. GUI thread; with a
    /// context current the programs are tried out.
    std::vector<std::string> addEffect(const scene::Effect& effect);

    /// Empty for an unknown ID and for an effect that cannot be used. GUI thread.
    boost::shared_ptr<LoadedEffect> getEffect(const std::string& id);

    /// False for a material whose effect is unknown.
    bool addMaterial(const boost::shared_ptr<scene::Material>& material);

    /// A material that was added, or that is in the scene and has a known effect. Any thread.
    boost::shared_ptr<EffectMaterial> getMaterial(const std::string& id);

    /// The same for the renderer. Empty for the imported materials, which it knows by itself.
    boost::shared_ptr<EffectMaterial> getMaterial(const boost::shared_ptr<scene::Material>& material);

    /// What the imported materials are drawn with.
    std::shared_ptr<const EffectSyntax> getStandard() const { return standard->getSyntax(); }

    /// Reads the file again, likewise. Throws EffectError; then the effect stays what it was. GUI thread.
    std::vector<std::string> reload(const std::string& id);

    /// Whether files changed since the last call, and which effects are theirs. Any thread.
    std::vector<std::string> takeChanged();

    /// Asks for a frame in the scene's next cycle. For what changes with the time: what is not shown asks no
    /// more. Any thread.
    void requestFrame() { isFrameWanted = true; }

    void setSceneManager(boost::shared_ptr<scene::SceneManager> newSceneManager) override;

    /// Asks for the frame that is wanted, and looks at the files now and then.
    bool update() override;

private:
    struct Watched
    {
        std::string file;
        FileStamp read;   // when it was read
        FileStamp latest; // when it was last looked at
    };

    EffectLibrary();

    bool findChanges();
    boost::shared_ptr<LoadedEffect> find(const std::string& effectID) const;
    boost::shared_ptr<EffectMaterial> makeMaterial(const boost::shared_ptr<scene::Material>& material);
    std::shared_ptr<const EffectSyntax> read(const std::string& id);
    void watch(const std::string& id, const std::string& file);
    void refreshMaterials(const std::string& effectID);

    const boost::shared_ptr<LoadedEffect> standard;
    std::chrono::steady_clock::time_point nextLook; // scene thread
    std::atomic<bool> isFrameWanted{false};

    boost::weak_ptr<scene::SceneManager> sceneManager; // set once, before anybody has the library

    mutable std::mutex mutex; // guards what follows
    std::map<std::string, boost::shared_ptr<LoadedEffect>> effects;
    std::map<std::string, boost::shared_ptr<EffectMaterial>> materials;
    std::map<std::string, Watched> watched; // by effect ID
    std::vector<std::string> changed;
};

} // namespace halvern::engine::fx
