#pragma once

#include "engine/Export.h"

#include <memory>
#include <string>

namespace halvern::scene {

/// An effect file known to the scene. Immutable.
class HALVERN_SCENE_API Effect
{
public:
    /// The third text is reserved and always empty.
    Effect(std::string id, std::string fileName, std::string third);
    virtual ~Effect();

    Effect(const Effect&) = delete;
    Effect& operator=(const Effect&) = delete;

    /// What materials name it by.
    virtual const std::string& getID() const;

    /// As it was given. Where files are looked for is up to the engine.
    virtual const std::string& getFileName() const;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::scene
