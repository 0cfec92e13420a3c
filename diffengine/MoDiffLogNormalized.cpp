#include "MoDiffLogNormalized.h"

#include <fstream>

MoDiffLogNormalized::MoDiffLogNormalized() = default;

MoDiffLogNormalized::~MoDiffLogNormalized() = default;

void MoDiffLogNormalized::comparisonNotification(MoDiffResultFailDiffNormalized const& result) {
    writeNormalizedFile(result.getActualName(), ".normalized_master", result.getNormalizedMaster());
    writeNormalizedFile(result.getActualName(), ".normalized_actual", result.getNormalizedActual());
}

void MoDiffLogNormalized::writeNormalizedFile(std::string const& fileName, char const* suffix, char const* text) {
    std::ofstream(fileName + suffix, std::ios::out | std::ios::trunc) << text;
}
