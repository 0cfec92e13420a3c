#ifndef MO_DIFF_AUDIT_JSON_H
#define MO_DIFF_AUDIT_JSON_H

#include "MoDiffAudit.h"
#include "MoDiffMutations.h"

#include <string>
#include <vector>

namespace MoDiffAuditJson {

/// An audit for programs: a JSON object and a line feed. Names hold bytes as those of a record do (docs/record.md).
/// @param mutations null when none were made
std::string text(MoDiffAudit const& audit, MoDiffMutations::Outcomes const* mutations,
                 std::vector<std::string> const& changed);

} // namespace MoDiffAuditJson

#endif
