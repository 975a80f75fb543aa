#include "reference/engine/ShadowMap.h"

#include "reference/engine/DrawPass.h"
#include "reference/engine/LightSet.h"
#include "reference/engine/LiveRenderTarget.h"
#include "reference/engine/OsgMath.h"
#include "reference/engine/Projection.h"
#include "reference/engine/SceneMirror.h"
#include "reference/engine/ShaderFeatures.h"
#include "reference/engine/View.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <cmath>

namespace halvern::engine {

using Kind = scene::LightSource::Kind;

namespace {

constexpr double widestAngle = 140 * M_PI / 180;

Eigen::Affine3d lookAlong(const Eigen::Vector3d& eye, const Eigen::Vector3d& direction)
{
    const Eigen::Vector3d z = -direction.normalized();
    const Eigen::Vector3d x = z.unitOrthogonal();
    Eigen::Affine3d toEye = Eigen::Affine3d::Identity();
    toEye.linear().row(0) = x;
    toEye.linear().row(1) = z.cross(x);
    toEye.linear().row(2) = z;
    return toEye * Eigen::Translation3d(-eye);
}

Eigen::AlignedBox3d boundsIn(const Eigen::Affine3d& toEye, const Eigen::AlignedBox3d& box)
{
    const Eigen::Vector3d center = toEye * box.center();
    const Eigen::Vector3d half = toEye.linear().cwiseAbs() * (box.sizes() / 2);
    return {center - half, center + half};
}

} // namespace

ShadowMap::ShadowMap() : target(boost::make_shared<LiveRenderTarget>()) {}

void ShadowMap::release()
{
    depth.reset();
    target->setTextureID(0);
    rendered = false;
}

void ShadowMap::update(const SceneLight& light, const SceneMirror& mirror, DrawPass& pass, osg::State& state,
                       osg::StateSet* depthState)
{
    const Projection projection = project(light, mirror.getCasterBounds());
    if (rendered && casterVersion == mirror.getCasterVersion() && projection == drawn)
        return;
    if (!depth)
        depth = std::make_unique<RenderTarget>(RenderTarget::Kind::ShadowDepth);
    depth->resize({shadowMapSize, shadowMapSize});
    depth->bind(state);
    draw(projection, mirror, pass, state, depthState);
    const Eigen::Matrix4d toUnit = (Eigen::Translation3d(0.5, 0.5, 0.5) * Eigen::Scaling(0.5)).matrix();
    worldToMap = toUnit * projection.toClip * projection.toEye.matrix();
    texel = projection.texel;
    drawn = projection;
    casterVersion = mirror.getCasterVersion();
    target->setTextureID(depth->textureID(state));
    rendered = true;
}

ShadowMap::Projection ShadowMap::project(const SceneLight& light, const Eigen::AlignedBox3d& casters)
{
    const double radius = std::max(casters.diagonal().norm() / 2, 1e-6);
    if (light.source.kind == Kind::Directional) {
        const Eigen::Affine3d toEye = lookAlong(casters.center(), light.direction);
        const Eigen::AlignedBox3d seen = boundsIn(toEye, casters);
        const Eigen::Vector3d half = (seen.sizes() / 2).cwiseMax(radius * 1e-3) * 1.01;
        return {toEye, orthographic(half.x(), half.y(), -half.z(), half.z()),
                2 * std::max(half.x(), half.y()) / shadowMapSize};
    }
    const Eigen::Vector3d toCasters = casters.center() - light.position;
    const double distance = toCasters.norm();
    Eigen::Vector3d direction = light.direction;
    double angle = 2 * light.source.outerCone;
    if (light.source.kind == Kind::Point) {
        direction = distance > 1e-9 ? toCasters / distance : light.direction;
        angle = distance > radius ? 2 * std::asin(radius / distance) : widestAngle;
    }
    angle = std::clamp(angle, 0.02, widestAngle);
    const Eigen::Affine3d toEye = lookAlong(light.position, direction);
    const Eigen::AlignedBox3d seen = boundsIn(toEye, casters);
    const double zFar = std::max(-seen.min().z() * 1.01, radius * 0.01);
    const double zNear = std::max(-seen.max().z() * 0.99, zFar * 0.002);
    const double texel = 2 * std::tan(angle / 2) * std::max(distance, radius * 0.1) / shadowMapSize;
    return {toEye, perspective(angle, 1, zNear, zFar), texel};
}

void ShadowMap::draw(const Projection& projection, const SceneMirror& mirror, DrawPass& pass,
                     osg::State& state, osg::StateSet* depthState)
{
    const Frustum frustum(projection.toClip * projection.toEye.matrix());
    pass.begin(state, depth->size(), projection.toClip, depthState, GL_DEPTH_BUFFER_BIT);
    for (const SceneMirror::Surface& surface : mirror.getSurfaces()) {
        if (!surface.castsShadow || !frustum.touches(surface.bounds))
            continue;
        const Eigen::Affine3d toEye = projection.toEye * mirror.getEntries()[surface.entry].world;
        pass.add(surface.geometry, toOsgMatrix(toEye.matrix()), 0, nullptr, nullptr);
    }
    pass.draw();
}

} // namespace halvern::engine
