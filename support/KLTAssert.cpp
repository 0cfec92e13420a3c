#include "KLTAssert.h"

#include "KLTAssertError.h"

#include <string>

namespace {

std::string moduleName(std::string const& sourceFile) {
    std::string::size_type const slash = sourceFile.rfind('/');
    std::string const name = slash == std::string::npos ? sourceFile : sourceFile.substr(slash + 1);
    return name.substr(0, name.rfind('.'));
}

} // namespace

void KLTRaiseAssertion(char const* text, char const* sourceFile, int line) {
    KLTAssertError(0, text).hurl(KLTFileLocation(moduleName(sourceFile).c_str(), line), nullptr, "KLT_THROW");
}
