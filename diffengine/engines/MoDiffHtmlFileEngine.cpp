#include "MoDiffHtmlFileEngine.h"

#include "MoDiffFormatEngine.h"

MO_DIFF_TEXT_ENGINE(MoDiffHtmlFileEngine, kHtmlFormat)
