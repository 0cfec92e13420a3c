#ifndef MO_DIFF_FINDING_H
#define MO_DIFF_FINDING_H

#include <string>

/// Something that the doctor looked at.
struct MoDiffFinding {
    enum Severity {
        eFine,   ///< as it ought to be; without remedy
        eAdvice, ///< may be meant so
        eTrouble ///< verdicts would be wrong or missing
    };

    Severity severity;
    std::string area;   ///< "tools", "system" or "tree"
    std::string text;   ///< a sentence without its full stop; names stand there as they are, unescaped
    std::string remedy; ///< likewise
};

#endif
