#include "MoDiffXhtmlFileEngine.h"

#include "MoDiffFormatEngine.h"

MO_DIFF_TEXT_ENGINE(MoDiffXhtmlFileEngine, kXhtmlFormat)
