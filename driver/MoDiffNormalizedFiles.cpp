#include "MoDiffNormalizedFiles.h"

#include "MoDiffTrouble.h"

#include <cstring>
#include <filesystem>

void MoDiffNormalizedFiles::comparisonNotification(MoDiffResultFailDiffNormalized const& result) {
    MoDiffLogNormalized::comparisonNotification(result);
    check(result.getActualName() + ".normalized_master", result.getNormalizedMaster());
    check(result.getActualName() + ".normalized_actual", result.getNormalizedActual());
}

void MoDiffNormalizedFiles::check(std::string const& fileName, char const* text) {
    std::error_code error;
    if (std::filesystem::file_size(fileName, error) != std::strlen(text) || error)
        m_trouble.report("cannot write " + fileName);
}
