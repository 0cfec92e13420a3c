#include "MoDiffXmlFileEngine.h"

#include "MoDiffFormatEngine.h"

MO_DIFF_TEXT_ENGINE(MoDiffXmlFileEngine, kXmlFormat)
