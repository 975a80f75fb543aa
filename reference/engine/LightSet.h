#pragma once

#include "engine/light/LightManager.h"
#include "engine/light/RenderLight.h"
#include "reference/engine/ShadowMap.h"
#include "reference/scene/LightSource.h"

#include <Eigen/Geometry>

#include <vector>

namespace halvern::scene {
class Light;
class Node;
} // namespace halvern::scene

namespace halvern::engine {

class SceneMirror;

/// A light at its place in the world.
class SceneLight : public light::RenderLight
{
public:
    SceneLight(boost::shared_ptr<scene::Light> light, const scene::Node* node);

    bool isInited() override;
    boost::shared_ptr<fx::FXRenderTarget> getShadowMap() override;

    bool isOf(const scene::Light* otherLight, const scene::Node* otherNode) const;

    /// Reads the light's values; `toWorld` is the transform of its node.
    void read(const Eigen::Affine3d& toWorld);

    scene::LightSource source; ///< with position and direction still those of the node
    Eigen::Vector3f color;     ///< with the intensity
    Eigen::Vector3d position;  ///< in the world
    Eigen::Vector3d direction; ///< in the world, of length 1
    ShadowMap shadow;

private:
    const boost::shared_ptr<scene::Light> light;
    const scene::Node* const node;
};

/// The lights of a scene that are used for rendering, at most maxLights.
class LightSet : public light::LightManager
{
public:
    unsigned int getLightCount() override;
    boost::shared_ptr<light::RenderLight> getLightAt(unsigned int index) override;

    /// Follows the scene; a light that stays keeps its object.
    void update(const SceneMirror& mirror);

    /// Forgets all lights and gives their OpenGL objects back.
    void clear();

    const std::vector<boost::shared_ptr<SceneLight>>& all() const { return lights; }

private:
    boost::shared_ptr<SceneLight> take(boost::shared_ptr<scene::Light> light, const scene::Node* node);

    std::vector<boost::shared_ptr<SceneLight>> lights;
};

} // namespace halvern::engine
