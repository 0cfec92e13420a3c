#include "MoDiffLayoutDataXmlFileEngine.h"

#include "MoDiffFormatEngine.h"

MO_DIFF_TEXT_ENGINE(MoDiffLayoutDataXmlFileEngine, kLayoutDataXmlFormat)
