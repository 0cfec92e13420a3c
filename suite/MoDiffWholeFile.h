#ifndef MO_DIFF_WHOLE_FILE_H
#define MO_DIFF_WHOLE_FILE_H

#include <string>
#include <string_view>

/// A file of results that somebody names: it is there as a whole or not at all. Errors raise std::exception.
namespace MoDiffWholeFile {

/// Makes sure that the file can be written and removes an old one, so that it is never taken for that of a run that
/// failed.
void prepare(std::string const& fileName);

/// Puts the contents in the place of the file that has the name, or to which a link of the name leads; its
/// permissions stay. What is no regular file, a pipe, say, is written to. When that fails, what stood there stays.
void write(std::string const& fileName, std::string_view contents);

} // namespace MoDiffWholeFile

#endif
