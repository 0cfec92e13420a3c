#ifndef MO_READ_OPEN_H
#define MO_READ_OPEN_H

/// Opens files for reading without the risk of waiting for ever.
class MoReadOpen {
public:
    enum DirectoryRule { eRefuseDirectory, eAcceptDirectory };

    /// Opens a file for reading, closed on exec. A FIFO is given one second for a writer to appear.
    /// @return a descriptor that the caller closes, or -1 with errno set
    static int openDescriptor(char const* name, DirectoryRule directories);
};

#endif
