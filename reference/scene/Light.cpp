#include "reference/scene/LightPrivate.h"

namespace halvern::scene {

Light::Light(std::string id) : d(std::make_unique<Private>(std::move(id))) {}

Light::~Light() = default;

std::string Light::getID() const
{
    return d->id;
}

Eigen::Vector3f Light::getColor() const
{
    std::lock_guard lock(d->mutex);
    return d->color;
}

void Light::setColor(float red, float green, float blue)
{
    {
        std::lock_guard lock(d->mutex);
        d->color = {red, green, blue};
    }
    d->scenes.mark(SceneChanges::LightValues);
}

void setLightSource(Light& light, LightSource source)
{
    auto& data = Internals::of(light);
    {
        std::lock_guard lock(data.mutex);
        data.source = source;
    }
    data.scenes.mark(SceneChanges::LightValues);
}

LightSource getLightSource(const Light& light)
{
    const auto& data = Internals::of(light);
    std::lock_guard lock(data.mutex);
    return data.source;
}

} // namespace halvern::scene
