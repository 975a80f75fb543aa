#pragma once

#include "reference/engine/ShaderFeatures.h"

#include <array>
#include <vector>

namespace halvern::engine {

/// Saves the OpenGL state of the current context and sets what OpenSceneGraph takes for granted; restores
/// the saved state at the end of its life, so that the caller's painting goes on as if nothing had been
/// drawn in between. Errors that are pending stay pending.
class GLStateGuard
{
public:
    GLStateGuard();
    ~GLStateGuard();

    GLStateGuard(const GLStateGuard&) = delete;
    GLStateGuard& operator=(const GLStateGuard&) = delete;

private:
    void save();
    void neutralize();

    struct Unit
    {
        int texture = 0;
        int sampler = 0;
    };

    const bool hasSamplers;
    std::vector<unsigned int> enabled; // of the switches that are off while drawing
    std::array<Unit, textureUnits> units;
    int activeUnit = 0;
    int clientUnit = 0;
    int drawFramebuffer = 0;
    int readFramebuffer = 0;
    int renderbuffer = 0;
    int program = 0;
    int vertexArray = 0;
    int arrayBuffer = 0;
    int packBuffer = 0;
    int unpackBuffer = 0;
    int matrixMode = 0;
    std::array<double, 16> modelView;
    std::array<double, 16> projection;
    bool attributesPushed = false;
    bool clientAttributesPushed = false;
};

} // namespace halvern::engine
