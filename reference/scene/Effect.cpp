#include "engine/scene/Effect.h"

namespace halvern::scene {

struct Effect::Private
{
    const std::string id;
    const std::string fileName;
};

Effect::Effect(std::string id, std::string fileName, std::string /*third*/) :
    d(new Private{std::move(id), std::move(fileName)})
{}

Effect::~Effect() = default;

const std::string& Effect::getID() const
{
    return d->id;
}

const std::string& Effect::getFileName() const
{
    return d->fileName;
}

} // namespace halvern::scene
