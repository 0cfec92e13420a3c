#ifndef MO_DIFF_TEXT_PROGRESS_H
#define MO_DIFF_TEXT_PROGRESS_H

#include "MoDiffDeletions.h"

#include <cstddef>
#include <cstring>

/// How far an expression's matches have been deleted from a text that becomes known from its start on. What survives
/// is written where the text began, never beyond what has been read.
class MoDiffTextProgress {
public:
    /// @param deletions is told what is deleted, unless it is null; must outlive the progress
    explicit MoDiffTextProgress(char* text, MoDiffDeletions* deletions = nullptr)
        : written(text), read(text), m_text(text), m_deletions(deletions) {}

    /// Keeps what stands before a position that is not before read.
    void keepUntil(char const* position) {
        auto const count = static_cast<std::size_t>(position - read);
        if (count < kFewBytes) {
            while (read < position)
                *written++ = *read++;
            return;
        }
        if (written != read)
            std::memmove(written, read, count);
        written += count;
        read = position;
    }

    /// Deletes what stands before a position that is not before read.
    void deleteUntil(char const* position) {
        recordDeletion(read, static_cast<std::size_t>(position - read));
        read = position;
    }

    /// Tells of bytes that are deleted by other means.
    void recordDeletion(char const* bytes, std::size_t count) {
        if (m_deletions)
            m_deletions->add(static_cast<std::size_t>(bytes - m_text), count);
    }
    bool isRecording() const { return m_deletions; }

    char* written;             ///< where what survives next is put
    char const* read;          ///< from here on nothing has been decided
    std::size_t wanted = 0;    ///< with fewer bytes behind read, nothing more can be decided
    bool isBehindWord = false; ///< whether read follows a character of words

private:
    static std::size_t constexpr kFewBytes = 8; ///< fewer bytes are moved one by one

    char const* m_text;
    MoDiffDeletions* m_deletions;
};

#endif
