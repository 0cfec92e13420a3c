#include "MoHelper.h"

#include "KLTByteBuffer.h"

#include <cstring>

namespace {

/// The entity of a character, or null when it stands for itself.
char const* xmlEntity(char character) {
    switch (character) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\'':
        return "&apos;";
    default:
        return nullptr;
    }
}

} // namespace

void MoHelper::fileBasename(std::string const& fileName, std::string& base, std::string& extension) {
    // Copies first: an output may be the input.
    std::string const name = fileName;
    std::string::size_type const dot = name.rfind('.');
    base = name.substr(0, dot);
    extension = dot == std::string::npos ? std::string() : name.substr(dot + 1);
}

void MoHelper::xmlEncode(char const* text, unsigned long length, KLTByteBuffer& out) {
    unsigned long plainStart = 0;
    for (unsigned long i = 0; i < length; ++i) {
        char const* const entity = xmlEntity(text[i]);
        if (!entity)
            continue;
        out.append(text + plainStart, i - plainStart);
        out.append(entity, std::strlen(entity));
        plainStart = i + 1;
    }
    out.append(text + plainStart, length - plainStart);
}
