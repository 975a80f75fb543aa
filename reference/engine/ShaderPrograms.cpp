#include "reference/engine/ShaderPrograms.h"

#include "reference/engine/fx/EffectUniforms.h"
#include "reference/engine/fx/StandardEffect.h"

#include <utility>

namespace halvern::engine {

namespace {

osg::ref_ptr<osg::Program> makeProgramOf(const std::string& vertex, const std::string& fragment)
{
    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->addShader(new osg::Shader(osg::Shader::VERTEX, vertex));
    program->addShader(new osg::Shader(osg::Shader::FRAGMENT, fragment));
    return program;
}

} // namespace

osg::ref_ptr<osg::Program> makeProgram(const std::string& vertex, const std::string& fragment)
{
    const std::string version = "#version 130\n";
    return makeProgramOf(version + vertex, version + fragment);
}

void ShaderPrograms::setLights(const std::vector<LightSlot>& newLights)
{
    if (newLights == lights)
        return;
    lights = newLights;
    states.clear();
    programs.clear();
}

osg::StateSet* ShaderPrograms::get(const fx::EffectPass& pass, unsigned int features)
{
    const Key key(pass.effect.get(), pass.technique << 8 | pass.pass, features);
    const auto it = states.find(key);
    if (it != states.end())
        return it->second.state.get();
    dropUnused();
    Entry& entry = states[key];
    entry.effect = pass.effect;
    entry.state = makeSurfaceState(pass, features);
    return entry.state.get();
}

osg::ref_ptr<osg::StateSet> ShaderPrograms::makeSurfaceState(const fx::EffectPass& pass,
                                                             unsigned int features)
{
    try {
        return makeState(pass, fx::makeProgramText(pass, features, lights));
    } catch (const fx::EffectError& error) {
        errors.push_back(error.what());
        const unsigned int ofMesh = features & (ShaderFeature::FirstSwitch - 1);
        return makeState({fx::getStandardEffect()},
                         fx::makeProgramText({fx::getStandardEffect()}, ofMesh, lights));
    }
}

osg::StateSet* ShaderPrograms::getPicturePass(const fx::EffectPass& pass, unsigned int features)
{
    const Key key(pass.effect.get(), pass.technique << 8 | pass.pass, features);
    const auto it = states.find(key);
    if (it != states.end())
        return it->second.state.get();
    dropUnused();
    Entry& entry = states[key];
    entry.effect = pass.effect;
    try {
        entry.state = makeState(pass, fx::makePictureText(pass, features));
    } catch (const fx::EffectError& error) {
        errors.push_back(error.what());
    }
    return entry.state.get();
}

osg::ref_ptr<osg::StateSet> ShaderPrograms::makeState(const fx::EffectPass& pass, const fx::ProgramText& text)
{
    const std::string& vertex = text.vertex.get();
    const std::string& fragment = text.fragment.get();
    osg::ref_ptr<osg::Program>& program = programs[vertex + '\0' + fragment];
    if (!program) {
        // OpenSceneGraph would not say where in the file a mistake is.
        if (pass.effect != fx::getStandardEffect())
            fx::tryProgram(pass, text);
        program = makeProgramOf(vertex, fragment);
    }
    osg::ref_ptr<osg::StateSet> state = new osg::StateSet;
    state->setAttribute(program);
    for (size_t i = 0; i < pass.effect->parameters.size(); ++i)
        state->addUniform(fx::makeUniform(*pass.effect, i));
    return state;
}

void ShaderPrograms::dropUnused()
{
    for (auto it = states.begin(); it != states.end();)
        it = it->second.effect.use_count() == 1 ? states.erase(it) : std::next(it);
    for (auto it = programs.begin(); it != programs.end();)
        it = it->second->referenceCount() == 1 ? programs.erase(it) : std::next(it);
}

std::vector<std::string> ShaderPrograms::takeErrors()
{
    return std::exchange(errors, {});
}

} // namespace halvern::engine
