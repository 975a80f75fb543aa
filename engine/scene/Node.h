#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

#include <Eigen/Geometry>

#include <memory>
#include <string>

namespace halvern::scene {

class Camera;
class Light;
class Material;

/// A node of the scene graph: a local transform, layers, and what it carries. Plain data behind a lock
/// of its own: every operation may be called from any thread and waits for nobody; getters return what
/// was set.
class HALVERN_SCENE_API Node
{
public:
    /// A visible node in no layer with the identity transform. The ID has no comma; the name may.
    Node(std::string id, std::string name);
    virtual ~Node();

    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    /// What events and lookups name the node by. It never changes.
    virtual std::string getID() const;

    /// For people; it may be empty, and others may have the same.
    virtual std::string getName() const;

    /// Of the node's own children, not of all below it.
    virtual unsigned int getChildCount() const;

    /// Empty for an index out of range.
    virtual boost::shared_ptr<Node> getChildNode(unsigned int index) const;

    /// Appends a child and takes it from no other parent. An empty pointer, the node itself, and a node that
    /// this one is below of, is ignored.
    virtual void addChildNode(boost::shared_ptr<Node> child);

    /// Removes the first entry equal to the child.
    virtual void removeChildNode(boost::shared_ptr<Node> child);

    /** @{ */
    /// The node's own flag; a node that is not visible is not drawn and neither is anything below it. It
    /// is independent of the layer "hidden", which has the same effect on the picture.
    virtual bool isVisible() const;
    virtual void setVisible(bool visible);
    /** @} */

    /** @{ */
    /// Layers are free names, compared exactly. Adding twice, or removing what is not there, is no error.
    /// Four mean something to the renderer: "hidden" leaves the node and all below it out, "cast_shadow" has
    /// the node cast shadows, "transparent" blends it, "post_render" draws it after the effects of the
    /// picture.
    virtual bool inLayer(std::string layer) const;
    virtual void addToLayer(std::string layer);
    virtual void removeFromLayer(std::string layer);
    /** @} */

    /** @{ */
    /// The local transform is translation * rotation * scale, relative to the parent: a point is
    /// scaled first.
    virtual Eigen::Translation3f getTranslation() const;
    virtual void setTranslation(Eigen::Translation3f translation);
    /** @} */

    /// The rotation in the upper left 3 x 3 corner, as it was set; the rest is that of the identity.
    virtual Eigen::Matrix4f getRotation() const;

    /// Takes the linear part of the transform, and does not check that it is a rotation.
    virtual void setRotation(Eigen::Affine3f rotation);

    /** @{ */
    /// A factor for each axis; 1 where none was set.
    virtual Eigen::Vector3f getScale() const;
    virtual void setScale(Eigen::Vector3f scale);
    /** @} */

    /// Of the lights that the node carries.
    virtual unsigned int getInstanceLightCount() const;

    /// Empty for an index out of range.
    virtual boost::shared_ptr<Light> getInstanceLight(unsigned int index) const;

    /// Appends a light, which other nodes may carry too; nothing removes it. An empty pointer is ignored.
    virtual void addInstanceLight(boost::shared_ptr<Light> light);

    /// Of the cameras that the node carries. They are not those of SceneManager::getCameraInstanceAt, which
    /// are listed apart.
    virtual unsigned int getInstanceCameraCount() const;

    /// Empty for an index out of range.
    virtual boost::shared_ptr<Camera> getInstanceCamera(unsigned int index) const;

    /// Appends a camera, which other nodes may carry too; nothing removes it. An empty pointer is ignored.
    virtual void addInstanceCamera(boost::shared_ptr<Camera> camera);

    /// Puts a material on a geometry of the node: `first` is the geometry's index, `second` the material
    /// slot. These are the numbers 2 and 3 of the event "ObjectPicked". An empty pointer clears the slot.
    virtual void setMaterial(boost::shared_ptr<Material> material, unsigned int first, unsigned int second);

    /// Empty where none was set.
    virtual boost::shared_ptr<Material> getMaterial(unsigned int first, unsigned int second);

private:
    friend struct Internals;
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::scene
