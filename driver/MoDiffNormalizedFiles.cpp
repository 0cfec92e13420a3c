#include "MoDiffNormalizedFiles.h"

#include "MoDiffGuardedFiles.h"

#include <cstring>
#include <filesystem>
#include <stdexcept>

void MoDiffNormalizedFiles::comparisonNotification(MoDiffResultFailDiffNormalized const& result) {
    std::string const master = result.getActualName() + ".normalized_master";
    std::string const actual = result.getActualName() + ".normalized_actual";
    for (std::string const& name : {master, actual})
        if (char const* const other = m_files.find(name))
            throw std::runtime_error("the normalized text would overwrite " + std::string(other) + ", " + name);
    MoDiffLogNormalized::comparisonNotification(result);
    auto const check = [](std::string const& name, char const* text) {
        std::error_code error;
        if (std::filesystem::file_size(name, error) != std::strlen(text) || error)
            throw std::runtime_error("cannot write " + name);
    };
    check(master, result.getNormalizedMaster());
    check(actual, result.getNormalizedActual());
}
