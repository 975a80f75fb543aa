#pragma once

#include "engine/fx/FXEffect.h"
#include "reference/engine/fx/EffectSyntax.h"

#include <memory>
#include <mutex>

namespace halvern::engine::fx {

/// An effect with what its file said when it was last read.
class LoadedEffect : public FXEffect
{
public:
    LoadedEffect(std::string newID, std::shared_ptr<const EffectSyntax> newSyntax) :
        id(std::move(newID)), syntax(std::move(newSyntax))
    {}

    const std::string& getID() override { return id; }
    const std::string& getScriptClass() override { return getSyntax()->scriptClass; }
    const std::string& getEffectCode() override { return getSyntax()->code; }
    unsigned int getTechniqueCount() override { return getSyntax()->techniques.size(); }

    std::string getTechniqueNameAt(unsigned int index) override
    {
        const auto current = getSyntax();
        return index < current->techniques.size() ? current->techniques[index].name : "";
    }

    /// Any thread.
    std::shared_ptr<const EffectSyntax> getSyntax() const
    {
        const std::lock_guard<std::mutex> lock(mutex);
        return syntax;
    }

    void setSyntax(std::shared_ptr<const EffectSyntax> newSyntax)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        syntax.swap(newSyntax);
    }

private:
    const std::string id;
    mutable std::mutex mutex; // guards what follows
    std::shared_ptr<const EffectSyntax> syntax;
};

} // namespace halvern::engine::fx
