#ifndef MO_HELPER_H
#define MO_HELPER_H

#include "KLTExport.h"

#include <string>

class KLTByteBuffer;

/// Text helpers. May be called from several threads at once.
class KLT_EXPORT MoHelper {
public:
    /// Splits a file name at its last dot: *r.2026.html* gives the base *r.2026* and the extension *html*. A name
    /// without a dot is all base.
    static void fileBasename(std::string const& fileName, std::string& base, std::string& extension);

    /// Appends the bytes of a text with the five characters special to XML (& < > " ') replaced by their entities.
    /// @param text   not null unless the length is 0; may hold NUL bytes
    /// @param length in bytes
    static void xmlEncode(char const* text, unsigned long length, KLTByteBuffer& out);
};

#endif
