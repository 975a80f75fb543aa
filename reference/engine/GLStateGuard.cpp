#include "reference/engine/GLStateGuard.h"

#include <GL/gl.h>

namespace halvern::engine {

namespace {

/// What must be off while the engine draws. Saved one by one, since no attribute group has all of them.
struct Switch
{
    GLenum name;
    int sinceVersion; ///< ten times the OpenGL version
};

const Switch switches[] = {{GL_ALPHA_TEST, 30},
                           {GL_BLEND, 30},
                           {GL_CLIP_PLANE0, 30},
                           {GL_CLIP_PLANE1, 30},
                           {GL_CLIP_PLANE2, 30},
                           {GL_CLIP_PLANE3, 30},
                           {GL_CLIP_PLANE4, 30},
                           {GL_CLIP_PLANE5, 30},
                           {GL_COLOR_LOGIC_OP, 30},
                           {GL_CULL_FACE, 30},
                           {GL_DEPTH_CLAMP, 32},
                           {GL_DEPTH_TEST, 30},
                           {GL_FRAMEBUFFER_SRGB, 30},
                           {GL_LINE_SMOOTH, 30},
                           {GL_LINE_STIPPLE, 30},
                           {GL_POINT_SMOOTH, 30},
                           {GL_POINT_SPRITE, 30},
                           {GL_POLYGON_OFFSET_FILL, 30},
                           {GL_POLYGON_OFFSET_LINE, 30},
                           {GL_POLYGON_OFFSET_POINT, 30},
                           {GL_POLYGON_SMOOTH, 30},
                           {GL_POLYGON_STIPPLE, 30},
                           {GL_PRIMITIVE_RESTART, 31},
                           {GL_RASTERIZER_DISCARD, 30},
                           {GL_SAMPLE_ALPHA_TO_COVERAGE, 30},
                           {GL_SAMPLE_ALPHA_TO_ONE, 30},
                           {GL_SAMPLE_COVERAGE, 30},
                           {GL_SCISSOR_TEST, 30},
                           {GL_STENCIL_TEST, 30},
                           {GL_VERTEX_PROGRAM_POINT_SIZE, 30},
                           {GL_VERTEX_PROGRAM_TWO_SIDE, 30}};

const GLenum unpackSettings[] = {GL_UNPACK_SWAP_BYTES,   GL_UNPACK_LSB_FIRST, GL_UNPACK_ROW_LENGTH,
                                 GL_UNPACK_IMAGE_HEIGHT, GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS,
                                 GL_UNPACK_SKIP_IMAGES};

int get(GLenum name)
{
    int value = 0;
    glGetIntegerv(name, &value);
    return value;
}

int version()
{
    return 10 * get(GL_MAJOR_VERSION) + get(GL_MINOR_VERSION);
}

void loadMatrix(GLenum mode, const double* matrix)
{
    glMatrixMode(mode);
    glLoadMatrixd(matrix);
}

} // namespace

GLStateGuard::GLStateGuard() : hasSamplers(version() >= 33)
{
    save();
    neutralize();
}

void GLStateGuard::save()
{
    drawFramebuffer = get(GL_DRAW_FRAMEBUFFER_BINDING);
    readFramebuffer = get(GL_READ_FRAMEBUFFER_BINDING);
    renderbuffer = get(GL_RENDERBUFFER_BINDING);
    program = get(GL_CURRENT_PROGRAM);
    vertexArray = get(GL_VERTEX_ARRAY_BINDING);
    arrayBuffer = get(GL_ARRAY_BUFFER_BINDING);
    packBuffer = get(GL_PIXEL_PACK_BUFFER_BINDING);
    unpackBuffer = get(GL_PIXEL_UNPACK_BUFFER_BINDING);
    matrixMode = get(GL_MATRIX_MODE);
    // Not on their stacks, which the caller may have filled.
    glGetDoublev(GL_MODELVIEW_MATRIX, modelView.data());
    glGetDoublev(GL_PROJECTION_MATRIX, projection.data());
    const int glVersion = version();
    for (const Switch& each : switches)
        if (glVersion >= each.sinceVersion && glIsEnabled(each.name))
            enabled.push_back(each.name);

    activeUnit = get(GL_ACTIVE_TEXTURE);
    clientUnit = get(GL_CLIENT_ACTIVE_TEXTURE);
    for (int i = 0; i < textureUnits; ++i) {
        glActiveTexture(GL_TEXTURE0 + i);
        units[i].texture = get(GL_TEXTURE_BINDING_2D);
        if (hasSamplers)
            units[i].sampler = get(GL_SAMPLER_BINDING);
    }
    glActiveTexture(activeUnit);

    attributesPushed = get(GL_ATTRIB_STACK_DEPTH) < get(GL_MAX_ATTRIB_STACK_DEPTH);
    if (attributesPushed)
        glPushAttrib(GL_ALL_ATTRIB_BITS);
    clientAttributesPushed = get(GL_CLIENT_ATTRIB_STACK_DEPTH) < get(GL_MAX_CLIENT_ATTRIB_STACK_DEPTH);
    if (clientAttributesPushed)
        glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
}

void GLStateGuard::neutralize()
{
    for (unsigned int name : enabled)
        glDisable(name);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDepthMask(GL_TRUE);
    glDepthFunc(GL_LESS);
    glDepthRange(0, 1);
    glStencilMask(~0u);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glFrontFace(GL_CCW);
    glLineWidth(1);
    glPointSize(1);
    glBlendEquation(GL_FUNC_ADD);
    for (GLenum setting : unpackSettings)
        glPixelStorei(setting, 0);

    glUseProgram(0);
    glBindVertexArray(0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    if (hasSamplers)
        for (int i = 0; i < textureUnits; ++i)
            glBindSampler(i, 0);
    glMatrixMode(GL_MODELVIEW);
    glActiveTexture(GL_TEXTURE0);
    glClientActiveTexture(GL_TEXTURE0);
}

GLStateGuard::~GLStateGuard()
{
    // The draw buffers are among the attributes, and are those of the framebuffer that is bound.
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, drawFramebuffer);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, readFramebuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
    if (clientAttributesPushed)
        glPopClientAttrib();
    if (attributesPushed)
        glPopAttrib();

    for (int i = 0; i < textureUnits; ++i) {
        glActiveTexture(GL_TEXTURE0 + i);
        glBindTexture(GL_TEXTURE_2D, units[i].texture);
        if (hasSamplers)
            glBindSampler(i, units[i].sampler);
    }
    glActiveTexture(activeUnit);
    glClientActiveTexture(clientUnit);
    for (unsigned int name : enabled)
        glEnable(name);
    loadMatrix(GL_MODELVIEW, modelView.data());
    loadMatrix(GL_PROJECTION, projection.data());
    glMatrixMode(matrixMode);

    glBindVertexArray(vertexArray);
    glBindBuffer(GL_ARRAY_BUFFER, arrayBuffer);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, packBuffer);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, unpackBuffer);
    glUseProgram(program);
}

} // namespace halvern::engine
