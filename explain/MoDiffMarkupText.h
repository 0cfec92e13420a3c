#ifndef MO_DIFF_MARKUP_TEXT_H
#define MO_DIFF_MARKUP_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

/// Bytes of names and reports as they may stand in XML, in texts and between quotation marks.
namespace MoDiffMarkupText {

/// What MoDiffShownText::escaped() shows, as XML.
std::string escaped(std::string_view text);

/// What MoDiffShownText::printable() shows, as XML: for words that escape what is in them already.
std::string printable(std::string_view text);

/// The beginning of such XML that takes no more than so many bytes; neither characters nor entities are cut.
std::string_view fit(std::string_view markup, std::size_t bytes);

} // namespace MoDiffMarkupText

#endif
