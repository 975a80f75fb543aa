#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

#include <list>
#include <memory>
#include <string>

namespace halvern::scene {

class Material;
class Node;

/// One render step of an evaluator: what to draw (empty for a full-screen step), in which layers, with
/// which material. Immutable.
class HALVERN_SCENE_API Render
{
public:
    /// Each part may be empty.
    Render(boost::shared_ptr<Node> node, std::list<std::string> layers, boost::shared_ptr<Material> material);
    virtual ~Render();

    Render(const Render&) = delete;
    Render& operator=(const Render&) = delete;

    /// Empty for a full-screen step.
    virtual boost::shared_ptr<Node> getNode() const;

    /// An instance of a scene effect for a full-screen step.
    virtual boost::shared_ptr<Material> getMaterial() const;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::scene
