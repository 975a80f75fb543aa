#pragma once

#include "engine/Export.h"

namespace halvern::engine::renderer {

/// What a renderer drew. GUI thread.
class HALVERN_ENGINE_API IRenderer
{
public:
    /** @{ */
    /// Of the last frame; 0 before the first.
    virtual unsigned int getTriangleCount() = 0;
    virtual unsigned int getVertexCount() = 0;
    /** @} */

    virtual ~IRenderer();
};

} // namespace halvern::engine::renderer
