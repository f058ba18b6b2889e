#include "pathscope/toolpath_overlay.h"
