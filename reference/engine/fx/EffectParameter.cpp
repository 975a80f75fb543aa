#include "reference/engine/fx/EffectParameter.h"

#include "engine/fx/FXAnnotation.h"
#include "reference/engine/fx/EffectFiles.h"
#include "reference/scene/SceneChanges.h"

#include <boost/algorithm/string/predicate.hpp>
#include <boost/make_shared.hpp>

#include <algorithm>
#include <cmath>
#include <locale>
#include <optional>
#include <sstream>

namespace halvern::engine::fx {

namespace {

class ConstantAnnotation : public FXAnnotation
{
public:
    explicit ConstantAnnotation(boost::any newValue) : value(std::move(newValue)) {}

    boost::any getFirstValue() override { return value; }

private:
    const boost::any value;
};

/// Other names that effect files give the annotations.
const std::pair<const char*, const char*> aliases[] = {{"UIWidget", "SasUiControl"},
                                                       {"UIName", "SasUiLabel"},
                                                       {"UIMin", "SasUiMin"},
                                                       {"UIMax", "SasUiMax"},
                                                       {"UIStep", "SasUiStride"}};

bool isSame(const std::string& a, const std::string& b)
{
    return boost::iequals(a, b, std::locale::classic());
}

const AnnotationSyntax* findAnnotation(const ParameterSyntax& syntax, const std::string& name)
{
    for (const AnnotationSyntax& annotation : syntax.annotations)
        if (isSame(annotation.name, name))
            return &annotation;
    return nullptr;
}

const AnnotationSyntax* findAnnotationOrAlias(const ParameterSyntax& syntax, const std::string& name)
{
    if (const AnnotationSyntax* annotation = findAnnotation(syntax, name))
        return annotation;
    for (const auto& [meant, alias] : aliases)
        if (isSame(name, meant))
            return findAnnotation(syntax, alias);
    return nullptr;
}

std::optional<float> toFloat(const boost::any& value)
{
    if (const auto* number = boost::any_cast<float>(&value))
        return *number;
    if (const auto* number = boost::any_cast<double>(&value))
        return float(*number);
    if (const auto* number = boost::any_cast<int>(&value))
        return float(*number);
    if (const auto* number = boost::any_cast<unsigned int>(&value))
        return float(*number);
    if (const auto* number = boost::any_cast<bool>(&value))
        return float(*number);
    return {};
}

/// Numbers with commas between them; empty for anything else.
std::vector<float> readNumbers(const std::string& text)
{
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    std::vector<float> numbers;
    float number = 0;
    while (stream >> number) {
        numbers.push_back(number);
        char comma = 0;
        if (!(stream >> comma))
            return numbers;
        if (comma != ',')
            return {};
    }
    return {};
}

/// Whether the numbers are alike as far as six digits tell.
bool isNear(float a, float b)
{
    return std::abs(a - b) <= 6e-6f * std::max(std::abs(a), std::abs(b));
}

} // namespace

ParameterValue getDefaultValue(const EffectSyntax& effect, const ParameterSyntax& syntax)
{
    return {syntax.numbers, syntax.file, readPicture(syntax.file, effect.fileName)};
}

EffectParameter::EffectParameter(boost::shared_ptr<scene::Material> newMaterial,
                                 std::shared_ptr<const EffectSyntax> newEffect,
                                 const ParameterSyntax& newSyntax) :
    material(std::move(newMaterial)),
    name(newSyntax.name),
    type(newSyntax.type),
    effect(std::move(newEffect)),
    syntax(&newSyntax),
    value(getDefaultValue(*effect, newSyntax))
{}

std::string EffectParameter::getParameterType()
{
    static const char* const names[] = {"float", "float2", "float3", "float4", "int", "bool", "texture"};
    return names[int(type)];
}

std::vector<boost::any> EffectParameter::getParameterValues()
{
    const ParameterValue current = getValue();
    if (type == ParameterType::Texture)
        return {current.file};
    return std::vector<boost::any>(current.numbers.begin(), current.numbers.end());
}

bool EffectParameter::setParameterValue(std::vector<boost::any> values)
{
    if (type == ParameterType::Texture) {
        const auto* file = values.size() == 1 ? boost::any_cast<std::string>(&values.front()) : nullptr;
        return file && setParameterValue(*file);
    }
    std::vector<float> numbers;
    for (const boost::any& each : values) {
        const auto number = toFloat(each);
        if (!number)
            return false;
        numbers.push_back(*number);
    }
    if (!fit(numbers))
        return false;
    setValue({std::move(numbers), {}, {}});
    return true;
}

bool EffectParameter::setParameterValue(std::string file)
{
    if (type != ParameterType::Texture)
        return false;
    setValue({{}, file, readPicture(file, getEffect()->fileName)});
    return true;
}

bool EffectParameter::fit(std::vector<float>& numbers) const
{
    // Editors of colours always give an opacity as well.
    if (type == ParameterType::Float3 && numbers.size() == 4)
        numbers.pop_back();
    const bool areNumbers =
        std::all_of(numbers.begin(), numbers.end(), [](float number) { return std::isfinite(number); });
    if (type == ParameterType::Texture || numbers.size() != componentsOf(type) || !areNumbers)
        return false;
    if (type == ParameterType::Int && std::abs(numbers.front()) > mostInt)
        return false;
    if (type == ParameterType::Int)
        numbers.front() = std::trunc(numbers.front());
    if (type == ParameterType::Bool)
        numbers.front() = numbers.front() != 0;
    return true;
}

bool EffectParameter::setFromText(const std::string& text)
{
    const ParameterValue current = getValue();
    if (type == ParameterType::Texture)
        return text == current.file || setParameterValue(text);
    std::vector<float> numbers = readNumbers(text);
    if (!fit(numbers))
        return false;
    if (!std::equal(numbers.begin(), numbers.end(), current.numbers.begin(), isNear))
        setValue({std::move(numbers), {}, {}});
    return true;
}

boost::shared_ptr<FXAnnotation> EffectParameter::getAnnotationByName(std::string annotationName)
{
    const std::lock_guard<std::mutex> lock(mutex);
    const AnnotationSyntax* annotation = findAnnotationOrAlias(*syntax, annotationName);
    if (!annotation)
        return {};
    return std::visit(
        [](const auto& found) -> boost::shared_ptr<FXAnnotation> {
            return boost::make_shared<ConstantAnnotation>(boost::any(found));
        },
        annotation->value);
}

ParameterValue EffectParameter::getValue() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return value;
}

void EffectParameter::setValue(ParameterValue newValue)
{
    {
        const std::lock_guard<std::mutex> lock(mutex);
        std::swap(value, newValue); // what was set before is released unlocked
    }
    markMaterialChanged(*material);
}

void EffectParameter::adopt(std::shared_ptr<const EffectSyntax> newEffect, const ParameterSyntax& newSyntax)
{
    const std::lock_guard<std::mutex> lock(mutex);
    effect.swap(newEffect);
    syntax = &newSyntax;
}

std::shared_ptr<const EffectSyntax> EffectParameter::getEffect() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return effect;
}

} // namespace halvern::engine::fx
