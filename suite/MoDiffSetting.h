#ifndef MO_DIFF_SETTING_H
#define MO_DIFF_SETTING_H

#include "MoDiffConfigurationValue.h"
#include "MoDiffSuiteConfiguration.h"

#include <string>
#include <string_view>
#include <vector>

/// A key of the configuration that stands for one value: how it is read, and how it is written.
struct MoDiffSetting {
    /// Writes a text as a string of the notation that is wanted, quotation marks included.
    using Quote = std::string (*)(std::string_view);

    char const* key;
    char const* values; ///< what may be written, in a few words
    char const* about;  ///< a sentence or two
    void (*set)(MoDiffSuiteConfiguration&, MoDiffConfigurationValue const&);
    /// The value as TOML and JSON both have it; "" when there is none.
    std::string (*show)(MoDiffSuiteConfiguration const&, Quote quote);

    /// All of them, in the order in which they are shown.
    static std::vector<MoDiffSetting> const& all();
    /// The setting for a key; null when there is none.
    static MoDiffSetting const* find(std::string_view key);
};

/// A key of one of the configuration's tables, all of which hold texts.
template<typename Table>
struct MoDiffTableField {
    char const* key;
    char const* about; ///< a sentence
    std::string Table::*member;
    bool isRequired;
    std::string (*read)(MoDiffConfigurationValue const&);
    std::string Table::*place = nullptr; ///< gets the place of the value; null for none
};

/// The tables of the configuration, each of which may stand there several times.
namespace MoDiffTables {

extern std::vector<MoDiffTableField<MoDiffConfiguredFolder>> const kChart;
extern std::vector<MoDiffTableField<MoDiffConfiguredFolder>> const kProperty;
extern std::vector<MoDiffTableField<MoDiffExpectedDifference>> const kExpected;

/// Calls visit(key, rows, fields) for each kind of table.
template<typename Configuration, typename Visitor>
void visit(Configuration& configuration, Visitor&& visitor) {
    visitor("tvd", configuration.charts, kChart);
    visitor("prp", configuration.properties, kProperty);
    visitor("expected", configuration.expected, kExpected);
}

} // namespace MoDiffTables

#endif
