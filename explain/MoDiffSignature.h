#ifndef MO_DIFF_SIGNATURE_H
#define MO_DIFF_SIGNATURE_H

#include "MoDiffChange.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Changes of the same texts, wherever they stand.
struct MoDiffChangeKind {
    std::string signature; ///< 32 hex digits
    std::string title;     ///< the first place with the words around it, escaped: "`Page 1 of 3` -> `Page 1/3`"
    std::size_t places = 0;
};

/// What makes differences the same ones.
namespace MoDiffSignature {

/// A hash of bytes, 32 hex digits.
std::string ofBytes(std::string_view bytes);

struct Difference {
    /// Each kind once, in the order of their first places; the first thousand of them.
    std::vector<MoDiffChangeKind> kinds;
    /// A hash of the set of all kinds, so that neither their places nor how often each stands there count: a footer
    /// that changed on two pages and one that changed on seven are the same difference.
    std::string signature;
};
Difference of(MoDiffBothSides<std::string_view> const& texts, std::vector<MoDiffChange> const& changes);

} // namespace MoDiffSignature

#endif
