#include "reference/engine/MeshGeometry.h"

#include "reference/engine/ShaderFeatures.h"

#include <algorithm>

namespace halvern::engine {

using scene::Mesh;

namespace {

bool isDrawable(const Mesh& mesh)
{
    const auto inRange = [&mesh](uint32_t index) { return index < mesh.positions.size(); };
    return std::all_of(mesh.indices.begin(), mesh.indices.end(), inRange) && !mesh.indices.empty();
}

Eigen::AlignedBox3d boundsOf(const Mesh& mesh)
{
    if (!isDrawable(mesh))
        return {};
    Eigen::AlignedBox3f box = mesh.bounds;
    if (box.isEmpty() || !box.min().allFinite() || !box.max().allFinite()) {
        box.setEmpty();
        for (const Eigen::Vector3f& position : mesh.positions)
            if (position.allFinite())
                box.extend(position);
    }
    return box.cast<double>();
}

unsigned int featuresOf(const Mesh& mesh)
{
    unsigned int features = 0;
    if (mesh.primitive != Mesh::Primitive::Triangles)
        features |= ShaderFeature::Unlit;
    if (mesh.normals.empty())
        features |= ShaderFeature::FlatNormals;
    if (!mesh.colors.empty())
        features |= ShaderFeature::VertexColors;
    if (!mesh.texCoords.empty())
        features |= ShaderFeature::TexCoords;
    return features;
}

GLenum modeOf(Mesh::Primitive primitive)
{
    switch (primitive) {
    case Mesh::Primitive::Points:
        return GL_POINTS;
    case Mesh::Primitive::Lines:
        return GL_LINES;
    default:
        return GL_TRIANGLES;
    }
}

template <class OsgArray, class Element>
osg::ref_ptr<OsgArray> toArray(const std::vector<Element>& elements)
{
    using OsgElement = typename OsgArray::ElementDataType;
    static_assert(sizeof(OsgElement) == sizeof(Element));
    const auto* begin = reinterpret_cast<const OsgElement*>(elements.data());
    return new OsgArray(osg::Array::BIND_PER_VERTEX, elements.size(), begin);
}

} // namespace

MeshGeometry::MeshGeometry(std::shared_ptr<const Mesh> newMesh) :
    mesh(newMesh), features(featuresOf(*newMesh)), box(boundsOf(*newMesh))
{
    setUseDisplayList(false);
    setUseVertexBufferObjects(true);
    setUseVertexArrayObject(true);
    if (box.isEmpty())
        return;
    setVertexArray(toArray<osg::Vec3Array>(mesh->positions));
    if (!mesh->normals.empty())
        setNormalArray(toArray<osg::Vec3Array>(mesh->normals));
    if (!mesh->texCoords.empty())
        setTexCoordArray(0, toArray<osg::Vec2Array>(mesh->texCoords));
    if (!mesh->colors.empty())
        setColorArray(toArray<osg::Vec4Array>(mesh->colors));
    addPrimitiveSet(
        new osg::DrawElementsUInt(modeOf(mesh->primitive), mesh->indices.size(), mesh->indices.data()));
}

const Eigen::Vector3f* MeshGeometry::getPositions() const
{
    const osg::Array* array = getVertexArray();
    return array ? static_cast<const Eigen::Vector3f*>(array->getDataPointer()) : nullptr;
}

unsigned int MeshGeometry::triangleCount() const
{
    return mesh->primitive == Mesh::Primitive::Triangles ? mesh->indices.size() / 3 : 0;
}

osg::BoundingBox MeshGeometry::computeBoundingBox() const
{
    if (box.isEmpty())
        return {};
    return {osg::Vec3d(box.min().x(), box.min().y(), box.min().z()),
            osg::Vec3d(box.max().x(), box.max().y(), box.max().z())};
}

MeshGeometry* GeometryCache::get(const std::shared_ptr<const Mesh>& mesh)
{
    osg::ref_ptr<MeshGeometry>& geometry = geometries[mesh.get()];
    if (!geometry)
        geometry = new MeshGeometry(mesh);
    return geometry.get();
}

void GeometryCache::sweep()
{
    for (auto it = geometries.begin(); it != geometries.end();)
        it = it->second->referenceCount() == 1 ? geometries.erase(it) : std::next(it);
}

} // namespace halvern::engine
