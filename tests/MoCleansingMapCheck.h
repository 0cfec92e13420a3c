#ifndef MO_CLEANSING_MAP_CHECK_H
#define MO_CLEANSING_MAP_CHECK_H

#include "MoDiffCleansingMap.h"

#include <string>

/// What is wrong with the map of a text, found out the slow way; empty when nothing is. For tests and fuzz targets.
inline std::string faultOfCleansingMap(std::string const& text, MoDiffLib::Patterns const& patterns,
                                       std::string const& cleansed) {
    MoDiffCleansingMap const map = MoDiffCleansingMap::cleanse(text, patterns);
    std::string const file = text.c_str();
    if (map.cleansedText() != cleansed || map.fileLength() != file.size())
        return "not the text that comparing sees";
    std::string rebuilt;
    std::vector<std::size_t> deletedBySteps(patterns.size() + 1);
    std::size_t next = 0; // in the file
    unsigned lastStep = 0;
    bool touches = false;
    auto const keepUntil = [&](std::size_t end) {
        for (; next < end; ++next) {
            if (map.toFile(rebuilt.size()) != next)
                return false;
            rebuilt += file[next];
        }
        return true;
    };
    for (MoDiffCleansingMap::Stretch const& stretch : map.stretches()) {
        touches = next > 0 && stretch.begin == next && touches;
        if (stretch.begin < next || stretch.length == 0 || stretch.step > patterns.size() ||
            (touches && stretch.step == lastStep))
            return "stretches out of order at byte " + std::to_string(stretch.begin);
        if (!keepUntil(stretch.begin))
            return "a byte comes from elsewhere than " + std::to_string(next);
        bool const isReturns =
            file.substr(stretch.begin, stretch.length).find_first_not_of('\r') == std::string::npos;
        if ((stretch.step == 0) != isReturns)
            return "the wrong step at byte " + std::to_string(stretch.begin);
        next = stretch.begin + stretch.length;
        lastStep = stretch.step;
        touches = true;
        deletedBySteps.at(stretch.step) += stretch.length;
    }
    if (!keepUntil(file.size()) || map.toFile(rebuilt.size()) != file.size())
        return "the end comes from elsewhere";
    if (rebuilt != cleansed)
        return "another text is rebuilt";
    return deletedBySteps == map.deletedBySteps() ? "" : "other amounts";
}

#endif
