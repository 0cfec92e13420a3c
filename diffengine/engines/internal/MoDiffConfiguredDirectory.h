#ifndef MO_DIFF_CONFIGURED_DIRECTORY_H
#define MO_DIFF_CONFIGURED_DIRECTORY_H

#include "KLTFmDir.h"
#include "MoDiffFileEngine.h"

#include <stdexcept>
#include <string>

/// What the engines share whose directories come from constructor arguments.
namespace MoDiffConfiguredDirectory {

inline std::string required(char const* text) {
    if (!text)
        throw std::logic_error("the output directory type name is required");
    return text;
}

inline std::string optional(char const* text) {
    return text ? text : "";
}

/// Master directory, folder (if any) and report name.
inline std::string reportPath(MoDiffFileEngine const& engine, std::string const& masterSubDirectory,
                              std::string const& actualFile) {
    std::string path = engine.getMasterFileDirectory(actualFile);
    if (!masterSubDirectory.empty())
        KLTFmDir::joinPath(path, masterSubDirectory.c_str());
    KLTFmDir::joinPath(path, engine.getReportName(actualFile).c_str());
    return path;
}

} // namespace MoDiffConfiguredDirectory

#endif
