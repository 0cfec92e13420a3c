#ifndef MO_DIFF_INSTALL_TOOLS_H
#define MO_DIFF_INSTALL_TOOLS_H

#include <iosfwd>
#include <string>

namespace MoDiffInstallTools {

/// Copies the scripts that came with this program to where the engines find them from a working directory two levels
/// below the given one. Each file is put in its place whole. Failures raise exceptions of the standard library.
/// @param out is told what was done
void install(std::string const& directory, std::ostream& out);

} // namespace MoDiffInstallTools

#endif
