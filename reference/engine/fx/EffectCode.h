#pragma once

#include "reference/engine/ShaderFeatures.h"
#include "reference/engine/fx/EffectSyntax.h"

#include <string>
#include <vector>

namespace halvern::engine::fx {

/// A pass of an effect.
struct EffectPass
{
    std::shared_ptr<const EffectSyntax> effect;
    unsigned int technique = 0;
    unsigned int pass = 0;

    const PassSyntax& syntax() const { return effect->techniques[technique].passes[pass]; }
};

/// GLSL that is put together from what the engine provides and what an effect file says. It knows where each
/// line came from.
class ShaderText
{
public:
    /// Appends lines of the engine's.
    void add(const std::string& lines);
    /// Appends a line that stands for something in the effect file.
    void add(const std::string& line, Place place);
    void add(const std::vector<CodeSyntax>& codes);

    const std::string& get() const { return text; }

    /// Where in the effect file a place of the text is, if it is from there.
    bool find(Place place, Place& found) const;

private:
    struct Origin
    {
        int line = 0;   // 0: the engine's
        int column = 0; // 0: the same as in the text
    };

    std::string text;
    std::vector<Origin> origins;
};

struct ProgramText
{
    ShaderText vertex;
    ShaderText fragment;
};

/// The bit of ShaderFeature for a texture that is there or a bool that is on; 0 if the effect has no such
/// parameter.
unsigned int getSwitch(const EffectSyntax& effect, const std::string& parameter);

/// The bits of all textures, the others of all bools too.
unsigned int getTextureSwitches(const EffectSyntax& effect);
unsigned int getSwitches(const EffectSyntax& effect);

/// The program of a pass over surfaces.
ProgramText makeProgramText(const EffectPass& pass, unsigned int features,
                            const std::vector<LightSlot>& lights);

/// The program of a pass over the picture.
ProgramText makePictureText(const EffectPass& pass, unsigned int features);

/// Compiles and links with the current context: whether the program reads the time. Throws EffectError with
/// the place that is to blame.
bool tryProgram(const EffectPass& pass, const ProgramText& text);

/// Does so for all passes of an effect.
void tryPrograms(const std::shared_ptr<const EffectSyntax>& effect);

} // namespace halvern::engine::fx
