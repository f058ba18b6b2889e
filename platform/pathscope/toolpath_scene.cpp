#include "pathscope/toolpath_scene.h"
