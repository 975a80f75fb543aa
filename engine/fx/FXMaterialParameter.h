#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

#ifndef Q_MOC_RUN
#    include <boost/any.hpp>
#endif

#include <string>
#include <vector>

namespace halvern::engine::fx {

class FXAnnotation;

/// One effect parameter of a material. GUI thread; no OpenGL context is needed.
class HALVERN_ENGINE_API FXMaterialParameter
{
public:
    virtual std::string getParameterName() = 0;

    /// "texture" for a texture, else the name of the type in the effect file.
    virtual std::string getParameterType() = 0;

    /// A copy: floats for numbers, one std::string (the file name) for a texture.
    virtual std::vector<boost::any> getParameterValues() = 0;

    /// False, and nothing changes, for values of another number or type; the opacity of a colour that has
    /// none is left out. The picture follows in the next frame.
    virtual bool setParameterValue(std::vector<boost::any> values) = 0;
    virtual bool setParameterValue(std::string value) = 0;

    /// Empty when there is none of that name.
    virtual boost::shared_ptr<FXAnnotation> getAnnotationByName(std::string name) = 0;

    virtual ~FXMaterialParameter();
};

} // namespace halvern::engine::fx
