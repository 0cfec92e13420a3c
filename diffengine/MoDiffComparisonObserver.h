#ifndef MO_DIFF_COMPARISON_OBSERVER_H
#define MO_DIFF_COMPARISON_OBSERVER_H

#include "KLTExport.h"

#include <cstddef>
#include <cstdint>

class MoDiffLib;
class MoDiffNormalizationPattern;

/// Is told what a comparison reads and deletes, while the library compares.
///
/// Texts and bytes belong to the library and are valid during the call only. What an observer raises ends the
/// comparison and reaches its caller. While an observer is set, texts that are equal already are cleansed too (one of
/// them, which serves for both), so that their hidden bytes are known; verdicts stay the same.
class KLT_EXPORT MoDiffComparisonObserver {
public:
    enum Side { eMaster, eActual };

    virtual ~MoDiffComparisonObserver();

    /// Both files of a text comparison have been read whole, and nothing is cleansed yet.
    /// @param master       masterLength bytes as the file has them, NULs within included, and a NUL behind them
    /// @param masterLength in bytes; beyond the text's first NUL nothing is cleansed and compared
    /// @param actual       as master
    /// @param actualLength as masterLength
    virtual void textsRead(char const* master, std::size_t masterLength, char const* actual,
                           std::size_t actualLength);

    /// Bytes of a file that is compared byte for byte, in the file's order. What stands behind the block with the
    /// first difference is not told, and nothing of two regular files whose lengths tell them apart.
    /// @param count in bytes, more than 0
    virtual void blockRead(Side side, char const* bytes, std::size_t count);

    /// A step of cleansing has been done on both sides; called once for each step, in their order, when all are done.
    /// @param pattern       null for the deletion of the carriage returns
    /// @param masterDeleted in bytes
    /// @param actualDeleted in bytes
    virtual void textsCleansed(MoDiffNormalizationPattern const* pattern, std::size_t masterDeleted,
                               std::size_t actualDeleted);

    /// What the system tells of a file whose text is told.
    struct File {
        std::uint64_t device; ///< with inode: which file it is
        std::uint64_t inode;
        std::int64_t modified; ///< when it was, before it was opened: seconds since 1970
        bool hasChanged;       ///< whether it was written, replaced or removed while it was read
    };
    /// The file of a side, while textsRead() is called.
    static File const& file(Side side);

    /// Sets the observer of all comparisons in the process, which must live until another one is set. Not to be
    /// called by several threads at once, nor while something is compared.
    /// @param observer null for none
    /// @return the one before, null for none
    static MoDiffComparisonObserver* set(MoDiffComparisonObserver* observer);

    /// The observer that is set, null for none.
    static MoDiffComparisonObserver* current();

private:
    friend class MoDiffLib;
    KLT_LOCAL static void setFiles(File const& master, File const& actual);
};

#endif
