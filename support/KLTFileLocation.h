#ifndef KLT_FILE_LOCATION_H
#define KLT_FILE_LOCATION_H

#include "KLTExport.h"

#include <string>

/// The place in the source from which an error is raised.
///
/// Keeps a copy of the name, so that a location may outlive the text it was made from. A value type: copies are
/// independent and may be used from different threads.
class KLT_EXPORT KLTFileLocation {
public:
    /// @param fileName the source module without directory and extension, for example "MoDiffLib"; null counts as
    ///        the empty name
    /// @param line     the line in it, from 1
    KLTFileLocation(char const* fileName, int line);

    /// The module's name; never null, valid as long as this object.
    char const* getFileName() const { return m_fileName.c_str(); }
    int getLine() const { return m_line; }

private:
    std::string m_fileName;
    int m_line;
};

#endif
