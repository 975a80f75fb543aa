#include "reference/engine/MaterialStates.h"

#include "engine/scene/Material.h"
#include "reference/engine/ShaderFeatures.h"
#include "reference/engine/fx/EffectLibrary.h"
#include "reference/engine/fx/EffectUniforms.h"
#include "reference/engine/fx/StandardParameter.h"

#include <algorithm>

namespace halvern::engine {

using fx::PassState;
using scene::StandardMaterial;

namespace {

/// Of a surface in the layer "transparent" whose material does not say how much shines through.
constexpr float seeThroughOpacity = 0.45f;

std::shared_ptr<const StandardMaterial> standardValuesOf(const boost::shared_ptr<scene::Material>& material)
{
    return material ? getStandardMaterial(*material) : nullptr;
}

} // namespace

unsigned int MaterialState::getFeatures(unsigned int ofMesh) const
{
    unsigned int all = ofMesh | look.getFeatures();
    if (!(all & ShaderFeature::TexCoords))
        all &= ~ofTextures;
    if (!needsTexCoords && !(all & ofTextures))
        all &= ~ShaderFeature::TexCoords;
    return all;
}

MaterialStates::MaterialStates(boost::shared_ptr<fx::EffectLibrary> newLibrary) :
    library(std::move(newLibrary))
{}

MaterialStates::~MaterialStates() = default;

const MaterialState& MaterialStates::get(const boost::shared_ptr<scene::Material>& material, bool seeThrough)
{
    const auto [it, isNew] = entries.try_emplace(material.get());
    Entry& entry = it->second;
    if (isNew) {
        entry.material = material;
        entry.effectMaterial = library->getMaterial(material);
        entry.standardValues = standardValuesOf(material);
        entry.effect = library->getStandard();
    }
    entry.used = true;
    MaterialState& state = seeThrough ? entry.seeThrough : entry.plain;
    if (!state.look.isMade())
        make(readValues(entry), !entry.effectMaterial, seeThrough, state);
    return state;
}

MaterialStates::Values MaterialStates::readValues(const Entry& entry) const
{
    if (entry.effectMaterial)
        return entry.effectMaterial->getValues();
    const StandardMaterial values = entry.standardValues ? *entry.standardValues : StandardMaterial();
    const auto effect = library->getStandard();
    const unsigned int technique = std::min<size_t>(size_t(values.alpha), effect->techniques.size() - 1);
    return {effect, technique, fx::StandardParameter::getAll(values, *effect)};
}

bool MaterialStates::refresh()
{
    bool changed = false;
    for (auto& [key, entry] : entries)
        changed |= refresh(entry);
    return changed;
}

bool MaterialStates::refresh(Entry& entry)
{
    const auto effectMaterial = library->getMaterial(entry.material);
    const auto standardValues = standardValuesOf(entry.material);
    const bool isImported = !effectMaterial && !entry.effectMaterial;
    if (isImported && standardValues == entry.standardValues && entry.effect == library->getStandard())
        return false;
    entry.effectMaterial = effectMaterial;
    entry.standardValues = standardValues;
    entry.effect = library->getStandard();
    const Values values = readValues(entry);
    bool changed = false;
    for (MaterialState* state : {&entry.plain, &entry.seeThrough})
        if (state->look.isMade() && !state->look.update(values)) {
            *state = {};
            changed = true;
        }
    return changed;
}

void MaterialStates::sweep()
{
    for (auto it = entries.begin(); it != entries.end();) {
        if (!it->second.used) {
            it = entries.erase(it);
            continue;
        }
        it->second.used = false;
        ++it;
    }
    textures.sweep();
}

void MaterialStates::make(const Values& values, bool isStandard, bool seeThrough, MaterialState& made)
{
    made.look.make(values, textures);
    made.ofTextures = fx::getTextureSwitches(*values.effect);
    made.needsTexCoords = !isStandard;
    for (size_t i = 0; i < made.look.getStates().size(); ++i)
        addPass(i, seeThrough, made);
}

void MaterialStates::addPass(unsigned int index, bool seeThrough, MaterialState& made)
{
    const Values& values = made.look.getValues();
    const fx::EffectPass code{values.effect, values.technique, index};
    PassState how = code.syntax().state;
    osg::Vec2f opacity(1, how.blend == PassState::Blend::None ? 1 : 0);
    if (seeThrough && how.blend == PassState::Blend::None) {
        opacity = osg::Vec2f(seeThroughOpacity, 0);
        how.blend = PassState::Blend::Alpha;
        how.depth = how.depth == PassState::Depth::On ? PassState::Depth::Test : how.depth;
    }
    const osg::ref_ptr<osg::StateSet>& state = made.look.getStates()[index];
    fx::setPassState(*state, how, index);
    state->addUniform(new osg::Uniform("opacity", opacity));
    made.passes.push_back({code, state, how.blend != PassState::Blend::None});
}

} // namespace halvern::engine
