#pragma once

#include <string>

namespace halvern::scene {

/// What a file is, for the places where Assimp's importers do not agree with each other.
struct FileFacts
{
    std::string format; ///< as Assimp calls it
    float unit = 1;     ///< length of the file's unit in the scene

    bool isGltf() const { return startsWith("glTF"); }
    bool isCollada() const { return startsWith("Collada"); }
    bool isLightWave() const { return startsWith("LightWave"); }
    bool isIrrlicht() const { return startsWith("Irrlicht"); }
    bool isASE() const { return startsWith("ASE"); }

private:
    bool startsWith(const char* text) const { return format.rfind(text, 0) == 0; }
};

} // namespace halvern::scene
