#pragma once

#include "engine/fx/FXMaterial.h"
#include "reference/engine/fx/EffectParameter.h"
#include "reference/engine/fx/LoadedEffect.h"

#include <boost/shared_ptr.hpp>

#include <mutex>
#include <vector>

namespace halvern::engine::fx {

/// A material of the scene as an instance of its effect. Any thread.
class EffectMaterial : public FXMaterial
{
public:
    /// All that a material draws with. The values are those of the effect's parameters, in their order.
    struct Values
    {
        std::shared_ptr<const EffectSyntax> effect;
        unsigned int technique;
        std::vector<ParameterValue> values;
    };

    EffectMaterial(boost::shared_ptr<scene::Material> newMaterial, boost::shared_ptr<LoadedEffect> newEffect);

    std::string getID() override;
    boost::shared_ptr<FXEffect> getFXEffect() override;
    int getParameterCount() override;
    boost::shared_ptr<FXMaterialParameter> getParameterAt(unsigned int index) override;
    boost::shared_ptr<FXMaterialParameter> getParameterByName(std::string name) override;
    unsigned int getTechnique() override;
    void setTechnique(unsigned int index) override;

    boost::shared_ptr<EffectParameter> findParameter(const std::string& name) const;

    Values getValues() const;

    /// Takes over what the effect says since it was read anew. Parameters that still exist stay the same
    /// objects and keep their values; the technique stays if there is one of its name.
    void adoptEffect();

private:
    using Parameters = std::vector<boost::shared_ptr<EffectParameter>>;

    Parameters makeParameters(const std::shared_ptr<const EffectSyntax>& newSyntax,
                              const Parameters& old) const;

    const boost::shared_ptr<scene::Material> material;
    const boost::shared_ptr<LoadedEffect> effect;
    const bool isStandard;

    mutable std::mutex mutex; // guards what follows
    std::shared_ptr<const EffectSyntax> syntax;
    Parameters parameters;
    unsigned int technique = 0;
};

} // namespace halvern::engine::fx
