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

    virtual const std::string& getID() const;
    virtual const std::string& getFileName() const;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::scene
