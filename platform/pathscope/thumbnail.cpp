#include "pathscope/thumbnail.h"
