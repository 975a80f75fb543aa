/// What it costs to let a mesh follow its bones.
#include "bench/Measure.h"
#include "reference/scene/Mesh.h"
#include "reference/scene/Skin.h"

#include <cstdlib>
#include <random>

namespace {

using namespace halvern::scene;
using halvern::bench::compare;

constexpr size_t VertexCount = 100000;
constexpr uint32_t BoneCount = 60;

struct Model
{
    Mesh mesh;
    Skin skin;
    std::vector<Eigen::Matrix4f> pose;
    std::vector<Eigen::Vector3f> positions{VertexCount};
    std::vector<Eigen::Vector3f> normals{VertexCount};
};

/// Neighbours follow the same bones, as in a figure, to shares of their own.
Model makeModel()
{
    Model model;
    std::mt19937 random(1);
    std::uniform_real_distribution<float> share(0.01f, 1);
    model.skin.bones.resize(BoneCount);
    for (size_t i = 0; i < VertexCount; ++i) {
        model.mesh.positions.push_back(Eigen::Vector3f::NullaryExpr([&] { return share(random); }));
        model.mesh.normals.push_back(model.mesh.positions.back().normalized());
        const Eigen::Vector4f weights = Eigen::Vector4f::NullaryExpr([&] { return share(random); });
        for (size_t k = 0; k < Skin::Influences; ++k) {
            model.skin.joints.push_back(static_cast<uint32_t>((i * BoneCount / VertexCount + k) % BoneCount));
            model.skin.weights.push_back(weights[static_cast<Eigen::Index>(k)] / weights.sum());
        }
    }
    for (uint32_t i = 0; i <= BoneCount; ++i) {
        const Eigen::Affine3f turn(Eigen::AngleAxisf(float(i) / BoneCount, Eigen::Vector3f::UnitZ()));
        model.pose.push_back(turn.matrix());
    }
    return model;
}

/// What no deformation can do without: each vertex through one matrix.
void transform(Model& model, const Eigen::Affine3f& matrix)
{
    for (size_t i = 0; i < VertexCount; ++i) {
        model.positions[i] = matrix * model.mesh.positions[i];
        model.normals[i] = (matrix.linear() * model.mesh.normals[i]).normalized();
    }
}

} // namespace

int main()
{
    Model model = makeModel();
    const Eigen::Affine3f matrix(Eigen::AngleAxisf(1, Eigen::Vector3f::UnitZ()));
    const bool holds = compare(
        "100,000 vertices following four bones each, against one matrix", 5, 15,
        [&] { deform(model.mesh, model.skin, model.pose, model.positions.data(), model.normals.data()); },
        [&] { transform(model, matrix); });
    return holds ? EXIT_SUCCESS : EXIT_FAILURE;
}
