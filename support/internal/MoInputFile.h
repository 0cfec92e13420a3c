#ifndef MO_INPUT_FILE_H
#define MO_INPUT_FILE_H

#include <cstddef>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>

/// A file that is read from its start on, without a stream and a buffer of its own; closed at the end of its scope.
class MoInputFile {
public:
    /// Opens it, closed on exec; a failure shows only in isOpen(). A FIFO is waited for until it has a writer.
    explicit MoInputFile(std::string const& name);
    ~MoInputFile();
    MoInputFile(MoInputFile const&) = delete;
    MoInputFile& operator=(MoInputFile const&) = delete;

    bool isOpen() const { return m_descriptor >= 0; }

    /// What the system tells of it; all zeros when it tells nothing.
    struct stat status() const;

    /// Where seeking to the end leads, in bytes; 0 when it cannot. The position stays as it is.
    off_t seekLength() const;

    /// Reads as much as comes at once. Returns the count, 0 only at the end, or -1 for a read error.
    /// @param count at most, more than 0
    ssize_t readSome(char* bytes, std::size_t count);

    /// Reads as much as the file goes. Returns the count, less than asked for only at the end of the file, or -1 for
    /// a read error.
    ssize_t read(char* bytes, std::size_t count);

private:
    int m_descriptor;
};

#endif
