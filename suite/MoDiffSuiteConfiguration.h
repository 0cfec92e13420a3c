#ifndef MO_DIFF_SUITE_CONFIGURATION_H
#define MO_DIFF_SUITE_CONFIGURATION_H

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// A configuration that cannot be used; the text begins with the place, "file:line:column: " or an option's name.
class MoDiffConfigurationError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Masters and directories that are left out.
struct MoDiffExclude {
    std::string glob;  ///< seen from the working directory; ** crosses directories
    std::string place; ///< where it stands: file:line:column, or the option
};

/// A folder of charts or properties, whose places no format fixes.
struct MoDiffConfiguredFolder {
    std::string typeName;           ///< the last step of the output directory
    std::string masterSubDirectory; ///< below Masters
    std::string masterSuffix;       ///< charts only
    std::string place;              ///< where the table stands: file:line:column
};

/// A difference that is known and has a ticket.
struct MoDiffExpectedDifference {
    std::string pair;        ///< a glob for ids
    std::string reason;      ///< shown beside the outcome
    std::string until;       ///< a date, YYYY-MM-DD, from which on the pair fails again; empty for none
    std::string place;       ///< where the rule stands: file:line:column
    std::string pairPlace{}; ///< where its glob does
};

/// What a run is to do: every value has its default, so that a configuration file need not exist.
struct MoDiffSuiteConfiguration {
    enum NewFiles { eNewFail, eNewWarn, eNewIgnore };
    enum NulRule { eNulError, eNulWarn };

    std::string file;                   ///< the configuration file's path; empty without one
    std::string workingDirectory = "."; ///< where ../webcontent is seen from; absolute once read
    std::vector<std::string> roots;     ///< below the working directory; empty means all of it
    std::vector<MoDiffExclude> exclude;
    std::vector<std::string> formats;                       ///< words; never empty once resolved
    std::optional<std::vector<std::string>> subDirectories; ///< none: what is found
    unsigned jobs = 1;
    std::chrono::milliseconds timeLimit{60000};         ///< wall clock for one pair; 0 for none
    std::uint64_t memoryLimit = std::uint64_t{2} << 30; ///< bytes for one pair's process; 0 for none
    std::optional<std::chrono::seconds> maxAge;
    NewFiles newFiles = eNewWarn;
    NulRule nul = eNulError;
    std::vector<std::string> ignore; ///< format:kind
    double hiddenWarning = 50;       ///< per cent of a text
    std::vector<MoDiffConfiguredFolder> charts;
    std::vector<MoDiffConfiguredFolder> properties;
    std::vector<MoDiffExpectedDifference> expected;

    /// Where each value comes from, by its key: "default", "file:line:column" or the name of an option.
    std::map<std::string, std::string> origins;

    /// Whether an option leaves out masters that rules of the file may be for.
    bool isNarrowedByOption() const;

    /// Every value and where it comes from, one line each, as a configuration file would hold it.
    std::vector<std::string> describe() const;
    /// The values as a JSON object, for the record.
    std::string toJson() const;
};

#endif
