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
    /// As the effect file declares it; unique in the effect.
    virtual std::string getParameterName() = 0;

    /// "texture" for a texture, else the name of the type in the effect file, such as "float3".
    virtual std::string getParameterType() = 0;

    /// A copy: floats for numbers, one std::string (the file name) for a texture.
    virtual std::vector<boost::any> getParameterValues() = 0;

    /// The values of all components: any numbers, or one std::string for a texture. False, and nothing
    /// changes, for values of another number or type; the opacity of a colour that has none is left out. The
    /// picture follows in the next frame.
    virtual bool setParameterValue(std::vector<boost::any> values) = 0;

    /// The file name of a texture; false, and nothing changes, for any other parameter. A file that cannot be
    /// read counts as no picture.
    virtual bool setParameterValue(std::string value) = 0;

    /// By its name, in any case, or the other name that effect files give it. Empty when there is none.
    virtual boost::shared_ptr<FXAnnotation> getAnnotationByName(std::string name) = 0;

    virtual ~FXMaterialParameter();
};

} // namespace halvern::engine::fx
