// Lettering for the example pictures: a 5 x 7 dot font.
#ifndef EXAMPLES_LETTERING_H
#define EXAMPLES_LETTERING_H

#include <string>

// The dots of one row of a character: bit 4 is the leftmost of five. nRow is 0 (top) to 6. Small
// letters look like capitals; a character the font lacks has no dots.
unsigned int LetterRow(char chLetter, int nRow);

// The width of one character, the gap to the next included, and the height of a line of dots.
constexpr int kLetterPitch = 6;
constexpr int kLetterHeight = 7;

// Calls plot(x, y) for every dot of the text, in dots from its left top corner.
template <class Plot>
void EachDot(const std::string& strText, Plot plot) {
    int nX = 0;
    for (const char chLetter : strText) {
        for (int i = 0; i < kLetterHeight * 5; ++i) {
            if ((LetterRow(chLetter, i / 5) >> (4 - i % 5) & 1) != 0) {
                plot(nX + i % 5, i / 5);
            }
        }
        nX += kLetterPitch;
    }
}

#endif  // EXAMPLES_LETTERING_H
