#ifndef MO_DIFF_CHARACTER_FREQUENCY_H
#define MO_DIFF_CHARACTER_FREQUENCY_H

/// How often characters are met in reports, roughly; only the order of magnitude matters.
namespace MoDiffCharacterFrequency {

/// In a thousand characters.
double of(unsigned char character);

/// One beside the other, in a million pairs of neighbours. Letters and digits follow one another as they come, but
/// markup has its ways: `="`, `</`.
double ofPair(unsigned char first, unsigned char second);

} // namespace MoDiffCharacterFrequency

#endif
