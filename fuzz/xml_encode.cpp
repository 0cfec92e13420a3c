// Any text but NUL bytes, encoded, must come back from an XML parser, as an element's text and as an attribute's
// value.

#include "KLTByteBuffer.h"
#include "MoFuzz.h"
#include "MoHelper.h"

#include <pugixml.hpp>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::size_t const kLongest = 1500; // beyond the buffer's first two steps of growth
    if (size > kLongest)
        return 0;
    std::string text = MoFuzzInput(data, size).rest();
    std::replace(text.begin(), text.end(), '\0', '&');
    std::unique_ptr<char[]> const exact(new char[text.size()]);
    std::copy(text.begin(), text.end(), exact.get());
    KLTByteBuffer encoded(256, 256);
    MoHelper::xmlEncode(exact.get(), static_cast<unsigned long>(text.size()), encoded);
    MO_FUZZ_REQUIRE(std::strlen(encoded.str()) == encoded.length());

    std::string const element =
        std::string("<e a=\"") + encoded.str() + "\" b='" + encoded.str() + "'>|" + encoded.str() + "|</e>";
    pugi::xml_document document;
    // The parser is to change nothing but entities, so that line ends and invalid UTF-8 come back as they are.
    MO_FUZZ_REQUIRE(document.load_buffer(element.data(), element.size(), pugi::parse_escapes, pugi::encoding_utf8));
    pugi::xml_node const root = document.child("e");
    MO_FUZZ_REQUIRE(root.attribute("a").value() == text);
    MO_FUZZ_REQUIRE(root.attribute("b").value() == text);
    MO_FUZZ_REQUIRE(root.child_value() == "|" + text + "|");
    return 0;
}
