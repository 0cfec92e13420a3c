#include "MoDiffXlwaFileEngine.h"

#include "MoDiffFormatEngine.h"

MO_DIFF_TEXT_ENGINE(MoDiffXlwaFileEngine, kXlwaFormat)
