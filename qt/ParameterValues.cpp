#include "qt/ParameterValues.h"

#include <cmath>
#include <limits>

namespace halvern::qt {

ReadColor readColor(const ParameterValues& values)
{
    const auto* red = getValue<float>(values, 0);
    const auto* green = getValue<float>(values, 1);
    const auto* blue = getValue<float>(values, 2);
    if (!red || !green || !blue)
        return {QColor(), false};
    ReadColor read{QColor(), true};
    read.color.setRgbF(*red, *green, *blue);
    if (values.size() != 4)
        return read;
    const auto* alpha = getValue<float>(values, 3);
    read.isComplete = alpha != nullptr;
    if (alpha)
        read.color.setAlphaF(*alpha);
    return read;
}

std::vector<float> toComponents(const QColor& color)
{
    std::vector<float> components;
    for (const int component : {color.red(), color.green(), color.blue(), color.alpha()})
        components.push_back(float(component / 255.0));
    return components;
}

float getSliderStep(FXMaterialParameter& parameter)
{
    return getAnnotation(parameter, "UIStep", 0.1f);
}

int toSliderNumber(float value, float step)
{
    using Limits = std::numeric_limits<int>;
    const float number = value / step;
    if (std::isnan(number))
        return 0;
    if (number >= -float(Limits::min()))
        return Limits::max();
    if (number <= float(Limits::min()))
        return Limits::min();
    return int(number);
}

} // namespace halvern::qt
