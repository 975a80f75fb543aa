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
    return find(pass, features, &ShaderPrograms::makeSurfaceEntry);
}

osg::StateSet* ShaderPrograms::getPicturePass(const fx::EffectPass& pass, unsigned int features)
{
    return find(pass, features, &ShaderPrograms::makePictureEntry);
}

template <class Make>
osg::StateSet* ShaderPrograms::find(const fx::EffectPass& pass, unsigned int features, Make make)
{
    const Key key(pass.effect.get(), pass.technique << 8 | pass.pass, features);
    auto it = states.find(key);
    if (it == states.end()) {
        dropUnused();
        it = states.emplace(key, (this->*make)(pass, features)).first;
        it->second.effect = pass.effect;
    }
    readsTime |= it->second.readsTime;
    return it->second.state.get();
}

ShaderPrograms::Entry ShaderPrograms::makeSurfaceEntry(const fx::EffectPass& pass, unsigned int features)
{
    try {
        if (pass.effect->isScene())
            throw fx::EffectError(pass.effect->fileName, pass.syntax().place,
                                  "an effect of the scene is no look of a node");
        return makeEntry(pass, fx::makeProgramText(pass, features, lights));
    } catch (const fx::EffectError& error) {
        errors.push_back(error.what());
        const unsigned int ofMesh = features & (ShaderFeature::FirstSwitch - 1);
        return makeEntry({fx::getStandardEffect()},
                         fx::makeProgramText({fx::getStandardEffect()}, ofMesh, lights));
    }
}

ShaderPrograms::Entry ShaderPrograms::makePictureEntry(const fx::EffectPass& pass, unsigned int features)
{
    try {
        return makeEntry(pass, fx::makePictureText(pass, features));
    } catch (const fx::EffectError& error) {
        errors.push_back(error.what());
        return {};
    }
}

ShaderPrograms::Entry ShaderPrograms::makeEntry(const fx::EffectPass& pass, const fx::ProgramText& text)
{
    const Program& program = getProgram(pass, text);
    Entry entry{{}, new osg::StateSet, program.readsTime};
    entry.state->setAttribute(program.program);
    for (size_t i = 0; i < pass.effect->parameters.size(); ++i)
        entry.state->addUniform(fx::makeUniform(*pass.effect, i));
    return entry;
}

const ShaderPrograms::Program& ShaderPrograms::getProgram(const fx::EffectPass& pass,
                                                          const fx::ProgramText& text)
{
    const std::string& vertex = text.vertex.get();
    const std::string& fragment = text.fragment.get();
    const std::string key = vertex + '\0' + fragment;
    const auto it = programs.find(key);
    if (it != programs.end())
        return it->second;
    // OpenSceneGraph would not say where in the file a mistake is.
    const bool ofTime = pass.effect != fx::getStandardEffect() && fx::tryProgram(pass, text);
    return programs.emplace(key, Program{makeProgramOf(vertex, fragment), ofTime}).first->second;
}

void ShaderPrograms::dropUnused()
{
    for (auto it = states.begin(); it != states.end();)
        it = it->second.effect.use_count() == 1 ? states.erase(it) : std::next(it);
    for (auto it = programs.begin(); it != programs.end();)
        it = it->second.program->referenceCount() == 1 ? programs.erase(it) : std::next(it);
}

std::vector<std::string> ShaderPrograms::takeErrors()
{
    return std::exchange(errors, {});
}

} // namespace halvern::engine
