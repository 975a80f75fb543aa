#include "reference/scene/import/CreaseNormals.h"

#include <assimp/mesh.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>
#include <vector>

namespace halvern::scene {

namespace {

/// A vertex between more faces than this is smooth: all its corners would be compared with each other.
constexpr size_t ManyFaces = 64;

/// As long as the face is large.
aiVector3D areaNormal(const aiMesh& mesh, const aiFace& face)
{
    aiVector3D normal;
    for (unsigned i = 2; i < face.mNumIndices; ++i) {
        const aiVector3D& first = mesh.mVertices[face.mIndices[0]];
        normal += (mesh.mVertices[face.mIndices[i - 1]] - first) ^ (mesh.mVertices[face.mIndices[i]] - first);
    }
    return normal;
}

/// The mesh's faces with what they get: normals, and vertices of their own at creases.
class Creaser
{
public:
    explicit Creaser(aiMesh& newMesh) : mesh(newMesh) {}

    void run()
    {
        readFaces();
        normals.resize(mesh.mNumVertices);
        for (unsigned vertex = 0; vertex < mesh.mNumVertices; ++vertex)
            crease(vertex);
        store();
    }

private:
    /// A face's index to a vertex.
    struct Corner
    {
        unsigned face;
        unsigned* index;
    };

    /// Sorts the corners of all faces by their vertex.
    void readFaces()
    {
        begins.assign(mesh.mNumVertices + 1, 0);
        forEachCorner([&](const Corner& corner) { ++begins[*corner.index + 1]; });
        std::partial_sum(begins.begin(), begins.end(), begins.begin());
        corners.resize(begins.back());
        std::vector<size_t> next(begins.begin(), begins.end() - 1);
        forEachCorner([&](const Corner& corner) { corners[next[*corner.index]++] = corner; });

        for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
            areaNormals.push_back(areaNormal(mesh, mesh.mFaces[i]));
            unitNormals.push_back(areaNormals.back());
            unitNormals.back().NormalizeSafe();
        }
    }

    template <class Function>
    void forEachCorner(Function function)
    {
        for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
            aiFace& face = mesh.mFaces[i];
            for (unsigned k = 0; k < face.mNumIndices; ++k)
                function(Corner{i, &face.mIndices[k]});
        }
    }

    /// Gives the corners of a vertex their normals; those with the same one share the vertex.
    void crease(unsigned vertex)
    {
        const auto begin = corners.begin() + static_cast<std::ptrdiff_t>(begins[vertex]);
        const auto end = corners.begin() + static_cast<std::ptrdiff_t>(begins[vertex + 1]);
        const bool isSmooth = static_cast<size_t>(end - begin) > ManyFaces;
        std::vector<unsigned> own; // the vertices that this one has become
        for (auto corner = begin; corner != end; ++corner) {
            const aiVector3D normal = meanNormal(begin, end, corner->face, isSmooth);
            const auto isNear = [&](unsigned known) { return normals[known] * normal > 0.9999f; };
            auto known = std::find_if(own.begin(), own.end(), isNear);
            if (known == own.end()) {
                known = own.insert(own.end(), own.empty() ? vertex : addCopy(vertex));
                normals[*known] = normal;
            }
            *corner->index = *known;
        }
    }

    /// Of the faces that lie at less than the smoothing angle to the one given.
    template <class Iterator>
    aiVector3D meanNormal(Iterator begin, Iterator end, unsigned face, bool isSmooth) const
    {
        static const float cosine = std::cos(SmoothingAngle * static_cast<float>(M_PI) / 180);
        aiVector3D sum;
        for (auto corner = begin; corner != end; ++corner) {
            if (isSmooth || unitNormals[corner->face] * unitNormals[face] >= cosine)
                sum += areaNormals[corner->face];
        }
        return sum.NormalizeSafe();
    }

    unsigned addCopy(unsigned vertex)
    {
        copies.push_back(vertex);
        normals.emplace_back();
        return static_cast<unsigned>(normals.size() - 1);
    }

    template <class Value>
    void extend(Value*& values) const
    {
        if (!values || copies.empty())
            return;
        auto* const extended = new Value[mesh.mNumVertices + copies.size()];
        Value* end = std::copy(values, values + mesh.mNumVertices, extended);
        for (const unsigned vertex : copies)
            *end++ = values[vertex];
        delete[] values;
        values = extended;
    }

    /// A copy follows the bone as its vertex does. The copies are in the order of their vertices.
    void extend(aiBone& bone) const
    {
        std::vector<aiVertexWeight> added;
        for (unsigned i = 0; i < bone.mNumWeights; ++i) {
            const aiVertexWeight& weight = bone.mWeights[i];
            const auto range = std::equal_range(copies.begin(), copies.end(), weight.mVertexId);
            for (auto copy = range.first; copy != range.second; ++copy) {
                const auto vertex = mesh.mNumVertices + static_cast<unsigned>(copy - copies.begin());
                added.emplace_back(vertex, weight.mWeight);
            }
        }
        if (added.empty())
            return;
        auto* const extended = new aiVertexWeight[bone.mNumWeights + added.size()];
        std::copy(bone.mWeights, bone.mWeights + bone.mNumWeights, extended);
        std::copy(added.begin(), added.end(), extended + bone.mNumWeights);
        delete[] std::exchange(bone.mWeights, extended);
        bone.mNumWeights += static_cast<unsigned>(added.size());
    }

    void store()
    {
        extend(mesh.mVertices);
        for (auto& channel : mesh.mTextureCoords)
            extend(channel);
        for (auto& channel : mesh.mColors)
            extend(channel);
        for (unsigned i = 0; i < mesh.mNumBones; ++i)
            extend(*mesh.mBones[i]);
        for (aiVector3D** unused : {&mesh.mTangents, &mesh.mBitangents}) {
            delete[] * unused;
            *unused = nullptr;
        }
        mesh.mNumVertices += static_cast<unsigned>(copies.size());
        mesh.mNormals = new aiVector3D[normals.size()];
        std::copy(normals.begin(), normals.end(), mesh.mNormals);
    }

    aiMesh& mesh;
    std::vector<aiVector3D> areaNormals; // by face
    std::vector<aiVector3D> unitNormals; // by face
    std::vector<size_t> begins;          // of each vertex's corners
    std::vector<Corner> corners;
    std::vector<aiVector3D> normals; // by vertex, the copies at the end
    std::vector<unsigned> copies;    // which vertex each is a copy of
};

} // namespace

void makeCreaseNormals(aiMesh& mesh)
{
    size_t corners = 0;
    for (unsigned i = 0; i < mesh.mNumFaces; ++i)
        corners += mesh.mFaces[i].mNumIndices;
    const bool hasSurfaces = mesh.mPrimitiveTypes & (aiPrimitiveType_TRIANGLE | aiPrimitiveType_POLYGON);
    if (!mesh.mNormals && hasSurfaces && corners > mesh.mNumVertices)
        Creaser(mesh).run();
}

} // namespace halvern::scene
