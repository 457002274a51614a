// A platform source that reaches up into geometry: the folder rules must reject it.
#include "geometry/traverse.h"
