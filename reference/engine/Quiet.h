#pragma once

namespace halvern::engine {

/// Keeps OpenSceneGraph from writing about broken textures and the like to the host's standard error. A
/// level that is set by the environment variable OSG_NOTIFY_LEVEL stays.
void quietenOpenSceneGraph();

} // namespace halvern::engine
