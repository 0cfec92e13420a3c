#include "MoDiffRawXmlFileEngine.h"

#include "MoDiffFormatEngine.h"

MO_DIFF_TEXT_ENGINE(MoDiffRawXmlFileEngine, kRawXmlFormat)
