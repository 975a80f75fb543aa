#include "reference/scene/import/DefaultView.h"

#include "engine/scene/Camera.h"
#include "engine/scene/CameraInstance.h"
#include "engine/scene/Light.h"
#include "engine/scene/Node.h"
#include "reference/scene/CameraPose.h"
#include "reference/scene/LightSource.h"
#include "reference/scene/Mesh.h"
#include "reference/scene/Skin.h"
#include "reference/scene/import/Conversions.h"
#include "reference/scene/import/UniqueNames.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace halvern::scene {

namespace {

constexpr double Pi = 3.14159265358979323846;
constexpr double FieldOfView = 45; // degrees
constexpr double Margin = 1.1;

double radians(double degrees)
{
    return degrees * Pi / 180;
}

Eigen::Affine3d localTransform(const Node& node)
{
    Eigen::Affine3d transform(node.getTranslation().cast<double>());
    transform.linear() =
        node.getRotation().topLeftCorner<3, 3>().cast<double>() * node.getScale().cast<double>().asDiagonal();
    return transform;
}

void extend(Eigen::AlignedBox3d& bounds, const Eigen::AlignedBox3f& box, const Eigen::Affine3d& transform)
{
    if (box.isEmpty())
        return;
    for (int corner = 0; corner < 8; ++corner) {
        const auto which = static_cast<Eigen::AlignedBox3f::CornerType>(corner);
        const Eigen::Vector3d point = transform * box.corner(which).cast<double>();
        if (point.cast<float>().allFinite())
            bounds.extend(point);
    }
}

/// A mesh that bones deform, and where its node stands.
struct SkinnedMesh
{
    std::shared_ptr<const Mesh> mesh;
    std::shared_ptr<const Skin> skin;
    Eigen::Affine3d world;
};

/// The box round the mesh in the pose of its bones, in the coordinates of its node.
Eigen::AlignedBox3f boundsOf(const SkinnedMesh& skinned, const std::map<const Node*, Eigen::Affine3d>& worlds)
{
    const Eigen::Affine3d toMesh = skinned.world.inverse();
    std::vector<Eigen::Matrix4f> pose;
    for (const Skin::Bone& bone : skinned.skin->bones)
        pose.push_back(poseOf(bone, worlds.at(bone.node.lock().get()), toMesh));
    pose.push_back(Eigen::Matrix4f::Identity());
    std::vector<Eigen::Vector3f> positions(skinned.mesh->positions.size());
    std::vector<Eigen::Vector3f> normals(skinned.mesh->normals.size());
    deform(*skinned.mesh, *skinned.skin, pose, positions.data(), normals.data());
    Eigen::AlignedBox3f bounds;
    for (const uint32_t index : skinned.mesh->indices)
        bounds.extend(positions[index]);
    return bounds;
}

/// Calls function(node, world) for the node and all below it.
template <class Function>
void visit(const boost::shared_ptr<Node>& top, Function function)
{
    std::vector<std::pair<boost::shared_ptr<Node>, Eigen::Affine3d>> pending;
    pending.emplace_back(top, Eigen::Affine3d::Identity());
    while (!pending.empty()) {
        const auto [node, parent] = std::move(pending.back());
        pending.pop_back();
        const Eigen::Affine3d world = parent * localTransform(*node);
        function(*node, world);
        for (unsigned i = 0, count = node->getChildCount(); i < count; ++i)
            pending.emplace_back(node->getChildNode(i), world);
    }
}

/// Whether a part of the box may lie in the pyramid of sight: not if all corners are beyond one side.
bool sees(const Camera& camera, const Eigen::Affine3d& world, const Eigen::AlignedBox3d& bounds)
{
    constexpr double Aspect = 1.5;
    Eigen::Affine3d eye = world * getCameraPose(camera).cast<double>();
    eye.linear().colwise().normalize(); // a scale of the node is none of the lens
    const Eigen::Affine3d toEye = eye.inverse();
    const double slope = std::tan(radians(camera.getYFov() / 2));
    std::array<int, 6> beyond{};
    for (int corner = 0; corner < 8; ++corner) {
        const auto which = static_cast<Eigen::AlignedBox3d::CornerType>(corner);
        const Eigen::Vector3d point = toEye * bounds.corner(which);
        const double depth = -point.z();
        const double sides[] = {point.x() - depth * slope * Aspect, -point.x() - depth * slope * Aspect,
                                point.y() - depth * slope,          -point.y() - depth * slope,
                                camera.getZNear() - depth,          depth - camera.getZFar()};
        for (size_t side = 0; side < beyond.size(); ++side)
            beyond[side] += sides[side] <= 0 ? 0 : 1; // not a number is beyond
    }
    return *std::max_element(beyond.begin(), beyond.end()) < 8;
}

/// What has to be seen: never empty, never a single point.
struct Subject
{
    explicit Subject(const Eigen::AlignedBox3d& box)
    {
        if (box.isEmpty())
            return;
        center = box.center();
        halfSize = box.sizes() / 2;
        radius = halfSize.norm();
        if (radius < 1e-6 * std::max(1e-30, center.norm()))
            radius = 1;
    }

