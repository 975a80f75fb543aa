#pragma once

#include <functional>

namespace halvern::scene {

/// Runs the function on a thread with a stack for some hundred thousand levels of recursion, and waits for
/// it: Assimp follows the levels of a file's tree that way. Its exception comes out here.
void runOnDeepStack(const std::function<void()>& function);

} // namespace halvern::scene
