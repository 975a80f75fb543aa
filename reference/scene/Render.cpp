#include "engine/scene/Render.h"

#include "engine/scene/Material.h"
#include "engine/scene/Node.h"

namespace halvern::scene {

struct Render::Private
{
    const boost::shared_ptr<Node> node;
    const std::list<std::string> layers;
    const boost::shared_ptr<Material> material;
};

Render::Render(boost::shared_ptr<Node> node, std::list<std::string> layers,
               boost::shared_ptr<Material> material) :
    d(new Private{std::move(node), std::move(layers), std::move(material)})
{}

Render::~Render() = default;

boost::shared_ptr<Node> Render::getNode() const
{
    return d->node;
}

boost::shared_ptr<Material> Render::getMaterial() const
{
    return d->material;
}

} // namespace halvern::scene
