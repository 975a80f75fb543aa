#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

#include <string>

namespace halvern::engine::fx {

class FXEffect;
class FXMaterialParameter;

/// A material as the renderer uses it. GUI thread; no OpenGL context is needed.
class HALVERN_ENGINE_API FXMaterial
{
public:
    /// The ID of the scene::Material.
    virtual std::string getID() = 0;

    /// What the material is an instance of.
    virtual boost::shared_ptr<FXEffect> getFXEffect() = 0;

    /// Of the parameters that the effect declares, whether they have an editor or not. A reload may change
    /// it.
    virtual int getParameterCount() = 0;

    /// The same object each time; empty for an index out of range.
    virtual boost::shared_ptr<FXMaterialParameter> getParameterAt(unsigned int index) = 0;

    /// The same object each time; empty for an unknown name.
    virtual boost::shared_ptr<FXMaterialParameter> getParameterByName(std::string name) = 0;

    /// Index into the techniques of the effect.
    virtual unsigned int getTechnique() = 0;

    /// The picture follows in the next frame; an index out of range changes nothing.
    virtual void setTechnique(unsigned int index) = 0;

    virtual ~FXMaterial();
};

} // namespace halvern::engine::fx
