#pragma once

// The OpenGL functions that the engine calls by itself; everything else goes through OpenSceneGraph.
#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>
