#include "MoHelper.h"

#include "KLTByteBuffer.h"

#include <cstring>
#include <utility>

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
    // Both are made before either is stored: an output may be the input.
    std::string::size_type const dot = fileName.rfind('.');
    std::string newBase = fileName.substr(0, dot);
    std::string newExtension = dot == std::string::npos ? std::string() : fileName.substr(dot + 1);
    base = std::move(newBase);
    extension = std::move(newExtension);
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