    Eigen::Vector3d center = Eigen::Vector3d::Zero();
    Eigen::Vector3d halfSize = Eigen::Vector3d::Zero();
    double radius = 1;
};

/// How far before the centre the eye must stand to have every corner in a square picture.
double distanceFor(const Subject& subject, const Eigen::Matrix3d& eye)
{
    const double slope = std::tan(radians(FieldOfView / 2));
    double distance = subject.halfSize.isZero() ? 2 * subject.radius : 0;
    for (int corner = 0; corner < 8; ++corner) {
        const Eigen::Vector3d sign(corner & 1 ? 1 : -1, corner & 2 ? 1 : -1, corner & 4 ? 1 : -1);
        const Eigen::Vector3d seen = eye.transpose() * subject.halfSize.cwiseProduct(sign);
        const double aside = std::max(std::abs(seen.x()), std::abs(seen.y()));
        distance = std::max(distance, seen.z() + aside * Margin / slope);
    }
    return distance;
}

/// A node whose -z axis looks from the position to the subject.
boost::shared_ptr<Node> addNode(Node& parent, const char* name, const Eigen::Vector3d& position,
                                const Eigen::Vector3d& direction, ImportIDs& ids)
{
    const auto node = boost::make_shared<Node>(ids.nodes.make(name, name), name);
    Eigen::Affine3f rotation(Eigen::Affine3f::Identity());
    rotation.linear() = lookAlong(direction.cast<float>(), Eigen::Vector3f::UnitY());
    node->setRotation(rotation);
    node->setTranslation(Eigen::Translation3f(position.cast<float>()));
    parent.addChildNode(node);
    return node;
}

void addLight(Node& node, const char* name, LightSource::Kind kind, float intensity, ImportIDs& ids)
{
    const auto light = boost::make_shared<Light>(ids.lights.make(name, name));
    LightSource source;
    source.kind = kind;
    source.intensity = intensity;
    setLightSource(*light, source);
    node.addInstanceLight(light);
}

} // namespace

Eigen::AlignedBox3d boundsOf(const boost::shared_ptr<Node>& top)
{
    Eigen::AlignedBox3d bounds;
    std::vector<SkinnedMesh> skinned;
    visit(top, [&](const Node& node, const Eigen::Affine3d& world) {
        const auto meshes = getGeometries(node);
        const auto skins = getSkins(node);
        for (size_t i = 0; i < meshes.size(); ++i) {
            if (i < skins.size() && skins[i])
                skinned.push_back({meshes[i], skins[i], world});
            else
                extend(bounds, meshes[i]->bounds, world);
        }
    });
    if (skinned.empty())
        return bounds;
    std::map<const Node*, Eigen::Affine3d> worlds;
    visit(top, [&](const Node& node, const Eigen::Affine3d& world) { worlds.emplace(&node, world); });
    for (const SkinnedMesh& mesh : skinned)
        extend(bounds, boundsOf(mesh, worlds), mesh.world);
    return bounds;
}

bool isSeen(const Eigen::AlignedBox3d& bounds, const std::vector<boost::shared_ptr<CameraInstance>>& cameras,
            const boost::shared_ptr<Node>& top)
{
    if (bounds.isEmpty() || cameras.empty())
        return !cameras.empty();
    bool isSeen = false;
    visit(top, [&](const Node& node, const Eigen::Affine3d& world) {
        for (unsigned i = 0; i < node.getInstanceCameraCount(); ++i)
            isSeen = isSeen || sees(*node.getInstanceCamera(i), world, bounds);
    });
    return isSeen;
}

boost::shared_ptr<CameraInstance> addDefaultCamera(Node& parent, const Eigen::AlignedBox3d& bounds,
                                                   ImportIDs& ids)
{
    static constexpr char Name[] = "Default camera";
    const Subject subject(bounds);
    const double azimuth = radians(35);
    const double elevation = radians(20);
    const Eigen::Vector3d back(std::sin(azimuth) * std::cos(elevation), std::sin(elevation),
                               std::cos(azimuth) * std::cos(elevation));
    const Eigen::Matrix3f eye = lookAlong(-back.cast<float>(), Eigen::Vector3f::UnitY());
    const double distance = distanceFor(subject, eye.cast<double>());

    const auto camera = boost::make_shared<Camera>(ids.cameras.make(Name, Name));
    camera->setYFov(static_cast<float>(FieldOfView));
    camera->setZNear(static_cast<float>(subject.radius / 100));
    camera->setZFar(static_cast<float>(subject.radius * 100));

    const auto node = addNode(parent, Name, subject.center + back * distance, -back, ids);
    node->addInstanceCamera(camera);
    return boost::make_shared<CameraInstance>(ids.cameraInstances.make(Name, Name), node, camera);
}

void addDefaultLights(Node& parent, const Eigen::AlignedBox3d& bounds, ImportIDs& ids)
{
    const Subject subject(bounds);
    const Eigen::Vector3d forwards(0, 0, -1);
    const auto head = addNode(parent, "Head light", subject.center, forwards, ids);
    addLight(*head, "Head light", LightSource::Kind::Head, 0.5f, ids);

    const Eigen::Vector3d towardsKey = Eigen::Vector3d(-0.5, 0.8, 0.6).normalized();
    const auto key =
        addNode(parent, "Key light", subject.center + towardsKey * 2 * subject.radius, -towardsKey, ids);
    addLight(*key, "Key light", LightSource::Kind::Directional, 0.8f, ids);
}

} // namespace halvern::scene
