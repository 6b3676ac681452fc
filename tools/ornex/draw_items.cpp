#include "draw_items.hpp"

#include <algorithm>
#include <regex>

#include "arguments.hpp"
#include "font.hpp"
#include "tool_error.hpp"

namespace ornex::tool {

const char *const drawItemHelp =
    "Draws items in order over the canvas. Each item is KIND:NUMBERS[@COLOUR][/OPACITY]:\n"
    "  line:R1,C1,R2,C2   aaline:R1,C1,R2,C2   circle:R,C,RADIUS   aacircle:R,C,RADIUS\n"
    "  aadisc:R,C,RADIUS (filled)   polygon:R,C,R,C,R,C[,...] (filled)   aapolygon:R,C,R,C,R,C[,...] (filled)\n"
    "and text items text:ROW,COL[@COLOUR][/OPACITY],WORDS, the pen on the baseline at ROW; the words are\n"
    "UTF-8 and run to the end of the item. aa items are anti-aliased. COLOUR is #rrggbb or R,G,B on 0..1\n"
    "(default white); OPACITY on 0..1 blends the item over what lies below (default 1, opaque).\n"
    "Examples: 'aacircle:60,80,40@#ffcc33'  'polygon:10,10,10,90,60,50@1,0,0/0.5'  'text:120,20@#00ff00,Grüße €5'";

namespace {

const std::string kinds = "line:R1,C1,R2,C2, aaline:..., circle:R,C,RADIUS, aacircle:..., aadisc:..., "
                          "polygon:R,C,R,C,R,C[,...], aapolygon:... or text:ROW,COL,WORDS";

bool countFits(const std::string &kind, size_t count)
{
    if (kind == "line" || kind == "aaline") {
        return count == 4;
    }
    if (kind == "circle" || kind == "aacircle" || kind == "aadisc") {
        return count == 3;
    }
    if (kind == "polygon" || kind == "aapolygon") {
        return count >= 6 && count % 2 == 0;
    }
    return false;
}

// The colour and opacity parts of an item, either of them possibly empty.
void parseStyle(DrawItem &item, const std::ssub_match &colour, const std::ssub_match &opacity, const std::string &what)
{
    if (colour.matched) {
        item.colour = parseColour(colour.str(), what + " colour");
    }
    if (opacity.matched) {
        item.opacity = parseNumber(opacity.str(), what + " opacity");
        if (item.opacity < 0 || item.opacity > 1) {
            throw UsageError(what + ": the opacity after '/' lies on 0..1");
        }
    }
}

} // namespace

std::array<double, 3> parseColour(const std::string &text, const std::string &what)
{
    static const std::regex hex("#([0-9a-fA-F]{2})([0-9a-fA-F]{2})([0-9a-fA-F]{2})");
    std::smatch parts;
    if (std::regex_match(text, parts, hex)) {
        std::array<double, 3> colour;
        for (int k = 0; k < 3; ++k) {
            colour[k] = std::stoi(parts[k + 1].str(), nullptr, 16) / 255.0;
        }
        return colour;
    }
    if (text.starts_with('#')) {
        throw UsageError(what + ": expects #rrggbb, six hexadecimal digits, got '" + text + "'");
    }
    const std::vector<double> values = parseNumbers(text, what);
    if (values.size() != 3 || std::ranges::any_of(values, [](double v) { return v < 0 || v > 1; })) {
        throw UsageError(what + ": expects #rrggbb or three numbers R,G,B from 0 to 1, got '" + text + "'");
    }
    return {values[0], values[1], values[2]};
}

DrawItem parseItem(const std::string &word)
{
    const std::string what = "item '" + word + "'";
    const size_t colon = word.find(':');
    if (colon == std::string::npos) {
        throw UsageError(what + ": expects KIND:NUMBERS, for example line:10,10,50,80");
    }
    DrawItem item;
    item.kind = word.substr(0, colon);
    const std::string rest = word.substr(colon + 1);
    std::smatch parts;
    if (item.kind == "text") {
        static const std::regex text("([^,@/]+),([^,@/]+)(?:@(#[^,/]*|[^,@/]*,[^,@/]*,[^,@/]*))?(?:/([^,@/]*))?,([\\s\\S]*)");
        if (!std::regex_match(rest, parts, text)) {
            throw UsageError(what + ": expects text:ROW,COL[@COLOUR][/OPACITY],WORDS");
        }
        item.numbers = {parseNumber(parts[1].str(), what), parseNumber(parts[2].str(), what)};
        parseStyle(item, parts[3], parts[4], what);
        const std::optional<std::u32string> codePoints = decodeUtf8(parts[5].str());
        if (!codePoints) {
            throw UsageError(what + ": the words are not UTF-8 text");
        }
        item.text = *codePoints;
        return item;
    }
    static const std::regex shape("([^@/]*)(?:@([^@/]*))?(?:/([^@/]*))?");
    if (!std::regex_match(rest, parts, shape)) {
        throw UsageError(what + ": expects KIND:NUMBERS[@COLOUR][/OPACITY]");
    }
    item.numbers = parseNumbers(parts[1].str(), what);
    if (!countFits(item.kind, item.numbers.size())) {
        throw UsageError(what + ": expects " + kinds);
    }
    parseStyle(item, parts[2], parts[3], what);
    return item;
}

} // namespace ornex::tool
