#ifndef MO_DIFF_CONFIGURATION_VALUE_H
#define MO_DIFF_CONFIGURATION_VALUE_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

/// A value of the configuration as a file or an option gives it. The readers raise MoDiffConfigurationError, with the
/// place in front, when it is not what they are to read.
class MoDiffConfigurationValue {
public:
    /// A date as YYYY-MM-DD.
    struct Date {
        std::string text;
    };
    /// Something that no value of the configuration is, in words: "a table".
    struct Other {
        std::string words;
    };
    using List = std::vector<MoDiffConfigurationValue>;
    using Content = std::variant<std::string, std::int64_t, double, bool, Date, Other, List>;

    /// @param place file:line:column
    MoDiffConfigurationValue(std::string key, std::string place, Content content);
    /// A value from the command line, where numbers are texts, too. The last text counts unless a list is read.
    static MoDiffConfigurationValue ofOption(std::string key, std::string const& option,
                                             std::vector<std::string> const& texts);

    std::string const& getPlace() const { return m_place; }
    bool isOption() const { return m_isOption; }

    std::string const& text() const;
    /// A text that is not empty.
    std::string const& name() const;
    /// The entries of a list.
    List const& entries() const;
    /// The index of a word among the known ones.
    std::size_t word(std::vector<std::string> const& words) const;
    unsigned count(unsigned least, unsigned most) const;
    double percent() const;
    /// What a size, in bytes, or a duration, in milliseconds, must lie in to make sense.
    struct Range {
        double least; ///< above 0
        double most;  ///< at most 2 to the 53rd, up to which all numbers are exact
        std::string words;
    };
    /// Bytes: "512MB", "2GiB"; "none" is 0.
    std::uint64_t size(Range const& range) const;
    /// "500ms", "60s", "5m", "12h", "1d"; "none" is 0.
    std::chrono::milliseconds duration(Range const& range) const;
    bool isNone() const;
    /// YYYY-MM-DD.
    std::string const& date() const;
    /// A relative path without ".." in its shortest form; "" for the directory itself.
    std::string pathBelow() const;

    [[noreturn]] void fail(std::string const& what) const;

private:
    struct Unit {
        char const* name;
        double factor;
    };
    MoDiffConfigurationValue const& single() const;
    [[noreturn]] void failType(std::string const& wanted) const;
    double number(double least, double most, std::string const& wanted) const;
    double quantity(std::vector<Unit> const& units, std::string const& wanted, Range const& range) const;
    std::string shown() const;

    std::string m_key;
    std::string m_place;
    Content m_content;
    bool m_isOption = false;
};

#endif
