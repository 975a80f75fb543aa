#include "reference/scene/MaterialPrivate.h"
#include "reference/scene/SceneChanges.h"

namespace halvern::scene {

Material::Material(std::string id, std::string effectID) :
    d(std::make_unique<Private>(std::move(id), std::move(effectID)))
{}

Material::~Material() = default;

std::string Material::getMaterialID() const
{
    return d->id;
}

std::string Material::getEffectID() const
{
    return d->effectID;
}

void setStandardMaterial(Material& material, std::shared_ptr<const StandardMaterial> values)
{
    auto& data = Internals::of(material);
    {
        std::lock_guard lock(data.mutex);
        data.values.swap(values); // what was set before is released unlocked
    }
    markMaterialChanged(material);
}

void markMaterialChanged(const Material& material)
{
    Internals::of(material).scenes.mark(SceneChanges::MaterialValues);
}

std::shared_ptr<const StandardMaterial> getStandardMaterial(const Material& material)
{
    const auto& data = Internals::of(material);
    std::lock_guard lock(data.mutex);
    return data.values;
}

} // namespace halvern::scene
