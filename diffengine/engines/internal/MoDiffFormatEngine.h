#ifndef MO_DIFF_FORMAT_ENGINE_H
#define MO_DIFF_FORMAT_ENGINE_H

#include "MoDiffFormat.h"

// An engine is its row in MoDiffFormat.cpp: these define the members that follow from it. An engine holds no pointer
// to its row, since programs built with an older library know its size, and they link to the functions of each engine
// by name.

/// Where the files of an engine lie; format is its MoDiffFormat.
#define MO_DIFF_ENGINE_FILES(Engine, format)                                                                         \
    std::string Engine::getOutputDirectoryTypeName() const {                                                         \
        return (format).typeName;                                                                                    \
    }                                                                                                                \
    std::string Engine::getMasterFileGlobExpression(std::string const& actualFile) const {                           \
        return (format).masterGlob(*this, actualFile);                                                               \
    }

/// An engine that compares text after cleansing; its row is a MoDiffTextFormat.
#define MO_DIFF_TEXT_ENGINE(Engine, row)                                                                             \
    Engine::Engine(char const* subDirectory) : MoDiffTextFileTypeEngine(subDirectory, row) {                         \
    }                                                                                                                \
    MO_DIFF_ENGINE_FILES(Engine, (row).files)

/// An engine that has a script compare; its row is a MoDiffToolFormat.
#define MO_DIFF_TOOL_ENGINE(Engine, row)                                                                             \
    Engine::Engine(char const* subDirectory) : MoDiffFileEngine(subDirectory) {                                      \
    }                                                                                                                \
    MO_DIFF_ENGINE_FILES(Engine, (row).files)                                                                        \
    MoDiffResult* Engine::performDiff(std::string const& masterFile, std::string const& actualFile) const {          \
        return (row).performDiff(*this, masterFile, actualFile);                                                     \
    }

#endif
