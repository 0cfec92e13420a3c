#include "MoDiffPdfFileEngine.h"

#include "MoDiffFormatEngine.h"

MO_DIFF_TOOL_ENGINE(MoDiffPdfFileEngine, kPdfFormat)
