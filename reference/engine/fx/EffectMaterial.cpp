#include "reference/engine/fx/EffectMaterial.h"

#include "engine/scene/Material.h"
#include "reference/engine/fx/StandardParameter.h"
#include "reference/scene/SceneChanges.h"
#include "reference/scene/StandardMaterial.h"

#include <boost/make_shared.hpp>

#include <algorithm>

namespace halvern::engine::fx {

EffectMaterial::EffectMaterial(boost::shared_ptr<scene::Material> newMaterial,
                               boost::shared_ptr<LoadedEffect> newEffect) :
    material(std::move(newMaterial)),
    effect(std::move(newEffect)),
    isStandard(material->getEffectID() == scene::StandardEffectID),
    syntax(effect->getSyntax()),
    parameters(makeParameters(syntax, {}))
{}

EffectMaterial::Parameters
EffectMaterial::makeParameters(const std::shared_ptr<const EffectSyntax>& newSyntax,
                               const Parameters& old) const
{
    Parameters made;
    for (const ParameterSyntax& each : newSyntax->parameters) {
        const auto same = std::find_if(old.begin(), old.end(), [&](const auto& parameter) {
            return parameter->getParameterName() == each.name && parameter->getType() == each.type;
        });
        if (same != old.end()) {
            (*same)->adopt(newSyntax, each);
            made.push_back(*same);
        } else if (isStandard && StandardParameter::exists(each)) {
            made.push_back(boost::make_shared<StandardParameter>(material, newSyntax, each));
        } else {
            made.push_back(boost::make_shared<EffectParameter>(material, newSyntax, each));
        }
    }
    return made;
}

std::string EffectMaterial::getID()
{
    return material->getMaterialID();
}

boost::shared_ptr<FXEffect> EffectMaterial::getFXEffect()
{
    return effect;
}

int EffectMaterial::getParameterCount()
{
    const std::lock_guard<std::mutex> lock(mutex);
    return int(parameters.size());
}

boost::shared_ptr<FXMaterialParameter> EffectMaterial::getParameterAt(unsigned int index)
{
    const std::lock_guard<std::mutex> lock(mutex);
    return index < parameters.size() ? parameters[index] : nullptr;
}

boost::shared_ptr<FXMaterialParameter> EffectMaterial::getParameterByName(std::string name)
{
    return findParameter(name);
}

boost::shared_ptr<EffectParameter> EffectMaterial::findParameter(const std::string& name) const
{
    const std::lock_guard<std::mutex> lock(mutex);
    for (const auto& parameter : parameters)
        if (parameter->getParameterName() == name)
            return parameter;
    return {};
}

unsigned int EffectMaterial::getTechnique()
{
    if (isStandard)
        return getStandardTechnique(*material);
    const std::lock_guard<std::mutex> lock(mutex);
    return technique;
}

void EffectMaterial::setTechnique(unsigned int index)
{
    if (index >= effect->getTechniqueCount())
        return;
    if (isStandard)
        return setStandardTechnique(*material, index);
    {
        const std::lock_guard<std::mutex> lock(mutex);
        technique = index;
    }
    markMaterialChanged(*material);
}

EffectMaterial::Values EffectMaterial::getValues() const
{
    Values current;
    Parameters read;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        current.effect = syntax;
        current.technique = technique;
        read = parameters;
    }
    for (const auto& parameter : read)
        current.values.push_back(parameter->getValue());
    return current;
}

void EffectMaterial::adoptEffect()
{
    const auto newSyntax = effect->getSyntax();
    Parameters old;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        old = parameters;
    }
    Parameters made = makeParameters(newSyntax, old);
    {
        const std::lock_guard<std::mutex> lock(mutex);
        const std::string name = syntax->techniques[technique].name;
        const auto& techniques = newSyntax->techniques;
        const auto same = std::find_if(techniques.begin(), techniques.end(),
                                       [&](const TechniqueSyntax& each) { return each.name == name; });
        technique = same == techniques.end() ? 0 : unsigned(same - techniques.begin());
        syntax = newSyntax;
        parameters = std::move(made);
    }
    markMaterialChanged(*material);
}

} // namespace halvern::engine::fx
