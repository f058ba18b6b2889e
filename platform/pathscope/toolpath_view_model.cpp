#include "pathscope/toolpath_view_model.h"
