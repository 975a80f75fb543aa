#pragma once

namespace halvern::scene {

/// Lets this library look into the hidden parts of the scene's classes. Each class befriends it; a hidden
/// part is declared in <Class>Private.h.
struct Internals
{
    template <class Object>
    static auto& of(Object& object)
    {
        return *object.d;
    }
};

} // namespace halvern::scene
