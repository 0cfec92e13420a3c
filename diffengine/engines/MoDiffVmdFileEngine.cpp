#include "MoDiffVmdFileEngine.h"

#include "MoDiffFormatEngine.h"

MO_DIFF_TOOL_ENGINE(MoDiffVmdFileEngine, kVmdFormat)
