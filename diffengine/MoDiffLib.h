#ifndef MO_DIFF_LIB_H
#define MO_DIFF_LIB_H

#include "KLTExport.h"

#include <list>
#include <memory>
#include <string>

class MoDiffNormalizationPattern;
class MoDiffResult;
class MoFileHandle;

/// Compares files as text, after cleansing both sides with the same patterns.
///
/// A text is a NUL-terminated char array allocated with new[]; its first NUL byte ends it. Results are new objects
/// that the caller owns. Nothing is kept between calls, but the patterns are shared objects: two comparisons that use
/// the same pattern must not run at the same time. Errors raised by a pattern pass through; files are closed and
/// texts freed before any error leaves.
class KLT_EXPORT MoDiffLib {
public:
    using Text = std::unique_ptr<char[]>;
    using Patterns = std::list<MoDiffNormalizationPattern const*>;

    MoDiffLib();
    virtual ~MoDiffLib();

    /// Reads, cleanses and compares two files.
    /// @param writeCleansed when not 0, the cleansed texts are written beside the files, with ".cleansed" appended to
    ///        their names; what cannot be written is skipped
    /// @return pass, file missing (the master first), or different: with the cleansed texts when there are patterns
    static MoDiffResult* textFileComparison(std::string const& masterName, std::string const& actualName,
                                            Patterns const& patterns, int writeCleansed);

    /// Cleanses and compares two texts, both not null. A result that carries them takes them out of their holders.
    static MoDiffResult* textBufferComparison(std::string const& masterName, std::string const& actualName,
                                              Text& masterBuffer, Text& actualBuffer, Patterns const& patterns,
                                              int writeCleansed);

    /// Returns a MoDiffResultFailFileMissing when one of the files is not open, the master first, otherwise null.
    static MoDiffResult* checkOpenFiles(std::string const& masterName, std::string const& actualName,
                                        MoFileHandle& masterFile, MoFileHandle& actualFile);

    /// Reads the rest of an open file into a new[] array that the caller owns. Raises KLTAssertError when the file
    /// cannot be read to its end or is too large, KLTOutOfMemoryError when memory is exhausted.
    static char* slurpFile(MoFileHandle& file);

    /// Reads two open files that stand at their start, the master first, as slurpFile() does, and shows them to the
    /// observer (MoDiffComparisonObserver).
    static void slurpFiles(MoFileHandle& masterFile, MoFileHandle& actualFile, Text& master, Text& actual);

    /// Removes the carriage returns, then the matches of each pattern in list order, from both texts in place. Raises
    /// KLTAssertError when a text or a pattern is null.
    static void cleanse(char* masterBuffer, char* currentBuffer, Patterns const& patterns);
    /// The same; the lengths are not used.
    static void cleanse(char* masterBuffer, char* currentBuffer, Patterns const& patterns, long masterLength,
                        long currentLength);

    /// Returns the byte index of the first difference, or -1 when the texts are equal. A text that begins the other
    /// one parts from it at its own terminator. Raises KLTAssertError when a text is null.
    static long compareStrings(char const* masterBuffer, char const* currentBuffer);

    /// Makes the result for a position found by compareStrings().
    /// @param normalized when not 0, a difference takes both texts out of their holders into its result
    static MoDiffResult* createComparisonResult(std::string const& masterName, std::string const& actualName,
                                                Text& masterBuffer, Text& actualBuffer, long position,
                                                int normalized);

private:
    struct ReadFile;
    KLT_LOCAL static void tellRead(ReadFile const& master, ReadFile const& actual);
};

#endif
