#pragma once

// The fixed-function OpenGL and GLU API the renderer draws with (compatibility profile),
// with the prototypes of the entry points after OpenGL 1.1 that it uses
// (glMultiDrawArrays). Internal header.

#ifndef GL_GLEXT_PROTOTYPES
#define GL_GLEXT_PROTOTYPES 1
#endif
#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glu.h>
