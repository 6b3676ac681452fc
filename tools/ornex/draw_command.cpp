#include "commands.hpp"

#include <cmath>
#include <cstdio>

#include "arguments.hpp"
#include "image_io.hpp"
#include "pictures.hpp"
#include "tool_error.hpp"

namespace ornex::tool {
namespace {

// One drawing item: KIND:NUMBERS[@R,G,B], text items KIND:ROW,COL,WORDS.
struct Item {
    std::string kind;
    std::vector<double> numbers;
    std::string text;
    std::array<double, 3> colour{1.0, 1.0, 1.0};
};

Item parseItem(const std::string &word)
{
    const size_t colon = word.find(':');
    if (colon == std::string::npos) {
        throw ToolError("item '" + word + "': expects KIND:NUMBERS, for example line:10,10,50,80");
    }
    Item item;
    item.kind = word.substr(0, colon);
    std::string rest = word.substr(colon + 1);
    const size_t at = rest.rfind('@');
    if (at != std::string::npos && item.kind != "text") {
        const std::vector<double> colour = parseNumbers(rest.substr(at + 1), "item '" + word + "' colour");
        if (colour.size() != 3) {
            throw ToolError("item '" + word + "': a colour is three numbers R,G,B from 0 to 1");
        }
        item.colour = {colour[0], colour[1], colour[2]};
        rest = rest.substr(0, at);
    }
    if (item.kind == "text") {
        const size_t first = rest.find(','), second = first == std::string::npos ? first : rest.find(',', first + 1);
        if (second == std::string::npos) {
            throw ToolError("item '" + word + "': expects text:ROW,COL,WORDS");
        }
        item.numbers = parseNumbers(rest.substr(0, second), "item '" + word + "'");
        item.text = rest.substr(second + 1);
        return item;
    }
    item.numbers = parseNumbers(rest, "item '" + word + "'");
    const size_t count = item.numbers.size();
    const bool line = item.kind == "line" || item.kind == "aaline";
    const bool circle = item.kind == "circle" || item.kind == "aacircle" || item.kind == "aadisc";
    const bool polygon = item.kind == "polygon" || item.kind == "aapolygon";
    if ((line && count != 4) || (circle && count != 3) || (polygon && (count < 6 || count % 2 != 0)) ||
        (!line && !circle && !polygon)) {
        throw ToolError("item '" + word + "': expects line:R1,C1,R2,C2, aaline:..., circle:R,C,RADIUS, "
                        "aacircle:..., aadisc:..., polygon:R,C,R,C,R,C[,...], aapolygon:... or text:ROW,COL,WORDS");
    }
    return item;
}

Point at(const std::vector<double> &numbers, size_t k)
{
    return {int32_t(std::lround(numbers[k])), int32_t(std::lround(numbers[k + 1]))};
}

std::vector<Point> vertices(const std::vector<double> &numbers)
{
    std::vector<Point> points;
    for (size_t k = 0; k < numbers.size(); k += 2) {
        points.push_back(at(numbers, k));
    }
    return points;
}

} // namespace

int runDraw(const std::vector<std::string> &words)
{
    const std::vector<Option> options = {
        {"input", true, "draw over this image (default: a black canvas)"},
        {"size", true, "canvas ROWS,COLS when there is no input (default 240,320)"},
        {"font-size", true, "text height in pixels (default 24)"},
        {"help", false, "show this text"}};
    const Arguments arguments(words, options);
    const std::string synopsis = "ornex draw OUTPUT ITEM... [options]";
    if (arguments.has("help")) {
        std::fputs(usage(synopsis,
                         "Draws items in order, each KIND:NUMBERS with an optional @R,G,B colour (0..1, default\n"
                         "white): line:R1,C1,R2,C2  aaline:R1,C1,R2,C2  circle:R,C,RADIUS  aacircle:R,C,RADIUS\n"
                         "aadisc:R,C,RADIUS (filled)  polygon:R,C,R,C,R,C[,...] (filled)  aapolygon:R,C,R,C,R,C[,...]\n"
                         "(filled)  text:ROW,COL,WORDS (baseline row, white, DejaVu Sans). aa items are anti-aliased.",
                         options)
                       .c_str(),
                   stdout);
        return 0;
    }
    if (arguments.positional().size() < 2) {
        throw ToolError("expects an output file and at least one item; usage: " + synopsis);
    }
    std::vector<Item> items;
    for (size_t k = 1; k < arguments.positional().size(); ++k) {
        items.push_back(parseItem(arguments.positional()[k]));
    }
    Picture canvas;
    LoadedImage input; // no alpha and 8 bits unless an input says otherwise
    if (arguments.has("input")) {
        input = readPicture(arguments.text("input", ""));
        canvas = toColour(input.pixels.view());
    } else {
        const std::vector<double> size = arguments.has("size") ? arguments.numbers("size", 2) : std::vector<double>{240, 320};
        if (size[0] < 1 || size[1] < 1 || size[0] > 30000 || size[1] > 30000) {
            throw ToolError("--size: expects ROWS,COLS from 1 to 30000");
        }
        canvas = Picture(int32_t(size[0]), int32_t(size[1]), 3);
    }
    const double fontSize = arguments.number("font-size", 24);
    if (fontSize < 4 || fontSize > 400) {
        throw ToolError("--font-size: expects a value from 4 to 400");
    }
    const Font font{static_cast<int>(fontSize)};
    RgbView<double> planes = colourPlanes(canvas);
    for (const Item &item : items) {
        const auto &n = item.numbers;
        if (item.kind == "line") {
            drawLine(planes, at(n, 0), at(n, 2), item.colour);
        } else if (item.kind == "aaline") {
            drawAntialiasedLine(planes, at(n, 0), at(n, 2), item.colour);
        } else if (item.kind == "circle") {
            drawCircle(planes, at(n, 0), int32_t(std::lround(n[2])), item.colour);
        } else if (item.kind == "aacircle") {
            drawAntialiasedCircle(planes, at(n, 0), int32_t(std::lround(n[2])), item.colour);
        } else if (item.kind == "aadisc") {
            fillAntialiasedCircle(planes, at(n, 0), int32_t(std::lround(n[2])), item.colour);
        } else if (item.kind == "polygon") {
            fillPolygon(planes, vertices(n), item.colour);
        } else if (item.kind == "aapolygon") {
            fillAntialiasedPolygon(planes, vertices(n), item.colour);
        } else {
            drawText(planes, item.text, at(n, 0), font, item.colour);
        }
    }
    input.pixels = std::move(canvas); // drawn over; the input's alpha as it was
    writePicture(arguments.positional()[0], input);
    return 0;
}

} // namespace ornex::tool
