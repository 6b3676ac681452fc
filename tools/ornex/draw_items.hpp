#pragma once

#include <array>
#include <string>
#include <vector>

namespace ornex::tool {

// One item of the draw command as typed: a shape KIND:NUMBERS[@COLOUR][/OPACITY]
// or a text text:ROW,COL[@COLOUR][/OPACITY],WORDS (WORDS run to the end and
// may hold any character). COLOUR is #rrggbb or R,G,B on 0..1, OPACITY
// lies on 0..1; both are optional, white and 1 by default.
struct DrawItem {
    std::string kind;
    std::vector<double> numbers;
    std::u32string text; // the code points of the words
    std::array<double, 3> colour{1.0, 1.0, 1.0};
    double opacity = 1.0;
};

// Refuses anything else with a UsageError that quotes the item.
DrawItem parseItem(const std::string &word);

// "#rrggbb" (either case) or "R,G,B" on 0..1 into red, green and blue on
// 0..1; `what` names the argument in errors.
std::array<double, 3> parseColour(const std::string &text, const std::string &what);

// The item syntax for the draw command's help.
extern const char *const drawItemHelp;

} // namespace ornex::tool
