#ifndef MO_DIFF_TEXT_PROGRESS_H
#define MO_DIFF_TEXT_PROGRESS_H

#include <cstddef>
#include <cstring>

class MoDiffCandidateIndex;
class MoDiffDeletions;

/// How far an expression's matches have been deleted from a text that becomes known from its start on. What survives
/// is written where the text began, never beyond what has been read.
class MoDiffTextProgress {
public:
    /// @param deletions is told what is deleted, unless it is null; must outlive the progress
    explicit MoDiffTextProgress(char* text, MoDiffDeletions* deletions = nullptr)
        : written(text), read(text), m_text(text), m_deletions(deletions), m_isTold(deletions) {}

    /// From now on an index is told, too, what is deleted by deleteUntil().
    void keepTrue(MoDiffCandidateIndex& index) {
        m_index = &index;
        m_isTold = true;
    }

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
        if (m_isTold)
            tell(bytes, count);
    }
    bool isRecording() const { return m_isTold; }

    char* written;             ///< where what survives next is put
    char const* read;          ///< from here on nothing has been decided
    std::size_t wanted = 0;    ///< with fewer bytes behind read, nothing more can be decided
    bool isBehindWord = false; ///< whether read follows a character of words

private:
    static std::size_t constexpr kFewBytes = 8; ///< fewer bytes are moved one by one

    void tell(char const* bytes, std::size_t count) const;

    char const* m_text;
    MoDiffDeletions* m_deletions;
    MoDiffCandidateIndex* m_index = nullptr;
    bool m_isTold; ///< whether anybody is told of deletions, mostly not
};

#endif
