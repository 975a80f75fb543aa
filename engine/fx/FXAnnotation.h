#pragma once

#include "engine/Export.h"

#ifndef Q_MOC_RUN
#    include <boost/any.hpp>
#endif

namespace halvern::engine::fx {

/// An annotation of an effect parameter, such as "UIWidget". Immutable.
class HALVERN_ENGINE_API FXAnnotation
{
public:
    /// A float or a std::string.
    virtual boost::any getFirstValue() = 0;

    virtual ~FXAnnotation();
};

} // namespace halvern::engine::fx
