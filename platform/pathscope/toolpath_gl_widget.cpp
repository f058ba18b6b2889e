#include "pathscope/toolpath_gl_widget.h"
