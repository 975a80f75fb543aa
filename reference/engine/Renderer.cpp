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
    worldToEye = addArray(*frameState, osg::Uniform::FLOAT_MAT4, "worldToEye", 1);
    eyeToWorld = addArray(*frameState, osg::Uniform::FLOAT_MAT4, "eyeToWorld", 1);
    viewSize = addArray(*frameState, osg::Uniform::FLOAT_VEC2, "viewSize", 1);
    time = addArray(*frameState, osg::Uniform::FLOAT, "time", 1);
}

Renderer::~Renderer() = default;

void Renderer::draw(const View& view, const SceneMirror* mirror, const LightSet& lights, int selected,
                    const fx::SceneEffects& effects)
{
    const GLStateGuard guard;
    prepareState();
    osg::State& state = *context->getState();
    triangles = vertices = 0;
    if (mirror) {
        drawShadows(*mirror, lights);
        setFrameState(view, lights);
    }
    drawScene(view, mirror, effects);
    if (mirror && selected >= 0)
        outline.draw(state, *shown, view, *mirror, selected);
    finishState();
    osg::flushAllDeletedGLObjects(state.getContextID());
}

void Renderer::drawScene(const View& view, const SceneMirror* mirror, const fx::SceneEffects& effects)
{
    osg::State& state = *context->getState();
    shown = effects.empty() ? &target : &effectsTarget;
    shown->resize(view.size);
    shown->bind(state);
    mainPass.begin(state, view.size, view.projection, frameState.get(),
                   GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    postPass.begin(state, view.size, view.projection, frameState.get(), GL_DEPTH_BUFFER_BIT);
    const bool hasPost = mirror && addSurfaces(view, *mirror);
    mainPass.draw();
    if (!effects.empty()) {
        shown = &chain.draw(state, effectsTarget, view, effects, programs, getTime());
        shown->bind(state);
    }
    // What lies over all else lies over the effects too.
    if (hasPost)
        postPass.draw();
}

unsigned int Renderer::getColorTexture() const
{
    return shown->textureID(*context->getState());
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
    worldToEye->set(osg::Matrixf(toOsgMatrix(view.toEye.matrix())));
    eyeToWorld->set(osg::Matrixf(toOsgMatrix(toWorld)));
    viewSize->set(osg::Vec2f(view.size.x(), view.size.y()));
    time->set(getTime());
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

float Renderer::getTime() const
{
    return std::chrono::duration<float>(std::chrono::steady_clock::now() - start).count();
}

bool Renderer::addSurfaces(const View& view, const SceneMirror& mirror)
{
    const Frustum frustum(view.projection * view.toEye.matrix());
    bool hasPost = false;
    for (const SceneMirror::Surface& surface : mirror.getSurfaces()) {
        if (!frustum.touches(surface.bounds))
            continue;
        const Eigen::Affine3d toEye = view.toEye * mirror.getEntries()[surface.entry].world;
        // The opaque from front to back by where they end, so that a floor comes after what stands on it.
        const Eigen::RowVector3d axis = -view.toEye.linear().row(2);
        const double depth = -(view.toEye * surface.bounds.center()).z();
        const double behind = axis.cwiseAbs().dot(surface.bounds.sizes() / 2);
        const osg::Matrixd modelView = toOsgMatrix(toEye.matrix());
        DrawPass& drawPass = surface.postRender ? postPass : mainPass;
        // Passes over one surface stay in their order, though what is blended is sorted.
        double order = 1;
        for (const MaterialState::Pass& pass : surface.look->passes) {
            drawPass.add(surface.geometry, modelView, (pass.blended ? depth : depth + behind) * order,
                         programs.get(pass.code, surface.features), pass.state.get());
            order -= 1e-6;
        }
        hasPost |= surface.postRender;
        triangles += surface.geometry->triangleCount();
        vertices += surface.geometry->vertexCount();
    }
    return hasPost;
}

} // namespace halvern::engine
