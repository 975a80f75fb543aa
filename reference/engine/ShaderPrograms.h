#pragma once

#include "reference/engine/ShaderFeatures.h"
#include "reference/engine/fx/EffectCode.h"

#include <osg/Program>
#include <osg/StateSet>

#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace halvern::engine {

/// The programs that draw the passes of effects. They read the uniforms that MaterialStates and the renderer
/// set. Used with the context current.
class ShaderPrograms
{
public:
    /// Makes all programs anew if the lights differ.
    void setLights(const std::vector<LightSlot>& newLights);

    const std::vector<LightSlot>& getLights() const { return lights; }

    /// A state set for a pass over surfaces: the program for a combination of ShaderFeature bits, and the
    /// default values of the effect's parameters. Where the pass does not compile, a plain look instead.
    osg::StateSet* get(const fx::EffectPass& pass, unsigned int features);

    /// The same for a pass over the picture; null where it does not compile.
    osg::StateSet* getPicturePass(const fx::EffectPass& pass, unsigned int features);

    /// Why passes do not compile, since the last call.
    std::vector<std::string> takeErrors();

    /// Whether what was asked for since the last call changes with the time.
    bool takeReadsTime() { return std::exchange(readsTime, false); }

private:
    struct Program
    {
        osg::ref_ptr<osg::Program> program;
        bool readsTime;
    };
    struct Entry
    {
        std::shared_ptr<const fx::EffectSyntax> effect; // keeps the address in the key from being another's
        osg::ref_ptr<osg::StateSet> state;
        bool readsTime = false;
    };
    using Key = std::tuple<const fx::EffectSyntax*, unsigned int, unsigned int>;

    template <class Make>
    osg::StateSet* find(const fx::EffectPass& pass, unsigned int features, Make make);
    Entry makeSurfaceEntry(const fx::EffectPass& pass, unsigned int features);
    Entry makePictureEntry(const fx::EffectPass& pass, unsigned int features);
    Entry makeEntry(const fx::EffectPass& pass, const fx::ProgramText& text);
    const Program& getProgram(const fx::EffectPass& pass, const fx::ProgramText& text);
    void dropUnused();

    std::vector<LightSlot> lights;
    std::map<Key, Entry> states;
    std::map<std::string, Program> programs; // by their text
    std::vector<std::string> errors;
    bool readsTime = false;
};

/// A program of two sources; the version line is added.
osg::ref_ptr<osg::Program> makeProgram(const std::string& vertexSource, const std::string& fragmentSource);

} // namespace halvern::engine
