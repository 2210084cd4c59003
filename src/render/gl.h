#pragma once

// The fixed-function OpenGL and GLU API the renderer draws with (compatibility profile).
// Internal header.

#include <GL/gl.h>
#include <GL/glu.h>
