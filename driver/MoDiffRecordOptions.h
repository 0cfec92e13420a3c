#ifndef MO_DIFF_RECORD_OPTIONS_H
#define MO_DIFF_RECORD_OPTIONS_H

#include "MoDiffPairSetups.h"
#include "MoDiffRecordPairs.h"
#include "MoDiffSuiteConfiguration.h"

#include <iostream>
#include <string>

namespace CLI {
class App;
}

/// A record and the configuration that tells its engines.
struct MoDiffOpenedRecord {
    MoDiffSuiteConfiguration configuration;
    MoDiffRecordPairs pairs;
};

/// The options that name a record, for commands that work on one.
class MoDiffRecordOptions {
public:
    /// @param options kept, with references to members of this object
    explicit MoDiffRecordOptions(CLI::App& options);
    MoDiffRecordOptions(MoDiffRecordOptions const&) = delete;
    MoDiffRecordOptions& operator=(MoDiffRecordOptions const&) = delete;

    /// Reads the record, where `modiff run` leaves it unless an option says otherwise, tells when it is incomplete,
    /// and enters the working directory of its run. Raises std::exception.
    /// @param notes gets what is told
    MoDiffOpenedRecord open(std::ostream& notes = std::cout) const;

    /// " --record DIR", as it was given, for commands that are recommended; "" when it was not given.
    std::string words() const;
    /// The options as they were given, absolute and for a shell, so that commands work in any directory. To be asked
    /// before open(), which leaves the current one.
    std::string shellWords() const;

private:
    std::string m_directory;
    std::string m_file;
};

#endif
