#ifndef MO_DIFF_SCRIPT_TABLE_H
#define MO_DIFF_SCRIPT_TABLE_H

#include <string>

/// The words of the scripts that compare workbooks, documents and models as HTML.
namespace MoDiffScriptTable {

/// Lines about cells in a table: sheet, cell, what differs, master, actual. Others as they are, lines of a diff with
/// their colours.
std::string toHtml(std::string const& output);

} // namespace MoDiffScriptTable

#endif
