#include "engine/scene/Evaluator.h"

#include "engine/scene/Render.h"

#include <mutex>
#include <vector>

namespace halvern::scene {

struct Evaluator::Private
{
    explicit Private(std::string newName) : name(std::move(newName)) {}

    const std::string name;

    mutable std::mutex mutex; // guards what follows
    std::vector<boost::shared_ptr<Render>> renders;
};

Evaluator::Evaluator(std::string name) : d(std::make_unique<Private>(std::move(name))) {}

Evaluator::~Evaluator() = default;

std::string Evaluator::getName() const
{
    return d->name;
}

void Evaluator::addRender(boost::shared_ptr<Render> render)
{
    if (!render)
        return;
    std::lock_guard lock(d->mutex);
    d->renders.push_back(std::move(render));
}

unsigned int Evaluator::getRenderCount() const
{
    std::lock_guard lock(d->mutex);
    return static_cast<unsigned int>(d->renders.size());
}

boost::shared_ptr<Render> Evaluator::getRenderAt(unsigned int index) const
{
    std::lock_guard lock(d->mutex);
    return index < d->renders.size() ? d->renders[index] : boost::shared_ptr<Render>();
}

} // namespace halvern::scene
