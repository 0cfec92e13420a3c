#include "MoDiffXlsFileEngine.h"

#include "MoDiffFormatEngine.h"

MO_DIFF_TEXT_ENGINE(MoDiffXlsFileEngine, kXlsFormat)
