#include "reference/engine/LightSet.h"

#include "engine/scene/Light.h"
#include "reference/engine/LiveRenderTarget.h"
#include "reference/engine/SceneMirror.h"
#include "reference/engine/ShaderFeatures.h"

#include <boost/make_shared.hpp>

#include <algorithm>

namespace halvern::engine {

SceneLight::SceneLight(boost::shared_ptr<scene::Light> newLight, const scene::Node* newNode) :
    light(newLight), node(newNode)
{}

bool SceneLight::isInited()
{
    return shadow.isRendered();
}

boost::shared_ptr<fx::FXRenderTarget> SceneLight::getShadowMap()
{
    if (!shadow.isRendered())
        return {};
    return shadow.getTarget();
}

bool SceneLight::isOf(const scene::Light* otherLight, const scene::Node* otherNode) const
{
    return light.get() == otherLight && node == otherNode;
}

void SceneLight::read(const Eigen::Affine3d& toWorld)
{
    source = getLightSource(*light);
    color = light->getColor() * source.intensity;
    if (!color.allFinite())
        color.setZero();
    position = toWorld * source.position.cast<double>();
    direction = (toWorld.linear() * source.direction.cast<double>()).normalized();
    if (!position.allFinite())
        position.setZero();
    if (!direction.allFinite() || direction.isZero())
        direction = -Eigen::Vector3d::UnitZ();
}

unsigned int LightSet::getLightCount()
{
    return lights.size();
}

boost::shared_ptr<light::RenderLight> LightSet::getLightAt(unsigned int index)
{
    return index < lights.size() ? lights[index] : nullptr;
}

void LightSet::update(const SceneMirror& mirror)
{
    const auto& places = mirror.getLights();
    std::vector<boost::shared_ptr<SceneLight>> current;
    for (size_t i = 0; i < std::min<size_t>(places.size(), maxLights); ++i) {
        const SceneMirror::Entry& entry = mirror.getEntries()[places[i].entry];
        current.push_back(take(places[i].light, entry.node));
        current.back()->read(entry.world);
    }
    clear(); // what is left has gone from the scene
    lights.swap(current);
}

void LightSet::clear()
{
    for (const boost::shared_ptr<SceneLight>& light : lights)
        if (light)
            light->shadow.release();
    lights.clear();
}

boost::shared_ptr<SceneLight> LightSet::take(boost::shared_ptr<scene::Light> light, const scene::Node* node)
{
    for (boost::shared_ptr<SceneLight>& known : lights)
        if (known && known->isOf(light.get(), node))
            return std::move(known);
    return boost::make_shared<SceneLight>(light, node);
}

} // namespace halvern::engine
