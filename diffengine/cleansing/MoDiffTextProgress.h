#ifndef MO_DIFF_TEXT_PROGRESS_H
#define MO_DIFF_TEXT_PROGRESS_H

#include <cstddef>

/// How far an expression's matches have been deleted from a text that becomes known from its start on. What survives
/// is written where the text began, never beyond what has been read.
struct MoDiffTextProgress {
    explicit MoDiffTextProgress(char* text) : written(text), read(text) {}

    char* written;             ///< where what survives next is put
    char const* read;          ///< from here on nothing has been decided
    std::size_t wanted = 0;    ///< with fewer bytes behind read, nothing more can be decided
    bool isBehindWord = false; ///< whether read follows a character of words
};

#endif
