#include "commands.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>

#include "arguments.hpp"
#include "draw_items.hpp"
#include "file_jobs.hpp"
#include "image_io.hpp"
#include "pictures.hpp"
#include "progress.hpp"
#include "tool_error.hpp"

namespace ornex::tool {
namespace {

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

// Draws an item at its opacity: drawn whole on a copy of the canvas, which
// is then blended over it, new = drawn * opacity + old * (1 - opacity). The
// kernels' own opacity is not used: where a shape's spans overlap (the
// middle rows of an anti-aliased disc) they would blend twice.
template <class Draw>
void drawBlended(Picture &canvas, double opacity, const Draw &draw)
{
    if (opacity == 1.0) {
        draw(colourPlanes(canvas));
        return;
    }
    Picture layer = canvas;
    draw(colourPlanes(layer));
    for (size_t k = 0; k < canvas.values().size(); ++k) {
        canvas.values()[k] = layer.values()[k] * opacity + canvas.values()[k] * (1.0 - opacity);
    }
}

// Sets text one character at a time, each glyph found by its code point,
// every glyph rendered before the first is drawn.
void drawCodePoints(RgbView<double> planes, const DrawItem &item, const Font &font)
{
    std::vector<Glyph> glyphs;
    for (const char32_t code : item.text) {
        glyphs.push_back(font.glyph(code));
    }
    Point pen = at(item.numbers, 0);
    for (const Glyph &glyph : glyphs) {
        // drawText asks its source for the glyph of each byte of the text; the
        // source here gives this one glyph whatever the byte.
        pen = drawText(planes, "?", pen, [&glyph](char) { return glyph; }, item.colour);
    }
}

void drawItem(RgbView<double> planes, const DrawItem &item, const std::optional<Font> &font)
{
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
        drawCodePoints(planes, item, *font);
    }
}

// The font of the text items, if there are any.
std::optional<Font> fontFor(const std::vector<DrawItem> &items, const Arguments &arguments)
{
    const double fontSize = arguments.number("font-size", 24);
    if (fontSize < 4 || fontSize > 400) {
        throw UsageError("--font-size: expects a value from 4 to 400");
    }
    if (std::ranges::none_of(items, [](const DrawItem &item) { return item.kind == "text"; })) {
        return std::nullopt;
    }
    try {
        return Font(static_cast<int>(fontSize), Font::find(arguments.text("font", "DejaVu Sans")));
    } catch (const ToolError &failure) {
        throw ToolError((arguments.has("font") ? "--font: " : "") + std::string(failure.what()));
    }
}

// OUTPUT over the --input or a blank canvas, or each --input into --out-dir.
std::vector<FileJob> drawJobs(const Arguments &arguments, const std::string &synopsis)
{
    const std::vector<std::string> inputs = arguments.all("input");
    if (arguments.has("out-dir")) {
        if (inputs.empty()) {
            throw UsageError("--out-dir: needs each image to draw over as --input IN; usage: " + synopsis);
        }
        return fileJobs(inputs, arguments.text("out-dir", ""), synopsis);
    }
    if (inputs.size() > 1) {
        throw UsageError("--input: several inputs need --out-dir DIR for their outputs; usage: " + synopsis);
    }
    return {{inputs.empty() ? "" : inputs[0], arguments.positional()[0], 0, 1, ""}};
}

} // namespace

int runDraw(const std::vector<std::string> &words)
{
    const std::vector<Option> options = {
        {"input", true, "draw over this image (default: a black canvas); with --out-dir, over each", true},
        outDirOption,
        {"size", true, "canvas ROWS,COLS when there is no input (default 240,320)"},
        {"font", true, "font family, fontconfig pattern or font file for text (default DejaVu Sans)"},
        {"font-size", true, "text height in pixels (default 24)"},
        {"quiet", false, "no progress lines on stderr for long work"},
        {"help", false, "show this text"}};
    const Arguments arguments(words, options);
    const std::string synopsis =
        "ornex draw OUTPUT ITEM... [--input IN | --size R,C] [options]  |  ornex draw ITEM... --out-dir DIR --input IN...";
    if (arguments.has("help")) {
        std::fputs(usage(synopsis, drawItemHelp, options).c_str(), stdout);
        return 0;
    }
    if (arguments.has("quiet")) {
        silenceProgress();
    }
    arguments.refuseTogether("size", {"input"});
    const bool inFolder = arguments.has("out-dir");
    const std::vector<std::string> &positional = arguments.positional();
    if (positional.size() < (inFolder ? 1u : 2u)) {
        throw UsageError(inFolder ? "expects at least one item; usage: " + synopsis
                                  : "expects an output file and at least one item; usage: " + synopsis);
    }
    const std::vector<std::string> itemWords(positional.begin() + (inFolder ? 0 : 1), positional.end());
    std::vector<DrawItem> items;
    for (const std::string &word : itemWords) {
        items.push_back(parseItem(word));
    }
    std::vector<double> size{240, 320};
    if (arguments.has("size")) {
        size = arguments.numbers("size", 2);
        if (size[0] < 1 || size[1] < 1 || size[0] > 30000 || size[1] > 30000) {
            throw UsageError("--size: expects ROWS,COLS from 1 to 30000");
        }
    }
    const std::vector<FileJob> jobs = drawJobs(arguments, synopsis);
    const std::optional<Font> font = fontFor(items, arguments);
    return runJobs("draw", jobs, [&](const FileJob &job) {
        job.stage(job.input.empty() ? "drawing" : "reading " + job.input);
        LoadedImage picture; // no alpha and 8 bits unless an input says otherwise
        Picture canvas;
        if (job.input.empty()) {
            canvas = Picture(int32_t(size[0]), int32_t(size[1]), 3);
        } else {
            picture = readPicture(job.input);
            canvas = toColour(picture.pixels.view());
        }
        job.stage("drawing");
        for (size_t k = 0; k < items.size(); ++k) {
            try {
                drawBlended(canvas, items[k].opacity, [&](RgbView<double> on) { drawItem(on, items[k], font); });
            } catch (const std::invalid_argument &refusal) {
                throw UsageError("item '" + itemWords[k] + "': " + refusal.what());
            }
        }
        job.stage("writing " + job.output);
        picture.pixels = std::move(canvas); // drawn over; the input's alpha as it was
        writePicture(job.output, picture);
    });
}

} // namespace ornex::tool
