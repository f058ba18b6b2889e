#include "pathscope/toolpath_loader.h"
