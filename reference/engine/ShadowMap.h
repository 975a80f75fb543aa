#pragma once

#include "reference/engine/RenderTarget.h"

#include <boost/shared_ptr.hpp>

#include <Eigen/Geometry>

#include <memory>

namespace halvern::engine {

class DrawPass;
class LiveRenderTarget;
class SceneLight;
class SceneMirror;

/// What a light sees of the surfaces that cast shadows.
///
/// A directional light has an orthographic map round all casters, a spot light one of its cone. A point
/// light has a single perspective map towards the casters, at most 140 degrees wide: casters all round it
/// throw shadows only on that side.
class ShadowMap
{
public:
    ShadowMap();

    bool isRendered() const { return rendered; }

    /// Names the texture while there is one.
    boost::shared_ptr<LiveRenderTarget> getTarget() const { return target; }

    /// Draws the map if the casters or the light changed since the last time. Binds a framebuffer then.
    /// `depthState` is what the casters are drawn with.
    void update(const SceneLight& light, const SceneMirror& mirror, DrawPass& pass, osg::State& state,
                osg::StateSet* depthState);

    /// Gives the OpenGL objects back; a host may hold the light for longer than there is a context for it.
    void release();

    /// World to map coordinates, 0 to 1.
    const Eigen::Matrix4d& toMap() const { return worldToMap; }

    /// About how much of the world a texel covers where the casters are.
    double texelSize() const { return texel; }

    osg::Texture2D* texture() const { return depth->texture(); }

private:
    struct Projection
    {
        Eigen::Affine3d toEye;
        Eigen::Matrix4d toClip;
        double texel;
        bool operator==(const Projection& other) const
        {
            return toEye.matrix() == other.toEye.matrix() && toClip == other.toClip;
        }
    };

    static Projection project(const SceneLight& light, const Eigen::AlignedBox3d& casters);
    void draw(const Projection& projection, const SceneMirror& mirror, DrawPass& pass, osg::State& state,
              osg::StateSet* depthState);

    std::unique_ptr<RenderTarget> depth; // from the first update
    const boost::shared_ptr<LiveRenderTarget> target;
    bool rendered = false;
    unsigned int casterVersion = 0;
    Projection drawn{};
    Eigen::Matrix4d worldToMap = Eigen::Matrix4d::Identity();
    double texel = 0;
};

} // namespace halvern::engine
