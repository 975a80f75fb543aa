#pragma once

struct aiMesh;

namespace halvern::scene {

/// Edges sharper than this stay sharp where normals have to be made.
inline constexpr float SmoothingAngle = 60; // degrees

/// Makes the missing normals of a mesh whose faces share vertices; Assimp's own step expects that no two
/// faces do. Where faces meet in a sharp edge the vertices between them are doubled. Expects indices in
/// range. Does nothing to other meshes.
void makeCreaseNormals(aiMesh& mesh);

} // namespace halvern::scene
