#ifndef MO_DIFF_FLOAT_COMPARISON_H
#define MO_DIFF_FLOAT_COMPARISON_H

#include "KLTExport.h"

#include <string>
#include <utility>

class MoDiffResult;

/// Tells whether a number may start with a character: a sign, a decimal digit or a point.
class KLT_EXPORT MoDiffFloatComparison_StartPredicate {
public:
    bool operator()(char character) const;
};

/// Compares two texts by the numbers in them and ignores everything else.
///
/// A number is an optional sign, digits with at most one point among, before or behind them, and an optional
/// exponent: 5, 5., .5, -5.25, 2e10. It may start inside a word, and ends as soon as it cannot go on, so that 1.2.3
/// holds 1.2 and .3. Decimal points and digits are those of the C locale, whatever locale the process has set.
///
/// Texts are NUL-terminated and stay the caller's. Every operation that is given a null text raises KLTAssertError.
/// Objects have no state and may be shared by threads; for texts see extractNumber().
class KLT_EXPORT MoDiffFloatComparison {
public:
    /// A position in the text that was parsed, and whether the step matched. On a match the position is just behind
    /// it, otherwise it is the one given (but see parseExponent()).
    using ParseStep = std::pair<char const*, bool>;

    MoDiffFloatComparison();
    virtual ~MoDiffFloatComparison();

    static bool my_isnan(double f);
    static bool my_finite(double f);
    /// Returns positive infinity.
    static double my_infinity();

    /// Returns floor(log10(|f|)), 0 for 0. Raises KLTAssertError when f is not finite.
    int getExponent(double f) const;
    /// Tells whether the actual value is within about one unit in the fifteenth significant digit of the master
    /// value. NaN equals nothing, an infinity only itself. The order of the values matters. Raises nothing.
    bool compare(double master, double actual) const;

    /// Matches "+" or "-".
    ParseStep parseSign(char const* text) const;
    /// Matches ".".
    ParseStep parseDecimal(char const* text) const;
    /// Matches one or more decimal digits.
    ParseStep parseDigits(char const* text) const;
    /// Matches an optional sign and digits, a point allowed before, among or behind them.
    ParseStep parseMantissa(char const* text) const;
    /// Matches "e" or "E", an optional sign and digits. Without digits the step does not match, but its position is
    /// nevertheless behind the letter and the sign.
    ParseStep parseExponent(char const* text) const;
    /// Matches a mantissa. The position is the one of the exponent step behind it, whether that matched or not: the
    /// number in 5em is 5e, with the value 5.
    ParseStep parseNumber(char const* text) const;

    /// Finds the first number that starts in [begin, end); it may end behind that.
    /// @param start, numberEnd the number's text, both null when there is none
    bool findNumber(char const* begin, char const* end, char const*& start, char const*& numberEnd) const;
    /// The same in the whole text.
    bool findNumber(char const* text, char const*& start, char const*& numberEnd) const;

    /// Returns the value of the text [start, end) as strtod() in the C locale gives it, infinite when too large.
    /// The byte at end must be writable: it may be NUL for a moment, during which no other thread may read the text.
    double extractNumber(char* start, char* end) const;

    /// Finds the next number that starts in [begin, end) and converts it as extractNumber() does.
    /// @param found 1 or 0
    /// @param value stays as it is when there is no number
    /// @return the position behind the number, or end when there is none
    char* findNextNumber(char* begin, char* end, int& found, double& value) const;

    /// Compares the numbers of two writable texts pair by pair, up to the first pair that differs.
    /// Both texts are as before when it returns; for the time between see extractNumber().
    /// @param masterName, actualName label the result
    /// @return a new result that the caller owns: MoDiffResultPass, MoDiffResultFail when a pair differs, or
    ///         MoDiffResultFailDiff when one text holds more numbers than the other
    MoDiffResult* performStringDiff(std::string const& masterName, std::string const& actualName, char* master,
                                    char* actual) const;
};

#endif
