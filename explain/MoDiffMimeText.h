#ifndef MO_DIFF_MIME_TEXT_H
#define MO_DIFF_MIME_TEXT_H

#include <string>
#include <string_view>

/// The page in an archive of one: what a browser shows of an MHT file.
namespace MoDiffMimeText {

/// The first part of the type text/html, decoded; "" when there is none.
std::string firstHtml(std::string_view archive);

} // namespace MoDiffMimeText

#endif
