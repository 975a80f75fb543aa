#include "reference/engine/fx/EffectLibrary.h"

#include "engine/scene/Effect.h"
#include "engine/scene/Material.h"
#include "engine/scene/SceneManager.h"
#include "reference/engine/NativeContext.h"
#include "reference/engine/fx/EffectCode.h"
#include "reference/engine/fx/StandardEffect.h"
#include "reference/scene/SceneChanges.h"
#include "reference/scene/StandardMaterial.h"

#include <boost/make_shared.hpp>

#include <algorithm>

namespace halvern::engine::fx {

namespace {

/// A file counts as changed when two looks in a row find it the same: then nobody is just writing it.
constexpr std::chrono::milliseconds lookInterval(200);

const char* const standardFile = "standard.fx";

using Registry = std::map<const scene::SceneManager*, boost::weak_ptr<EffectLibrary>>;

} // namespace

boost::shared_ptr<EffectLibrary> EffectLibrary::of(const boost::shared_ptr<scene::SceneManager>& sceneManager)
{
    if (!sceneManager)
        return boost::shared_ptr<EffectLibrary>(new EffectLibrary);
    static std::mutex registryMutex;
    static Registry registry;
    boost::shared_ptr<EffectLibrary> library;
    {
        const std::lock_guard<std::mutex> lock(registryMutex);
        for (auto it = registry.begin(); it != registry.end();)
            it = it->second.expired() ? registry.erase(it) : std::next(it);
        boost::weak_ptr<EffectLibrary>& known = registry[sceneManager.get()];
        library = known.lock();
        // One that outlived its scene is not this scene's, though the address is the same.
        if (library && library->sceneManager.lock() == sceneManager)
            return library;
        library.reset(new EffectLibrary);
        library->sceneManager = sceneManager;
        known = library;
    }
    sceneManager->addSceneController(library);
    return library;
}

EffectLibrary::EffectLibrary() :
    standard(boost::make_shared<LoadedEffect>(scene::StandardEffectID, getStandardEffect()))
{}

std::vector<std::string> EffectLibrary::addEffect(const scene::Effect& effect)
{
    watch(effect.getID(), findEffectFile(effect.getFileName()));
    return reload(effect.getID());
}

boost::shared_ptr<LoadedEffect> EffectLibrary::getEffect(const std::string& id)
{
    // It comes with the library and is there without a file; who asks for it may go on to change the file.
    if (id == scene::StandardEffectID)
        watch(id, findEffectFile(standardFile));
    return find(id);
}

boost::shared_ptr<LoadedEffect> EffectLibrary::find(const std::string& effectID) const
{
    if (effectID == scene::StandardEffectID)
        return standard;
    const std::lock_guard<std::mutex> lock(mutex);
    const auto it = effects.find(effectID);
    return it == effects.end() ? nullptr : it->second;
}

bool EffectLibrary::addMaterial(const boost::shared_ptr<scene::Material>& material)
{
    return makeMaterial(material) != nullptr;
}

boost::shared_ptr<EffectMaterial> EffectLibrary::getMaterial(const std::string& id)
{
    boost::shared_ptr<scene::SceneManager> scene;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        const auto it = materials.find(id);
        if (it != materials.end())
            return it->second;
        scene = sceneManager.lock();
    }
    const auto material = scene ? scene->getMaterialWithID(id) : nullptr;
    return material ? makeMaterial(material) : nullptr;
}

boost::shared_ptr<EffectMaterial>
EffectLibrary::getMaterial(const boost::shared_ptr<scene::Material>& material)
{
    if (!material || material->getEffectID() == scene::StandardEffectID)
        return {};
    return makeMaterial(material);
}

boost::shared_ptr<EffectMaterial>
EffectLibrary::makeMaterial(const boost::shared_ptr<scene::Material>& material)
{
    const std::string id = material->getMaterialID();
    const auto effect = find(material->getEffectID());
    if (!effect)
        return {};
    {
        const std::lock_guard<std::mutex> lock(mutex);
        const auto it = materials.find(id);
        if (it != materials.end())
            return it->second;
    }
    const auto made = boost::make_shared<EffectMaterial>(material, effect);
    const std::lock_guard<std::mutex> lock(mutex);
    return materials.emplace(id, made).first->second;
}

std::vector<std::string> EffectLibrary::reload(const std::string& id)
{
    if (id == scene::StandardEffectID)
        watch(id, findEffectFile(standardFile));
    const auto syntax = read(id);
    if (const auto effect = find(id)) {
        effect->setSyntax(syntax);
    } else {
        const std::lock_guard<std::mutex> lock(mutex);
        effects[id] = boost::make_shared<LoadedEffect>(id, syntax);
    }
    refreshMaterials(id);
    return findMissingPictures(*syntax);
}

std::shared_ptr<const EffectSyntax> EffectLibrary::read(const std::string& id)
{
    std::string file;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        file = watched[id].file;
    }
    // Before the text: what is written meanwhile is read again.
    const FileStamp stamp = getFileStamp(file);
    {
        const std::lock_guard<std::mutex> lock(mutex);
        watched[id].read = watched[id].latest = stamp;
    }
    const auto syntax = parseEffect(readEffectFile(file), file);
    if (currentNativeContext())
        tryPrograms(syntax);
    return syntax;
}

void EffectLibrary::watch(const std::string& id, const std::string& file)
{
    const FileStamp stamp = getFileStamp(file);
    const std::lock_guard<std::mutex> lock(mutex);
    watched.try_emplace(id, Watched{file, stamp, stamp});
}

void EffectLibrary::refreshMaterials(const std::string& effectID)
{
    std::vector<boost::shared_ptr<EffectMaterial>> known;
    boost::shared_ptr<scene::SceneManager> scene;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        scene = sceneManager.lock();
        for (const auto& [id, material] : materials)
            known.push_back(material);
    }
    for (const auto& material : known)
        if (material->getFXEffect()->getID() == effectID)
            material->adoptEffect();
    if (!scene)
        return;
    for (const auto& material : scene->getMaterialList())
        if (material->getEffectID() == effectID)
            markMaterialChanged(*material);
}

std::vector<std::string> EffectLibrary::takeChanged()
{
    const std::lock_guard<std::mutex> lock(mutex);
    return std::exchange(changed, {});
}

void EffectLibrary::setSceneManager(boost::shared_ptr<scene::SceneManager>) {}

bool EffectLibrary::update()
{
    const bool isWanted = isFrameWanted.exchange(false);
    if (!findChanges() && !isWanted)
        return false;
    if (const auto scene = sceneManager.lock())
        scene->triggerEvent("SyncScene", "");
    return false;
}

bool EffectLibrary::findChanges()
{
    const auto now = std::chrono::steady_clock::now();
    if (now < nextLook)
        return false;
    nextLook = now + lookInterval;

    std::map<std::string, Watched> looked;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        looked = watched;
    }
    bool found = false;
    for (const auto& [id, before] : looked) {
        const FileStamp stamp = getFileStamp(before.file);
        const bool isChanged = stamp != before.read && stamp == before.latest && stamp != FileStamp();
        if (stamp == before.latest && !isChanged)
            continue;
        const std::lock_guard<std::mutex> lock(mutex);
        Watched& file = watched[id];
        file.latest = stamp;
        if (!isChanged)
            continue;
        file.read = stamp;
        changed.push_back(id);
        found = true;
    }
    return found;
}

} // namespace halvern::engine::fx
