#pragma once

#include "reference/scene/StandardMaterial.h"

#include <boost/shared_ptr.hpp>

#include <osg/StateSet>
#include <osg/Texture2D>

#include <memory>
#include <unordered_map>

namespace halvern::engine {

/// How a material is drawn: what its shader must do, and a state set with the values and maps.
class MaterialState
{
public:
    osg::ref_ptr<osg::StateSet> state;
    unsigned int features = 0; ///< ShaderFeature bits
    bool blended = false;      ///< drawn over what is behind it, from back to front
};

/// The state sets of the materials in use, shared by all surfaces of a material.
class MaterialStates
{
public:
    /// The look of a surface with the material (empty: a plain grey one). With `seeThrough` an opaque
    /// material lets shine through what is behind it. Valid until the next sweep() after its last use.
    const MaterialState& get(const boost::shared_ptr<scene::Material>& material, bool seeThrough);

    /// Reads the values of all materials anew. True if any changed: then every MaterialState is to be
    /// asked for again.
    bool refresh();

    /// Drops the materials that were not asked for since the last sweep.
    void sweep();

private:
    struct Entry
    {
        boost::shared_ptr<scene::Material> material;
        std::shared_ptr<const scene::StandardMaterial> values; // empty: those of a plain grey
        MaterialState plain;
        MaterialState seeThrough;
        bool used = true;
    };

    MaterialState make(const scene::StandardMaterial& values, bool seeThrough);
    osg::Texture2D* texture(const std::shared_ptr<const scene::Image>& image);

    std::unordered_map<const scene::Material*, Entry> entries;
    std::unordered_map<const scene::Image*, osg::ref_ptr<osg::Texture2D>> textures;
};

} // namespace halvern::engine
