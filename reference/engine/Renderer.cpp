#include "reference/engine/Renderer.h"

#include "reference/engine/GLStateGuard.h"
#include "reference/engine/LightSet.h"
#include "reference/engine/OsgMath.h"
#include "reference/engine/SceneMirror.h"

#include <GL/gl.h>

#include <osg/PolygonOffset>
#include <osg/Program>
#include <osg/Scissor>
#include <osgUtil/RenderStage>

namespace halvern::engine {

using Kind = scene::LightSource::Kind;

namespace {

const osg::Vec4f background(0.16f, 0.17f, 0.19f, 1);

void addSampler(osg::StateSet& state, const std::string& name, int unit)
{
    state.addUniform(new osg::Uniform(name.c_str(), unit));
}

osg::ref_ptr<osg::Uniform> addArray(osg::StateSet& state, osg::Uniform::Type type, const char* name, int size)
{
    osg::ref_ptr<osg::Uniform> uniform = new osg::Uniform(type, name, size);
    state.addUniform(uniform);
    return uniform;
}

LightSlot::Kind slotKind(Kind kind)
{
    switch (kind) {
    case Kind::Point:
        return LightSlot::Near;
    case Kind::Spot:
        return LightSlot::Spot;
    default:
        return LightSlot::Far;
    }
}

osg::ref_ptr<osg::StateSet> makeDepthState()
{
    osg::ref_ptr<osg::StateSet> state = new osg::StateSet;
    state->setMode(GL_DEPTH_TEST, osg::StateAttribute::ON);
    state->setAttributeAndModes(new osg::PolygonOffset(2, 4));
    // The outermost texels stay empty, so that outside of the map there is light; a border colour would
    // cost every lookup.
    state->setAttribute(new osg::Scissor(1, 1, shadowMapSize - 2, shadowMapSize - 2));
    state->setAttribute(makeProgram("void main() { gl_Position = ftransform(); }", "void main() {}"));
    return state;
}

} // namespace

Renderer::Renderer() : frameState(new osg::StateSet), depthState(makeDepthState())
{
    mainPass.stage().setClearColor(background);
    frameState->setMode(GL_DEPTH_TEST, osg::StateAttribute::ON);
    addSampler(*frameState, "baseColorMap", TextureUnit::BaseColor);
    addSampler(*frameState, "metalRoughMap", TextureUnit::MetalRough);
    addSampler(*frameState, "normalMap", TextureUnit::Normal);
    addSampler(*frameState, "emissiveMap", TextureUnit::Emissive);
    addSampler(*frameState, "occlusionMap", TextureUnit::Occlusion);
    for (int i = 0; i < maxShadows; ++i)
        addSampler(*frameState, "shadowMap" + std::to_string(i), TextureUnit::FirstShadow + i);
    lightPosition = addArray(*frameState, osg::Uniform::FLOAT_VEC3, "lightPosition", maxLights);
    lightColor = addArray(*frameState, osg::Uniform::FLOAT_VEC3, "lightColor", maxLights);
    lightFalloff = addArray(*frameState, osg::Uniform::FLOAT_VEC3, "lightFalloff", maxLights);
    lightAxis = addArray(*frameState, osg::Uniform::FLOAT_VEC3, "lightAxis", maxLights);
    lightCone = addArray(*frameState, osg::Uniform::FLOAT_VEC2, "lightCone", maxLights);
    shadowMatrix = addArray(*frameState, osg::Uniform::FLOAT_MAT4, "shadowMatrix", maxShadows);
    shadowOffset = addArray(*frameState, osg::Uniform::FLOAT, "shadowOffset", maxShadows);
    up = addArray(*frameState, osg::Uniform::FLOAT_VEC3, "up", 1);
}

Renderer::~Renderer() = default;

void Renderer::draw(const View& view, const SceneMirror* mirror, const LightSet& lights, int selected)
{
    const GLStateGuard guard;
    prepareState();
    osg::State& state = *context->getState();
    if (mirror)
        drawShadows(*mirror, lights);
    target.resize(view.size);
    target.bind(state);
    triangles = vertices = 0;
    if (mirror) {
        setFrameState(view, lights);
        drawSurfaces(view, *mirror);
        if (selected >= 0)
            outline.draw(state, target, view, *mirror, selected);
    } else {
        mainPass.begin(state, view.size, view.projection, frameState.get(),
                       GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
        mainPass.draw();
    }
    finishState();
    osg::flushAllDeletedGLObjects(state.getContextID());
}

unsigned int Renderer::getColorTexture() const
{
    return target.textureID(*context->getState());
}

void Renderer::prepareState()
{
    osg::State& state = *context->getState();
    state.initializeExtensionProcs();
    // The switches are off, for OpenGL by the guard and for the state since the last pass. Not
    // dirtyAllModes(): it makes the state believe the opposite of what it believed, right or wrong.
    state.dirtyAllAttributes();
    state.dirtyAllVertexArrays();
}

void Renderer::finishState()
{
    osg::State& state = *context->getState();
    state.unbindVertexArrayObject();
    state.setActiveTextureUnit(0);
}

void Renderer::drawShadows(const SceneMirror& mirror, const LightSet& lights)
{
    const bool hasCasters = !mirror.getCasterBounds().isEmpty();
    std::vector<LightSlot> slots;
    int shadows = 0;
    for (const auto& light : lights.all()) {
        const bool casts = hasCasters && light->source.kind != Kind::Head && shadows < maxShadows;
        slots.push_back({slotKind(light->source.kind), casts ? shadows++ : -1});
        if (!casts)
            continue;
        light->shadow.update(*light, mirror, shadowPass, *context->getState(), depthState.get());
        frameState->setTextureAttribute(TextureUnit::FirstShadow + slots.back().shadow,
                                        light->shadow.texture());
    }
    for (int i = shadows; i < maxShadows; ++i)
        frameState->removeTextureAttribute(TextureUnit::FirstShadow + i, osg::StateAttribute::TEXTURE);
    programs.setLights(slots);
}

void Renderer::setFrameState(const View& view, const LightSet& lights)
{
    const Eigen::Matrix3d rotation = view.toEye.linear();
    const Eigen::Matrix4d toWorld = view.toEye.inverse().matrix();
    up->set(toOsgVector(Eigen::Vector3d(rotation.col(1))));
    for (size_t i = 0; i < lights.all().size(); ++i) {
        const SceneLight& light = *lights.all()[i];
        const scene::LightSource& source = light.source;
        const Eigen::Vector3d direction =
            source.kind == Kind::Head ? Eigen::Vector3d(0, 0, -1) : rotation * light.direction;
        const bool isFar = slotKind(source.kind) == LightSlot::Far;
        const double outer = std::cos(source.outerCone);
        const double scale = 1 / std::max(std::cos(source.innerCone) - outer, 1e-4);
        lightPosition->setElement(i, toOsgVector(isFar ? -direction : view.toEye * light.position));
        lightColor->setElement(i, toOsgVector(light.color.cast<double>()));
        lightFalloff->setElement(i, toOsgVector(source.attenuation.cast<double>()));
        lightAxis->setElement(i, toOsgVector(direction));
        lightCone->setElement(i, osg::Vec2f(scale, -outer * scale));
        const int shadow = programs.getLights()[i].shadow;
        if (shadow < 0)
            continue;
        shadowMatrix->setElement(shadow, osg::Matrixf(toOsgMatrix(light.shadow.toMap() * toWorld)));
        shadowOffset->setElement(shadow, float(light.shadow.texelSize() * 1.5));
    }
}

void Renderer::drawSurfaces(const View& view, const SceneMirror& mirror)
{
    osg::State& state = *context->getState();
    const Frustum frustum(view.projection * view.toEye.matrix());
    bool hasPost = false;
    mainPass.begin(state, view.size, view.projection, frameState.get(),
                   GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    postPass.begin(state, view.size, view.projection, frameState.get(), GL_DEPTH_BUFFER_BIT);
    for (const SceneMirror::Surface& surface : mirror.getSurfaces()) {
        if (!frustum.touches(surface.bounds))
            continue;
        const Eigen::Affine3d toEye = view.toEye * mirror.getEntries()[surface.entry].world;
        // The opaque from front to back by where they end, so that a floor comes after what stands on it.
        const Eigen::RowVector3d axis = -view.toEye.linear().row(2);
        double depth = -(view.toEye * surface.bounds.center()).z();
        if (!surface.blended)
            depth += axis.cwiseAbs().dot(surface.bounds.sizes() / 2);
        DrawPass& pass = surface.postRender ? postPass : mainPass;
        pass.add(surface.geometry, toOsgMatrix(toEye.matrix()), depth, programs.get(surface.features),
                 surface.material);
        hasPost |= surface.postRender;
        triangles += surface.geometry->triangleCount();
        vertices += surface.geometry->vertexCount();
    }
    mainPass.draw();
    if (hasPost)
        postPass.draw();
}

} // namespace halvern::engine
