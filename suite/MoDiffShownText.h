#ifndef MO_DIFF_SHOWN_TEXT_H
#define MO_DIFF_SHOWN_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

/// Bytes of names and reports as they may be written to a terminal.
namespace MoDiffShownText {

/// The text with everything that a terminal might obey or hide written as an escape: \n, \t, \x1b, \xe9 for a byte
/// that is not UTF-8, \\ for a backslash.
std::string escaped(std::string_view text);

/// The same, but a backslash stays as it is: for words that escape what is in them already.
std::string printable(std::string_view text);

/// The end of a text, escaped, that takes no more than so many columns of the screen; "..." stands for what is left
/// out.
std::string escapedEnd(std::string_view text, std::size_t columns);

/// A few characters of a text on both sides of a place, escaped.
struct Excerpt {
    std::string before;
    std::string after;
    std::size_t columnsBefore; ///< how much room `before` takes on the screen
};

/// The surroundings of a byte index; a character is never cut.
Excerpt excerpt(std::string_view text, std::size_t place);

/// The bytes on both sides of a place in a text.
struct Surroundings {
    std::string_view before;
    std::string_view after;
};

/// Excerpts of two texts at the places at which they part, from the character on that holds the place.
struct Excerpts {
    Excerpt master;
    Excerpt actual;
};

/// Characters at the places that look the same, such as a blank and a no-break space or an accented letter in one
/// piece and in two, are told apart by escapes.
Excerpts excerpts(Surroundings const& master, Surroundings const& actual);

/// How much of a text that is escaped already fits into some columns of a screen.
struct Fit {
    std::size_t bytes;
    std::size_t columns; ///< that these take
};
Fit fit(std::string_view escapedText, std::size_t columns);

} // namespace MoDiffShownText

#endif
