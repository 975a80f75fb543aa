#include "engine/scene/Camera.h"
#include "engine/scene/Light.h"
#include "engine/scene/Material.h"
#include "reference/scene/CameraPrivate.h"
#include "reference/scene/LightPrivate.h"
#include "reference/scene/MaterialPrivate.h"
#include "reference/scene/NodePrivate.h"
#include "reference/scene/Topology.h"

#include <algorithm>

namespace halvern::scene {

namespace {

using Nodes = std::vector<boost::shared_ptr<Node>>;

/// Releases the nodes and, from inside their destructors, all below them without recursion: a chain of
/// 100,000 nodes must not use up the stack.
void release(Nodes nodes)
{
    thread_local Nodes* pending = nullptr;
    if (pending) {
        pending->insert(pending->end(), std::make_move_iterator(nodes.begin()),
                        std::make_move_iterator(nodes.end()));
        return;
    }
    pending = &nodes;
    while (!nodes.empty()) {
        const boost::shared_ptr<Node> node = std::move(nodes.back());
        nodes.pop_back();
    }
    pending = nullptr;
}

template <class Object>
boost::shared_ptr<Object> at(const std::vector<boost::shared_ptr<Object>>& objects, unsigned int index)
{
    return index < objects.size() ? objects[index] : boost::shared_ptr<Object>();
}

} // namespace

Node::Node(std::string id, std::string name) : d(std::make_unique<Private>(std::move(id), std::move(name))) {}

Node::~Node()
{
    for (const auto& child : d->children)
        --Internals::of(*child).parents;
    release(std::move(d->children));
}

std::string Node::getID() const
{
    return d->id;
}

std::string Node::getName() const
{
    return d->name;
}

unsigned int Node::getChildCount() const
{
    std::lock_guard lock(d->mutex);
    return static_cast<unsigned int>(d->children.size());
}

boost::shared_ptr<Node> Node::getChildNode(unsigned int index) const
{
    std::lock_guard lock(d->mutex);
    return at(d->children, index);
}

void Node::addChildNode(boost::shared_ptr<Node> child)
{
    if (!child || child.get() == this)
        return;
    std::lock_guard topologyLock(topology::lock());
    // A node without a parent is below nobody.
    if (d->parents > 0 && topology::reaches(child, *this))
        return;
    ++Internals::of(*child).parents;
    if (d->link)
        topology::enter(child, d->link);
    d->apply(*this, SceneChanges::Children, [&] { d->children.push_back(child); });
}

void Node::removeChildNode(boost::shared_ptr<Node> child)
{
    if (!child)
        return;
    std::lock_guard topologyLock(topology::lock());
    const auto entry = std::find(d->children.begin(), d->children.end(), child);
    if (entry == d->children.end())
        return;
    --Internals::of(*child).parents;
    if (d->link)
        topology::leave(child, d->link);
    d->apply(*this, SceneChanges::Children, [&] { d->children.erase(entry); });
}

bool Node::isVisible() const
{
    std::lock_guard lock(d->mutex);
    return d->visible;
}

void Node::setVisible(bool visible)
{
    d->apply(*this, SceneChanges::Layers, [&] { d->visible = visible; });
}

bool Node::inLayer(std::string layer) const
{
    std::lock_guard lock(d->mutex);
    return d->layers.count(layer) > 0;
}

void Node::addToLayer(std::string layer)
{
    d->apply(*this, SceneChanges::Layers, [&] { d->layers.insert(std::move(layer)); });
}

void Node::removeFromLayer(std::string layer)
{
    d->apply(*this, SceneChanges::Layers, [&] { d->layers.erase(layer); });
}

Eigen::Translation3f Node::getTranslation() const
{
    std::lock_guard lock(d->mutex);
    return d->translation;
}

void Node::setTranslation(Eigen::Translation3f translation)
{
    d->apply(*this, SceneChanges::Transform, [&] { d->translation = translation; });
}

Eigen::Matrix4f Node::getRotation() const
{
    std::lock_guard lock(d->mutex);
    return d->rotation;
}

void Node::setRotation(Eigen::Affine3f rotation)
{
    d->apply(*this, SceneChanges::Transform, [&] { d->rotation.topLeftCorner<3, 3>() = rotation.linear(); });
}

Eigen::Vector3f Node::getScale() const
{
    std::lock_guard lock(d->mutex);
    return d->scale;
}

void Node::setScale(Eigen::Vector3f scale)
{
    d->apply(*this, SceneChanges::Transform, [&] { d->scale = scale; });
}

unsigned int Node::getInstanceLightCount() const
{
    std::lock_guard lock(d->mutex);
    return static_cast<unsigned int>(d->lights.size());
}

boost::shared_ptr<Light> Node::getInstanceLight(unsigned int index) const
{
    std::lock_guard lock(d->mutex);
    return at(d->lights, index);
}

void Node::addInstanceLight(boost::shared_ptr<Light> light)
{
    if (light)
        d->apply(
            *this, SceneChanges::Instances, [&] { d->lights.push_back(light); },
            &Internals::of(*light).scenes);
}

unsigned int Node::getInstanceCameraCount() const
{
    std::lock_guard lock(d->mutex);
    return static_cast<unsigned int>(d->cameras.size());
}

boost::shared_ptr<Camera> Node::getInstanceCamera(unsigned int index) const
{
    std::lock_guard lock(d->mutex);
    return at(d->cameras, index);
}

void Node::addInstanceCamera(boost::shared_ptr<Camera> camera)
{
    if (camera)
        d->apply(
            *this, SceneChanges::Instances, [&] { d->cameras.push_back(camera); },
            &Internals::of(*camera).scenes);
}

void Node::setMaterial(boost::shared_ptr<Material> material, unsigned int first, unsigned int second)
{
    SceneMarks* const marks = material ? &Internals::of(*material).scenes : nullptr;
    decltype(d->materials)::node_type before; // released after the lock
    const auto put = [&] {
        before = d->materials.extract({first, second});
        if (material)
            d->materials[{first, second}] = material;
    };
    d->apply(*this, SceneChanges::Materials, put, marks);
}

boost::shared_ptr<Material> Node::getMaterial(unsigned int first, unsigned int second)
{
    std::lock_guard lock(d->mutex);
    const auto slot = d->materials.find({first, second});
    return slot != d->materials.end() ? slot->second : boost::shared_ptr<Material>();
}

void setGeometries(Node& node, std::vector<std::shared_ptr<const Mesh>> geometries,
                   std::vector<std::shared_ptr<const Skin>> skins)
{
    auto& data = Internals::of(node);
    if (!skins.empty())
        skins.resize(geometries.size());
    data.apply(node, SceneChanges::Geometries, [&] {
        data.geometries.swap(geometries);
        data.skins.swap(skins);
    });
}

std::vector<std::shared_ptr<const Mesh>> getGeometries(const Node& node)
{
    const auto& data = Internals::of(node);
    std::lock_guard lock(data.mutex);
    return data.geometries;
}

std::vector<std::shared_ptr<const Skin>> getSkins(const Node& node)
{
    const auto& data = Internals::of(node);
    std::lock_guard lock(data.mutex);
    return data.skins;
}

} // namespace halvern::scene
