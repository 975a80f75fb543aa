#pragma once

#include <osg/StateSet>

#include <map>
#include <string>
#include <vector>

namespace halvern::engine {

/// What a surface asks of its shader. Every combination in use is a program of its own, so that simple
/// surfaces stay cheap.
namespace ShaderFeature {
enum : unsigned int {
    // of the mesh
    Unlit = 1,       ///< the base colour as it is; of the material too
    FlatNormals = 2, ///< the mesh has no normals
    VertexColors = 4,
    TexCoords = 8,
    // of the material
    BaseColorMap = 16,
    MetalRoughMap = 32,
    NormalMap = 64,
    EmissiveMap = 128,
    OcclusionMap = 256,
    PackedOcclusion = 512, ///< the occlusion is the red channel of the metal-rough map
    AlphaMask = 1024,
    Maps = BaseColorMap | MetalRoughMap | NormalMap | EmissiveMap | OcclusionMap | PackedOcclusion
};
}

/// What is to be done for a mesh with a material: without texture coordinates there are no maps, without
/// maps no texture coordinates.
inline unsigned int combinedFeatures(unsigned int ofMesh, unsigned int ofMaterial)
{
    const unsigned int all = ofMesh | ofMaterial;
    const unsigned int useless = all & ShaderFeature::TexCoords ? 0 : unsigned(ShaderFeature::Maps);
    return all & ShaderFeature::Maps & ~useless ? all : all & ~(useless | ShaderFeature::TexCoords);
}

/// Texture units of the maps; the shadow maps follow.
namespace TextureUnit {
enum : unsigned int { BaseColor, MetalRough, Normal, Emissive, Occlusion, FirstShadow };
}

constexpr int maxLights = 16;
constexpr int maxShadows = 8;
constexpr int shadowMapSize = 1024; ///< texels along each side
constexpr int textureUnits = TextureUnit::FirstShadow + maxShadows;

/// How a light takes part in the shading.
struct LightSlot
{
    enum Kind { Far, Near, Spot };

    Kind kind;
    int shadow; ///< index of its shadow map, or -1

    bool operator==(const LightSlot& other) const { return kind == other.kind && shadow == other.shadow; }
};

/// The programs that shade surfaces. They read the uniforms that MaterialStates and FrameState set.
class ShaderPrograms
{
public:
    /// Makes all programs anew if the lights differ.
    void setLights(const std::vector<LightSlot>& newLights);

    const std::vector<LightSlot>& getLights() const { return lights; }

    /// A state set with the program for a combination of ShaderFeature bits.
    osg::StateSet* get(unsigned int features);

private:
    std::vector<LightSlot> lights;
    std::map<unsigned int, osg::ref_ptr<osg::StateSet>> programs;
};

/// A program of two sources; the version line is added.
osg::ref_ptr<osg::Program> makeProgram(const std::string& vertexSource, const std::string& fragmentSource);

} // namespace halvern::engine
