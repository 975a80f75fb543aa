#include "reference/engine/EmbeddedContext.h"

#include "reference/engine/NativeContext.h"
#include "reference/engine/Quiet.h"
#include <GL/gl.h>

#include <atomic>
#include <chrono>

namespace halvern::engine {

namespace {

/// Never the same twice, not even in two processes whose contexts share one server.
unsigned long long newSerial()
{
    static std::atomic<unsigned long long> count{0};
    return std::chrono::steady_clock::now().time_since_epoch().count() * 1000 + ++count;
}

} // namespace

EmbeddedContext::EmbeddedContext() : nativeContext(currentNativeContext()), serial(newSerial())
{
    quietenOpenSceneGraph();
    int bound = 0;
    glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &bound);
    glGenBuffers(1, &marker);
    glBindBuffer(GL_ARRAY_BUFFER, marker);
    glBufferData(GL_ARRAY_BUFFER, sizeof serial, &serial, GL_STATIC_READ);
    glBindBuffer(GL_ARRAY_BUFFER, bound);

    osg::ref_ptr<osg::State> state = new osg::State;
    state->setGraphicsContext(this);
    state->setContextID(createNewContextID());
    // An error of the caller's is the caller's to find.
    state->setCheckForGLErrors(osg::State::NEVER_CHECK_GL_ERRORS);
    setState(state);
}

EmbeddedContext::~EmbeddedContext()
{
    if (isCurrent())
        glDeleteBuffers(1, &marker);
}

bool EmbeddedContext::isCurrent() const
{
    if (!nativeContext || currentNativeContext() != nativeContext)
        return false;
    // The address of a context that is gone may be another's now: look for the mark that was left in it.
    if (!glIsBuffer(marker))
        return false;
    int bound = 0;
    int size = 0;
    unsigned long long found = 0;
    glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &bound);
    glBindBuffer(GL_ARRAY_BUFFER, marker);
    glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &size);
    if (size == int(sizeof found))
        glGetBufferSubData(GL_ARRAY_BUFFER, 0, sizeof found, &found);
    glBindBuffer(GL_ARRAY_BUFFER, bound);
    return found == serial;
}

} // namespace halvern::engine
