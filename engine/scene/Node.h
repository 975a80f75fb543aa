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

    virtual std::string getID() const;
    virtual std::string getName() const;

    virtual unsigned int getChildCount() const;

    /// Empty for an index out of range.
    virtual boost::shared_ptr<Node> getChildNode(unsigned int index) const;

    /// Appends a child. An empty pointer, and a node that this one is below of, is ignored.
    virtual void addChildNode(boost::shared_ptr<Node> child);

    /// Removes the first entry equal to the child.
    virtual void removeChildNode(boost::shared_ptr<Node> child);

    /// The node's own flag; a node that is not visible is not drawn and neither is anything below it. It
    /// is independent of the layer "hidden", which has the same effect on the picture.
    virtual bool isVisible() const;
    virtual void setVisible(bool visible);

    /// Layers are free names, compared exactly. Adding twice, or removing what is not there, is no error.
    virtual bool inLayer(std::string layer) const;
    virtual void addToLayer(std::string layer);
    virtual void removeFromLayer(std::string layer);

    /// The local transform is translation * rotation * scale, relative to the parent.
    virtual Eigen::Translation3f getTranslation() const;
    virtual void setTranslation(Eigen::Translation3f translation);
    virtual Eigen::Matrix4f getRotation() const;

    /// Takes the linear part of the transform.
    virtual void setRotation(Eigen::Affine3f rotation);
    virtual Eigen::Vector3f getScale() const;
    virtual void setScale(Eigen::Vector3f scale);

    virtual unsigned int getInstanceLightCount() const;

    /// Empty for an index out of range.
    virtual boost::shared_ptr<Light> getInstanceLight(unsigned int index) const;
    virtual void addInstanceLight(boost::shared_ptr<Light> light);

    virtual unsigned int getInstanceCameraCount() const;

    /// Empty for an index out of range.
    virtual boost::shared_ptr<Camera> getInstanceCamera(unsigned int index) const;
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
