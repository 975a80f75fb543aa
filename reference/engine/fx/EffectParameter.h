#pragma once

#include "engine/fx/FXMaterialParameter.h"
#include "reference/engine/fx/EffectSyntax.h"
#include "reference/scene/Image.h"

#include <boost/shared_ptr.hpp>

#include <memory>
#include <mutex>

namespace halvern::scene {
class Material;
}

namespace halvern::engine::fx {

/// What a parameter is set to: numbers, or for a texture a file with its picture.
struct ParameterValue
{
    std::vector<float> numbers;
    std::string file;
    std::shared_ptr<const scene::Image> picture; ///< empty where there is none in the file
};

/// A parameter of a material, with its value. Any thread.
class EffectParameter : public FXMaterialParameter
{
public:
    EffectParameter(boost::shared_ptr<scene::Material> newMaterial,
                    std::shared_ptr<const EffectSyntax> newEffect, const ParameterSyntax& newSyntax);

    std::string getParameterName() override { return name; }
    std::string getParameterType() override;
    std::vector<boost::any> getParameterValues() override;
    bool setParameterValue(std::vector<boost::any> values) override;
    bool setParameterValue(std::string value) override;
    boost::shared_ptr<FXAnnotation> getAnnotationByName(std::string annotationName) override;

    /// Sets what an event says, numbers with commas between them, unless the value is that already as far as
    /// the event's six digits tell. False for what is no value of this parameter.
    bool setFromText(const std::string& text);

    ParameterType getType() const { return type; }

    virtual ParameterValue getValue() const;

    /// Takes over what the effect says now. The value stays.
    void adopt(std::shared_ptr<const EffectSyntax> newEffect, const ParameterSyntax& newSyntax);

protected:
    virtual void setValue(ParameterValue newValue);

    const boost::shared_ptr<scene::Material> material;

private:
    std::shared_ptr<const EffectSyntax> getEffect() const;
    /// Makes numbers a value of this type; false for those that are none.
    bool fit(std::vector<float>& numbers) const;

    const std::string name;
    const ParameterType type;

    mutable std::mutex mutex;                   // guards what follows
    std::shared_ptr<const EffectSyntax> effect; // keeps the syntax alive
    const ParameterSyntax* syntax;
    ParameterValue value;
};

/// The default value that the effect gives a parameter.
ParameterValue getDefaultValue(const EffectSyntax& effect, const ParameterSyntax& syntax);

} // namespace halvern::engine::fx
