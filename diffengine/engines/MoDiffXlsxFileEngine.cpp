#include "MoDiffXlsxFileEngine.h"

#include "MoDiffFormatEngine.h"

MO_DIFF_TOOL_ENGINE(MoDiffXlsxFileEngine, kXlsxFormat)
