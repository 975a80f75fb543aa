#pragma once

#include <osg/GraphicsContext>

namespace halvern::engine {

/// The caller's OpenGL context, the one that is current when this is made, as OpenSceneGraph sees it: a
/// state and a context ID of its own, given back at the end.
///
/// close() frees the names of every object made with the state if that context is current, and forgets
/// them otherwise. It never touches the names of another context.
class EmbeddedContext : public osg::GraphicsContext
{
public:
    EmbeddedContext();

    /// Whether the context is current on this thread.
    bool isCurrent() const;

    bool valid() const override { return true; }
    bool isRealizedImplementation() const override { return true; }
    bool realizeImplementation() override { return true; }
    bool makeCurrentImplementation() override { return isCurrent(); }
    bool makeContextCurrentImplementation(osg::GraphicsContext*) override { return false; }
    bool releaseContextImplementation() override { return true; }
    void closeImplementation() override {}
    void bindPBufferToTextureImplementation(GLenum) override {}
    void swapBuffersImplementation() override {}

protected:
    ~EmbeddedContext() override;

private:
    void* const nativeContext;
    unsigned int marker = 0; // a buffer whose contents are the serial
    const unsigned long long serial;
};

} // namespace halvern::engine
