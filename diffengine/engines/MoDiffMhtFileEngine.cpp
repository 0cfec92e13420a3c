#include "MoDiffMhtFileEngine.h"

#include "MoDiffFormatEngine.h"

MO_DIFF_TEXT_ENGINE(MoDiffMhtFileEngine, kMhtFormat)
