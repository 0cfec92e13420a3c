#ifndef LIB_MO_DIFF_ENGINE_H
#define LIB_MO_DIFF_ENGINE_H

// Everything that the library offers. Start reading at MoDiffEngineRegistry.h.

// The comparison side: registry, results, listeners, texts and patterns.
#include "MoDiffEngine.h"
#include "MoDiffEngineRegistry.h"
#include "MoDiffFileEngine.h"
#include "MoDiffFileLog.h"
#include "MoDiffFloatComparison.h"
#include "MoDiffLib.h"
#include "MoDiffListener.h"
#include "MoDiffLogNormalized.h"
#include "MoDiffNormalizationPattern.h"
#include "MoDiffNormalizationPatterns.h"
#include "MoDiffQptLog.h"
#include "MoDiffResult.h"
#include "MoDiffResultFail.h"
#include "MoDiffResultFailDiff.h"
#include "MoDiffResultFailDiffNormalized.h"
#include "MoDiffResultFailFileMissing.h"
#include "MoDiffResultPass.h"
#include "MoDiffScriptRunner.h"
#include "MoDiffStreamLog.h"
#include "MoOutputFormat.h"

// One engine per output format.
#include "MoDiffCsiFileEngine.h"
#include "MoDiffCsvFileEngine.h"
#include "MoDiffHtmlFileEngine.h"
#include "MoDiffLayoutDataXmlFileEngine.h"
#include "MoDiffMhtFileEngine.h"
#include "MoDiffNaoFileEngine.h"
#include "MoDiffPagedLayoutDataXmlFileEngine.h"
#include "MoDiffPdfFileEngine.h"
#include "MoDiffPrpFileEngine.h"
#include "MoDiffRawXmlFileEngine.h"
#include "MoDiffSingleXlsFileEngine.h"
#include "MoDiffTextFileTypeEngine.h"
#include "MoDiffTvdFileEngine.h"
#include "MoDiffVmdFileEngine.h"
#include "MoDiffXhtmlFileEngine.h"
#include "MoDiffXlsFileEngine.h"
#include "MoDiffXlsxFileEngine.h"
#include "MoDiffXlwaFileEngine.h"
#include "MoDiffXmlFileEngine.h"

// The test harness.
#include "QPTOutputLock.h"
#include "QPTTestCase.h"
#include "QPTTestHarness.h"
#include "QPTTestTimer.h"

// The support layer.
#include "I18NConverter.h"
#include "I18NString.h"
#include "KLTAssert.h"
#include "KLTAssertError.h"
#include "KLTByteBuffer.h"
#include "KLTFileLocation.h"
#include "KLTFmDir.h"
#include "KLTOutOfMemoryError.h"
#include "KLTStdExceptionError.h"
#include "KLTThreadCriticalSection.h"
#include "KLTThreadGuard.h"
#include "KLTThreadLockableResource.h"
#include "KLTThrowable.h"
#include "KLTUtMemory.h"
#include "MoFileHandle.h"
#include "MoGlob.h"
#include "MoHelper.h"

#endif
