#include "MoDiffPagedLayoutDataXmlFileEngine.h"

#include "MoDiffFormatEngine.h"

MO_DIFF_TEXT_ENGINE(MoDiffPagedLayoutDataXmlFileEngine, kPagedLayoutDataXmlFormat)
