#include "reference/scene/import/MeshReader.h"

#include "reference/scene/import/Conversions.h"
#include "reference/scene/import/MaterialReader.h"

#include <assimp/mesh.h>

#include <numeric>

namespace halvern::scene {

namespace {

Mesh::Primitive primitiveOf(const aiMesh& source)
{
    if (source.mPrimitiveTypes & aiPrimitiveType_TRIANGLE)
        return Mesh::Primitive::Triangles;
    return source.mPrimitiveTypes & aiPrimitiveType_LINE ? Mesh::Primitive::Lines : Mesh::Primitive::Points;
}

unsigned cornersOf(Mesh::Primitive primitive)
{
    switch (primitive) {
    case Mesh::Primitive::Points:
        return 1;
    case Mesh::Primitive::Lines:
        return 2;
    case Mesh::Primitive::Triangles:
        break;
    }
    return 3;
}

std::vector<uint32_t> readIndices(const aiMesh& source, Mesh::Primitive primitive)
{
    const unsigned corners = cornersOf(primitive);
    std::vector<uint32_t> indices;
    indices.reserve(size_t(source.mNumFaces) * corners);
    const auto isGood = [&](uint32_t index) { return index < source.mNumVertices; };
    for (unsigned i = 0; i < source.mNumFaces; ++i) {
        const aiFace& face = source.mFaces[i];
        if (face.mNumIndices == corners && std::all_of(face.mIndices, face.mIndices + corners, isGood))
            indices.insert(indices.end(), face.mIndices, face.mIndices + corners);
    }
    // A cloud of points comes without faces.
    if (source.mNumFaces == 0 && primitive == Mesh::Primitive::Points) {
        indices.resize(source.mNumVertices);
        std::iota(indices.begin(), indices.end(), 0u);
    }
    return indices;
}

/// Values that are not finite are replaced.
template <class Vector>
Vector finite(const Vector& value, const Vector& replacement)
{
    return value.allFinite() ? value : replacement;
}

std::vector<Eigen::Vector3f> readVectors(const aiVector3D* values, unsigned count,
                                         const Eigen::Vector3f& replacement)
{
    std::vector<Eigen::Vector3f> result;
    result.reserve(values ? count : 0);
    for (unsigned i = 0; values && i < count; ++i)
        result.push_back(finite(toEigen(values[i]), replacement));
    return result;
}

std::vector<Eigen::Vector2f> readTexCoords(const aiMesh& source, const TextureCoordinates& wanted)
{
    const bool hasWanted =
        wanted.channel < AI_MAX_NUMBER_OF_TEXTURECOORDS && source.mTextureCoords[wanted.channel];
    const aiVector3D* values = source.mTextureCoords[hasWanted ? wanted.channel : 0];
    std::vector<Eigen::Vector2f> result;
    result.reserve(values ? source.mNumVertices : 0);
    for (unsigned i = 0; values && i < source.mNumVertices; ++i) {
        // Assimp's v runs upwards from the last row of the picture.
        const Eigen::Vector2f coordinate = wanted.transform * Eigen::Vector2f(values[i].x, 1 - values[i].y);
        result.push_back(finite<Eigen::Vector2f>(coordinate, Eigen::Vector2f::Zero()));
    }
    return result;
}

std::vector<Eigen::Vector4f> readColors(const aiMesh& source)
{
    const aiColor4D* values = source.mColors[0];
    std::vector<Eigen::Vector4f> result;
    result.reserve(values ? source.mNumVertices : 0);
    for (unsigned i = 0; values && i < source.mNumVertices; ++i) {
        const Eigen::Vector4f color(values[i].r, values[i].g, values[i].b, values[i].a);
        const Eigen::Vector4f good = finite<Eigen::Vector4f>(color, Eigen::Vector4f::Ones());
        result.push_back(good.cwiseMax(0.0f).cwiseMin(1.0f));
    }
    return result;
}

} // namespace

std::shared_ptr<const Mesh> readMesh(const aiMesh& source, const TextureCoordinates& textureCoordinates)
{
    if (!source.mVertices)
        return {};
    auto mesh = std::make_shared<Mesh>();
    mesh->name = source.mName.C_Str();
    mesh->primitive = primitiveOf(source);
    mesh->indices = readIndices(source, mesh->primitive);
    if (mesh->indices.empty())
        return {};
    const unsigned count = source.mNumVertices;
    mesh->positions = readVectors(source.mVertices, count, Eigen::Vector3f::Zero());
    if (mesh->primitive == Mesh::Primitive::Triangles) // Assimp makes NaN of the normals of lines and points
        mesh->normals = readVectors(source.mNormals, count, Eigen::Vector3f::UnitY());
    mesh->texCoords = readTexCoords(source, textureCoordinates);
    mesh->colors = readColors(source);
    for (const uint32_t index : mesh->indices)
        mesh->bounds.extend(mesh->positions[index]);
    return mesh;
}

} // namespace halvern::scene
