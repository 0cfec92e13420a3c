#include "MoDiffNaoFileEngine.h"

#include "MoDiffFormatEngine.h"

MO_DIFF_TEXT_ENGINE(MoDiffNaoFileEngine, kNaoFormat)
