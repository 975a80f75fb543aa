#pragma once

#include "reference/engine/fx/EffectParameter.h"

namespace halvern::scene {
struct StandardMaterial;
}

namespace halvern::engine::fx {

/// A parameter of an imported material: its value is one of the scene's StandardMaterial.
class StandardParameter : public EffectParameter
{
public:
    StandardParameter(boost::shared_ptr<scene::Material> newMaterial,
                      std::shared_ptr<const EffectSyntax> newEffect, const ParameterSyntax& newSyntax);

    /// Whether the imported materials have a value of that name and type.
    static bool exists(const ParameterSyntax& syntax);

    /// What an imported material gives the parameters of the standard effect, in their order.
    static std::vector<ParameterValue> getAll(const scene::StandardMaterial& values,
                                              const EffectSyntax& effect);

    ParameterValue getValue() const override;

protected:
    void setValue(ParameterValue newValue) override;

private:
    struct Access;
    static const Access* findAccess(const ParameterSyntax& syntax);

    const Access& access;
};

/// The technique of an imported material, which is how it treats its alpha.
unsigned int getStandardTechnique(const scene::Material& material);
void setStandardTechnique(scene::Material& material, unsigned int index);

} // namespace halvern::engine::fx
