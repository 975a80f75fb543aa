#pragma once

#include "engine/fx/FXAnnotation.h"
#include "engine/fx/FXMaterialParameter.h"

#include <QColor>

#include <boost/any.hpp>

#include <cstddef>
#include <string>
#include <vector>

namespace halvern::qt {

using engine::fx::FXMaterialParameter;
using ParameterValues = std::vector<boost::any>;

/// What the annotation of that name holds; the fallback where there is none or it holds another type.
template <class Value>
Value getAnnotation(FXMaterialParameter& parameter, const char* name, Value fallback)
{
    const auto annotation = parameter.getAnnotationByName(name);
    const boost::any first = annotation ? annotation->getFirstValue() : boost::any();
    const auto* value = boost::any_cast<Value>(&first);
    return value ? *value : fallback;
}

/// Null for another type and for an index out of range.
template <class Value>
const Value* getValue(const ParameterValues& values, std::size_t index)
{
    return index < values.size() ? boost::any_cast<Value>(&values[index]) : nullptr;
}

struct ReadColor
{
    QColor color; // as far as it could be read; invalid without red, green and blue
    bool isComplete;
};

/// Three or more floats from 0 to 1; of exactly four the last is the opacity.
ReadColor readColor(const ParameterValues& values);

/// The four components of a colour, from 0 to 1.
std::vector<float> toComponents(const QColor& color);

/// What one step of a parameter's slider changes its value by.
float getSliderStep(FXMaterialParameter& parameter);

/// The whole steps in a value, in single precision and cut off: 1.3 has 12 steps of 0.1. Numbers that an int
/// cannot hold give the nearest it can; no number at all gives 0.
int toSliderNumber(float value, float step);

} // namespace halvern::qt
