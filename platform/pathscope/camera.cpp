#include "pathscope/camera.h"
