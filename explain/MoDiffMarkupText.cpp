#include "MoDiffMarkupText.h"

#include "KLTByteBuffer.h"
#include "MoDiffShownText.h"
#include "MoHelper.h"
#include "MoUtf8.h"

namespace {

/// Of a text in which nothing is left that XML forbids.
std::string encoded(std::string const& shown) {
    KLTByteBuffer buffer(static_cast<unsigned>(shown.size()), 64);
    MoHelper::xmlEncode(shown.data(), static_cast<unsigned long>(shown.size()), buffer);
    return {buffer.str(), buffer.length()};
}

} // namespace

std::string MoDiffMarkupText::escaped(std::string_view text) {
    return encoded(MoDiffShownText::escaped(text));
}

std::string MoDiffMarkupText::printable(std::string_view text) {
    return encoded(MoDiffShownText::printable(text));
}

std::string_view MoDiffMarkupText::fit(std::string_view markup, std::size_t bytes) {
    if (markup.size() <= bytes)
        return markup;
    while (bytes > 0 && MoUtf8::isContinuation(static_cast<unsigned char>(markup[bytes])))
        --bytes;
    std::string_view const cut = markup.substr(0, bytes);
    std::size_t const entity = cut.rfind('&');
    bool const isCut = entity != std::string_view::npos && cut.find(';', entity) == std::string_view::npos;
    return isCut ? cut.substr(0, entity) : cut;
}
