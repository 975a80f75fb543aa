#pragma once

namespace halvern::engine {

/// What a surface asks of its shader. Every combination in use is a program of its own, so that simple
/// surfaces stay cheap.
namespace ShaderFeature {
enum : unsigned int {
    // of the mesh
    Unlit = 1,       ///< points and lines
    FlatNormals = 2, ///< the mesh has no normals
    VertexColors = 4,
    TexCoords = 8,
    // of the material: its effect's textures and bools in their order, one bit each
    FirstSwitch = 16
};
}

/// Texture units: an effect's own textures, the shadow maps between them.
namespace TextureUnit {
enum : unsigned int {
    FirstShadow = 5,
    // of passes over the picture, which know no shadows
    SceneColor = 5,
    SceneDepth = 6,
    FirstPass = 7
};
}

constexpr int maxLights = 16;
constexpr int maxShadows = 8;
constexpr int shadowMapSize = 1024; ///< texels along each side
constexpr int textureUnits = 16;    ///< in use, as many as every OpenGL 3 has

/// How a light takes part in the shading.
struct LightSlot
{
    enum Kind { Far, Near, Spot };

    Kind kind;
    int shadow; ///< index of its shadow map, or -1

    bool operator==(const LightSlot& other) const { return kind == other.kind && shadow == other.shadow; }
};

} // namespace halvern::engine
