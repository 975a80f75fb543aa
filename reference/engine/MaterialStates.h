#pragma once

#include "reference/engine/PictureTextures.h"
#include "reference/engine/fx/EffectCode.h"
#include "reference/engine/fx/EffectLook.h"
#include "reference/scene/StandardMaterial.h"

#include <boost/shared_ptr.hpp>

#include <osg/StateSet>

#include <memory>
#include <unordered_map>
#include <vector>

namespace halvern::engine {

namespace fx {
class EffectLibrary;
}

/// How a material is drawn: one pass after the other over the same surface, each with its program and a state
/// set with the values and maps.
struct MaterialState
{
    struct Pass
    {
        fx::EffectPass code;
        osg::ref_ptr<osg::StateSet> state;
        bool blended; ///< drawn over what is behind it, from back to front
    };

    /// What is to be done for a mesh: without texture coordinates there are no maps, and where they serve
    /// nothing else, without maps no texture coordinates.
    unsigned int getFeatures(unsigned int ofMesh) const;

    std::vector<Pass> passes;
    unsigned int ofTextures = 0; ///< bits of ShaderFeature that need texture coordinates
    bool needsTexCoords = true;  ///< for more than maps
    fx::EffectLook look;
};

/// The states of the materials in use, shared by all surfaces of a material.
class MaterialStates
{
public:
    explicit MaterialStates(boost::shared_ptr<fx::EffectLibrary> newLibrary);
    ~MaterialStates();

    /// The look of a surface with the material (empty: a plain grey one, as for a material whose effect
    /// cannot be used). With `seeThrough` an opaque material lets shine through what is behind it. Valid
    /// until the next sweep() after its last use.
    const MaterialState& get(const boost::shared_ptr<scene::Material>& material, bool seeThrough);

    /// Reads the values of all materials anew. True if any changed by more than numbers: then every
    /// MaterialState is to be asked for again.
    bool refresh();

    /// Drops the materials that were not asked for since the last sweep.
    void sweep();

private:
    using Values = fx::EffectLook::Values;

    struct Entry
    {
        boost::shared_ptr<scene::Material> material;
        boost::shared_ptr<fx::EffectMaterial> effectMaterial; // empty for imported and unusable ones
        std::shared_ptr<const scene::StandardMaterial> standardValues;
        std::shared_ptr<const fx::EffectSyntax> effect; // the standard one, as it was then
        MaterialState plain;
        MaterialState seeThrough;
        bool used = true;
    };

    Values readValues(const Entry& entry) const;
    bool refresh(Entry& entry);
    void make(const Values& values, bool isStandard, bool seeThrough, MaterialState& made);
    static void addPass(unsigned int index, bool seeThrough, MaterialState& made);

    const boost::shared_ptr<fx::EffectLibrary> library;
    std::unordered_map<const scene::Material*, Entry> entries;
    PictureTextures textures;
};

} // namespace halvern::engine
