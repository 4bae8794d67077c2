#pragma once

// Put before the source of the XML library where it is built for Windows. The store holds texts and
// whole numbers only; the runtime's conversions of floating numbers would be a twentieth of the
// program, which every start loads over the network. Who would call them all the same ends at once.

#include <stdio.h>
#include <stdlib.h>

#define snprintf(...) (abort(), 0)
#define strtod(...) (abort(), 0.0)
