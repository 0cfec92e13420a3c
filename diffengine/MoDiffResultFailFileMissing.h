#ifndef MO_DIFF_RESULT_FAIL_FILE_MISSING_H
#define MO_DIFF_RESULT_FAIL_FILE_MISSING_H

#include "MoDiffResultFail.h"

/// One of the two files is missing or cannot be opened.
class KLT_EXPORT MoDiffResultFailFileMissing : public MoDiffResultFail {
public:
    /// @param missingFile the path of the missing file: equal to the master's or the actual file's name
    MoDiffResultFailFileMissing(std::string const& masterName, std::string const& actualName,
                                std::string const& missingFile);

    void notifyListener(MoDiffListener& listener) const override;

    std::string const& getMissingFile() const { return m_missingFile; }

private:
    std::string m_missingFile;
};

#endif
