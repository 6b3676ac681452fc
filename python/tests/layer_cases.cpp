// Runs the C++ layer on fixed inputs and writes, into the folder named on
// the command line, every input and result as a .npy file and cases.json,
// which names for each case the Python call and its arguments. The Python
// tests make the same calls through the module and compare bit for bit.

#include <complex>
#include <cstdio>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "ornex/ornex.hpp"

using namespace ornex;

namespace {

std::string folder;
std::mt19937 random32(20261124);

template <class T> const char *descr();
template <> const char *descr<double>() { return "<f8"; }
template <> const char *descr<float>() { return "<f4"; }
template <> const char *descr<uint8_t>() { return "|u1"; }
template <> const char *descr<int8_t>() { return "|i1"; }
template <> const char *descr<uint16_t>() { return "<u2"; }
template <> const char *descr<int16_t>() { return "<i2"; }
template <> const char *descr<int32_t>() { return "<i4"; }
template <> const char *descr<bool>() { return "|b1"; }
template <> const char *descr<std::complex<double>>() { return "<c16"; }
template <> const char *descr<std::complex<float>>() { return "<c8"; }

int files = 0;

// A .npy file of values in Fortran order; returns its JSON reference.
template <class T>
std::string npy(const T *values, std::vector<int64_t> shape, bool fortran = true)
{
    std::ostringstream header;
    header << "{'descr': '" << descr<T>() << "', 'fortran_order': " << (fortran ? "True" : "False") << ", 'shape': (";
    size_t count = 1;
    for (size_t axis = 0; axis < shape.size(); ++axis) {
        header << shape[axis] << (shape.size() == 1 ? ",)" : axis + 1 == shape.size() ? ")" : ", ");
        count *= size_t(shape[axis]);
    }
    header << ", }";
    std::string text = header.str();
    text += std::string(63 - (10 + text.size()) % 64, ' ') + "\n";
    const std::string name = "array" + std::to_string(files++) + ".npy";
    std::ofstream out(folder + "/" + name, std::ios::binary);
    const uint16_t length = uint16_t(text.size());
    out.write("\x93NUMPY\x01\x00", 8);
    out.write(reinterpret_cast<const char *>(&length), 2);
    out << text;
    out.write(reinterpret_cast<const char *>(values), std::streamsize(count * sizeof(T)));
    return "{\"npy\": \"" + name + "\"}";
}

template <class T>
std::string npy(const Image<T> &image)
{
    if (image.planes() == 1) {
        return npy(image.data(), {image.rows(), image.cols()});
    }
    return npy(image.data(), {image.rows(), image.cols(), image.planes()});
}

template <class T>
std::string npy(const VelocityField<T> &field)
{
    std::vector<std::complex<T>> values;
    for (size_t k = 0; k < field.u.values().size(); ++k) {
        values.push_back({field.u.values()[k], field.v.values()[k]});
    }
    return npy(values.data(), {field.u.rows(), field.u.cols()});
}

template <class T>
std::string npy(const std::vector<T> &values)
{
    return npy(values.data(), {int64_t(values.size())});
}

std::string num(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

std::string quoted(const std::string &text) { return "\"" + text + "\""; }
std::string list(std::initializer_list<std::string> items)
{
    std::string text = "[";
    for (const std::string &item : items) {
        text += (text.size() > 1 ? ", " : "") + item;
    }
    return text + "]";
}
std::string pair(double a, double b) { return list({num(a), num(b)}); }
std::string corners(const std::vector<Point> &points)
{
    std::string text = "[";
    for (const Point &p : points) {
        text += (text.size() > 1 ? ", " : "") + pair(p.row, p.col);
    }
    return text + "]";
}

// One call: its positional and keyword arguments and its results, all JSON.
struct Case {
    std::string function;
    std::vector<std::string> args;
    std::vector<std::pair<std::string, std::string>> kwargs;
    std::string result;
    int drawsInto = -1; // the argument drawn into; the result is its final state
};
std::vector<Case> cases;

template <class T, class F>
Image<T> pattern(int32_t rows, int32_t cols, int32_t planes, F value)
{
    Image<T> image(rows, cols, planes);
    for (int32_t p = 0; p < planes; ++p) {
        for (int32_t c = 0; c < cols; ++c) {
            for (int32_t r = 0; r < rows; ++r) {
                image(r, c, p) = T(value(r, c, p));
            }
        }
    }
    return image;
}

// Smooth blobs with a little noise, moved by (down, right) pixels.
template <class T>
Image<T> scene(int32_t rows, int32_t cols, double down = 0, double right = 0, int32_t planes = 1)
{
    std::uniform_real_distribution<double> noise(0, 0.02);
    return pattern<T>(rows, cols, planes, [&](int32_t r, int32_t c, int32_t p) {
        const double y = r - down, x = c - right;
        return 0.5 + 0.3 * std::sin(0.21 * x + 0.1 * p) * std::cos(0.17 * y) + 0.2 * ((int(x / 9) + int(y / 7)) % 2) +
               noise(random32);
    });
}

template <class T>
Image<T> noiseImage(int32_t rows, int32_t cols, int32_t planes, int low, int high)
{
    std::uniform_int_distribution<int> value(low, high);
    return pattern<T>(rows, cols, planes, [&](int32_t, int32_t, int32_t) { return value(random32); });
}

template <class T>
void motionCases()
{
    const Image<T> first = scene<T>(48, 56), second = scene<T>(48, 56, 1.5, -2.25);
    BlockMatchingOptions blocks;
    blocks.blockSize = {8, 6};
    blocks.overlap = {2, 2};
    blocks.maxDisplacement = {4, 5};
    blocks.search = BlockSearch::threeStep;
    blocks.cost = BlockCost::squaredDifference;
    const auto motion = blockMatching(first.view(), second.view(), blocks);
    VelocityField<T> asField{Image<T>(motion.rows(), motion.cols()), Image<T>(motion.rows(), motion.cols())};
    for (size_t k = 0; k < motion.values().size(); ++k) {
        asField.u.values()[k] = motion.values()[k].u;
        asField.v.values()[k] = motion.values()[k].v;
    }
    cases.push_back({"block_matching",
                     {npy(first), npy(second)},
                     {{"block_size", pair(8, 6)}, {"overlap", "2"}, {"max_displacement", pair(4, 5)},
                      {"search", quoted("three_step")}, {"cost", quoted("squared_difference")}},
                     npy(asField)});
    const auto plain = blockMatching(first.view(), second.view());
    VelocityField<T> plainField{Image<T>(plain.rows(), plain.cols()), Image<T>(plain.rows(), plain.cols())};
    for (size_t k = 0; k < plain.values().size(); ++k) {
        plainField.u.values()[k] = plain.values()[k].u;
        plainField.v.values()[k] = plain.values()[k].v;
    }
    cases.push_back({"block_matching", {npy(first), npy(second)}, {}, npy(plainField)});

    cases.push_back({"horn_schunck",
                     {npy(first), npy(second)},
                     {{"smoothness", "0.5"}, {"max_iterations", "20"}, {"threshold", "1e-4"}},
                     npy(hornSchunck(first.view(), second.view(), {0.5, 20, 1e-4}))});
    cases.push_back({"horn_schunck",
                     {npy(first), npy(second)},
                     {{"max_iterations", "null"}, {"threshold", "0.001"}},
                     npy(hornSchunck(first.view(), second.view(), {1.0, std::nullopt, 1e-3}))});
    cases.push_back({"horn_schunck",
                     {npy(first), npy(second)},
                     {{"levels", "3"}},
                     npy(hornSchunck(first.view(), second.view(), {.levels = 3}))});
    cases.push_back({"lucas_kanade", {npy(first), npy(second)}, {}, npy(lucasKanade(first.view(), second.view()))});
    cases.push_back({"lucas_kanade",
                     {npy(first), npy(second)},
                     {{"threshold", "0.001"}, {"levels", "2"}},
                     npy(lucasKanade(first.view(), second.view(), {0.001, 2}))});

    std::vector<Image<T>> frames;
    std::vector<ImageView<const T>> views;
    for (int k = 0; k < 5; ++k) {
        frames.push_back(scene<T>(40, 44, 0.4 * k, 0.7 * k));
    }
    for (const Image<T> &frame : frames) {
        views.push_back(frame.view());
    }
    const std::string framesJson =
        list({npy(frames[0]), npy(frames[1]), npy(frames[2]), npy(frames[3]), npy(frames[4])});
    LucasKanadeGderOptions gaussians;
    gaussians.normalFlow = true;
    gaussians.temporalLength = 5;
    gaussians.spatialSigma = 1.25;
    gaussians.windowLength = 7;
    cases.push_back({"lucas_kanade_gder",
                     {framesJson},
                     {{"normal_flow", "true"}, {"temporal_length", "5"}, {"spatial_sigma", "1.25"},
                      {"window_length", "7"}},
                     npy(lucasKanadeGder(views, gaussians))});
    LucasKanadeGderOptions own;
    own.threshold = 0.02;
    own.filters = LucasKanadeFilters{{-0.5, 0, 0.5}, {0.25, 0.5, 0.25}, {-1, 0, 1}, {1, 2, 1}, {0.2, 0.6, 0.2}};
    cases.push_back({"lucas_kanade_gder",
                     {framesJson},
                     {{"threshold", "0.02"},
                      {"filters", "{\"temporal_derivative\": [-0.5, 0, 0.5], \"temporal_smoothing\": [0.25, 0.5, "
                                  "0.25], \"spatial_derivative\": [-1, 0, 1], \"spatial_smoothing\": [1, 2, 1], "
                                  "\"window\": [0.2, 0.6, 0.2]}"}},
                     npy(lucasKanadeGder(views, own))});
}

template <class T>
void detectionCases()
{
    const Image<T> image = scene<T>(60, 72);
    CannyOptions fixed;
    fixed.sigma = 1.5;
    fixed.thresholds = CannyThresholds{0.05, 0.15};
    const auto given = canny(image.view(), fixed);
    cases.push_back({"canny",
                     {npy(image)},
                     {{"sigma", "1.5"}, {"thresholds", pair(0.05, 0.15)}},
                     list({npy(given.edges), npy(given.magnitude)})});
    CannyOptions automatic;
    automatic.nonEdgePercent = 80;
    const auto chosen = canny(image.view(), automatic);
    cases.push_back({"canny",
                     {npy(image)},
                     {{"non_edge_percent", "80"}},
                     list({npy(chosen.edges), npy(chosen.magnitude)})});

    const auto h = hough<T>(given.edges.view(), {0.5, 2.0});
    const std::string dtype = std::is_same_v<T, float> ? "\"float32\"" : "\"float64\"";
    cases.push_back({"hough",
                     {npy(given.edges)},
                     {{"theta_resolution", "0.5"}, {"rho_resolution", "2"}, {"dtype", dtype}},
                     list({npy(h.accumulator), npy(h.rho), npy(h.theta)})});
    const std::vector<T> theta{T(0), T(0.3), T(-1.2), T(1.5707), T(-0.7)}, rho{T(5), T(-3), T(20.5), T(90), T(4)};
    const auto ends = houghLines(theta, rho, 60, 72);
    std::vector<int32_t> flat;
    for (const LineEnds &e : ends) {
        flat.insert(flat.end(), {e.first.row, e.first.col, e.second.row, e.second.col});
    }
    cases.push_back({"hough_lines",
                     {npy(theta), npy(rho), pair(60, 72)},
                     {},
                     npy(flat.data(), {int64_t(ends.size()), 2, 2}, false)});
}

template <class T>
void geometryCases()
{
    const std::string dtype = std::is_same_v<T, float> ? "\"float32\"" : "\"float64\"";
    const Image<T> rgb = scene<T>(40, 50, 0, 0, 3), grey = scene<T>(40, 50);
    const Quad to{{{1, 6}, {0, 52}, {44, 47}, {38, 2}}};
    const auto fromRect = homography<T>(Rect{2, 3, 30, 40}, to, 40, 50);
    cases.push_back({"homography",
                     {list({"2", "3", "30", "40"}), corners({to.begin(), to.end()}), pair(40, 50)},
                     {{"dtype", dtype}},
                     npy(std::vector<T>(fromRect.block.begin(), fromRect.block.end()))});
    const Quad from{{{2, 2}, {0, 45}, {39, 49}, {33, 4}}};
    const auto fromQuad = homography<T>(from, to, 40, 50);
    const std::string quadCall = "{\"homography\": [" + corners({from.begin(), from.end()}) + ", " +
                                 corners({to.begin(), to.end()}) + ", " + pair(40, 50) + ", " + dtype + "]}";
    cases.push_back({"homography",
                     {corners({from.begin(), from.end()}), corners({to.begin(), to.end()}), pair(40, 50)},
                     {{"dtype", dtype}},
                     npy(std::vector<T>(fromQuad.block.begin(), fromQuad.block.end()))});

    WarpOptions cubic;
    cubic.interpolation = Interpolation::bicubic;
    cubic.exact = false;
    cubic.subdivisions = 3;
    cubic.background = {0.25, 0.5, 1.0};
    cases.push_back({"warp",
                     {npy(rgb), pair(46, 54), quadCall},
                     {{"interpolation", quoted("bicubic")}, {"exact", "false"}, {"subdivisions", "3"},
                      {"background", list({"0.25", "0.5", "1.0"})}},
                     npy(warp(rgb.view(), 46, 54, fromQuad, cubic))});
    const std::string rectCall = "{\"homography\": [[2, 3, 30, 40], " + corners({to.begin(), to.end()}) + ", " +
                                 pair(40, 50) + ", " + dtype + "]}";
    cases.push_back({"warp", {npy(grey), pair(46, 54), rectCall}, {}, npy(warp(grey.view(), 46, 54, fromRect))});

    cases.push_back({"shear",
                     {npy(rgb), quoted("vertical"), "-0.3"},
                     {{"interpolation", quoted("bicubic")}, {"background", "0.5"}},
                     npy(shear(rgb.view(), ShearDirection::vertical, -0.3, {Interpolation::bicubic, {0.5}}))});
    cases.push_back({"shear",
                     {npy(grey), quoted("horizontal"), "0.45"},
                     {{"interpolation", quoted("nearest")}},
                     npy(shear(grey.view(), ShearDirection::horizontal, 0.45, {Interpolation::nearest, {0.0}}))});
}

// A logical image (Image<bool> would sit on std::vector<bool>).
struct LogicalImage {
    int32_t rows, cols;
    std::unique_ptr<bool[]> pixels{new bool[size_t(rows) * size_t(cols)]()};
    ImageView<bool> view() { return {pixels.get(), rows, cols, 1}; }
};

std::string npy(const LogicalImage &image) { return npy(image.pixels.get(), {image.rows, image.cols}); }

// A drawing case: the image before, the call, the image after.
template <class Picture, class Draw>
void drawCase(const char *function, Picture image, std::vector<std::string> args,
              std::vector<std::pair<std::string, std::string>> kwargs, Draw draw)
{
    args.insert(args.begin(), npy(image));
    draw(image.view());
    cases.push_back({function, args, kwargs, npy(image), 0});
}

void drawCases()
{
    const std::vector<Point> star{{-5, 30}, {50, 62}, {12, -8}, {40, 70}, {55, 4}};
    drawCase("draw_line", noiseImage<uint16_t>(40, 50, 3, 0, 65535),
             {pair(-3, 2), pair(45, 47), list({"65535", "7", "300"})}, {{"clip", list({"2", "30", "5", "40"})}},
             [](auto view) { drawLine<uint16_t>(view, {-3, 2}, {45, 47}, {65535, 7, 300}, ClipRect{2, 30, 5, 40}); });
    drawCase("draw_line", noiseImage<int32_t>(30, 30, 1, -1000, 1000), {pair(29, 0), pair(0, 25), "-123456"}, {},
             [](auto view) { drawLine<int32_t>(view, {29, 0}, {0, 25}, {-123456}); });
    drawCase("draw_antialiased_line", noiseImage<int8_t>(40, 50, 1, -128, 127), {pair(3, 48), pair(37, 1), "100"},
             {{"opacity", "0.6"}},
             [](auto view) { drawAntialiasedLine<int8_t>(view, {3, 48}, {37, 1}, {100}, 0.6); });
    drawCase("draw_antialiased_line", scene<float>(40, 50, 0, 0, 3), {pair(0, 0), pair(39, 30), list({"1", "0.5", "0"})},
             {}, [](auto view) { drawAntialiasedLine<float>(view, {0, 0}, {39, 30}, {1.0f, 0.5f, 0.0f}); });
    drawCase("draw_circle", LogicalImage{50, 60}, {pair(20, 30), "18", "true"}, {},
             [](auto view) { drawCircle<bool>(view, {20, 30}, 18, {true}); });
    drawCase("draw_circle", noiseImage<uint8_t>(50, 60, 3, 0, 255), {pair(55, 10), "30", list({"1", "2", "3"})}, {},
             [](auto view) { drawCircle<uint8_t>(view, {55, 10}, 30, {1, 2, 3}); });
    drawCase("draw_antialiased_circle", noiseImage<uint8_t>(50, 60, 3, 0, 255),
             {pair(25, 28), "21", list({"255", "10", "128"})}, {},
             [](auto view) { drawAntialiasedCircle<uint8_t>(view, {25, 28}, 21, {255, 10, 128}); });
    drawCase("fill_polygon", LogicalImage{50, 60}, {corners(star), "true"}, {{"opacity", "0.7"}},
             [&](auto view) { fillPolygon<bool>(view, star, {true}, 0.7); });
    drawCase("fill_polygon", scene<float>(50, 60), {corners(star), "0.9"}, {{"opacity", "0.3"}},
             [&](auto view) { fillPolygon<float>(view, star, {0.9f}, 0.3); });
    drawCase("fill_antialiased_circle", noiseImage<int16_t>(50, 60, 1, -30000, 30000), {pair(24, 31), "19", "-20000"},
             {{"opacity", "0.75"}, {"clip", list({"5", "40", "0", "45"})}}, [](auto view) {
                 fillAntialiasedCircle<int16_t>(view, {24, 31}, 19, {-20000}, 0.75, ClipRect{5, 40, 0, 45});
             });
    std::vector<double> soft(49);
    for (int i = 0; i < 49; ++i) {
        soft[size_t(i)] = std::clamp((i - 8) / 32.0, 0.0, 1.0);
    }
    drawCase("fill_antialiased_polygon", noiseImage<uint8_t>(50, 60, 1, 0, 255), {corners(star), "250"},
             {{"weights", npy(soft)}, {"opacity", "0.9"}},
             [&](auto view) { fillAntialiasedPolygon<uint8_t>(view, star, {250}, 0.9, std::nullopt, soft); });
    drawCase("fill_antialiased_polygon", scene<double>(50, 60, 0, 0, 3), {corners(star), list({"1", "0", "0.5"})},
             {{"clip", list({"0", "30", "10", "59"})}}, [&](auto view) {
                 fillAntialiasedPolygon<double>(view, star, {1.0, 0.0, 0.5}, 1.0, ClipRect{0, 30, 10, 59});
             });
}

void textCases()
{
    // Glyphs of different sizes and offsets for the characters used.
    const std::string characters = "ab1\xfc\n ";
    std::vector<std::vector<uint8_t>> bitmaps;
    std::string font = "{";
    for (size_t k = 0; k < characters.size(); ++k) {
        const uint16_t width = uint16_t(3 + k % 3), height = uint16_t(4 + k % 4);
        std::vector<uint8_t> bitmap(size_t(width) * height);
        for (uint8_t &value : bitmap) {
            value = uint8_t(random32());
        }
        bitmaps.push_back(bitmap);
        const std::string key = characters[k] == '\n' ? "\\n" : characters[k] == '\xfc' ? "\\u00fc" : characters.substr(k, 1);
        font += (k ? ", \"" : "\"") + key + "\": [" + npy(bitmap.data(), {height, width}, false) + ", " +
                std::to_string(int(k) - 2) + ", " + std::to_string(height - 1) + ", " + std::to_string(width + 1) +
                "]";
    }
    font += "}";
    const auto glyphs = [&](char c) {
        const size_t k = characters.find(c);
        const uint16_t width = uint16_t(3 + k % 3), height = uint16_t(4 + k % 4);
        return Glyph{bitmaps[k], width, height, int32_t(k) - 2, height - 1, width + 1};
    };
    Image<double> page = scene<double>(30, 60, 0, 0, 3);
    const std::string before = npy(page);
    const Point pen = drawText(page.view(), "ab 1\xfc\nba", {8, 3}, glyphs, {1.0, 0.2, 0.0},
                               {.opacity = 0.8, .antiAliased = true, .lineHeight = 12});
    cases.push_back({"draw_text",
                     {before, quoted("ab 1\\u00fc\\nba"), pair(8, 3), "{\"font\": " + font + "}",
                      list({"1.0", "0.2", "0.0"})},
                     {{"opacity", "0.8"}, {"line_height", "12"}},
                     list({npy(page), pair(pen.row, pen.col)}),
                     0});
    Image<float> mono = scene<float>(20, 40);
    const std::string monoBefore = npy(mono);
    const Point monoPen = drawText(mono.view(), "b\na1", {-2, 30}, glyphs, {0.5f}, {.antiAliased = false});
    cases.push_back({"draw_text",
                     {monoBefore, quoted("b\\na1"), pair(-2, 30), "{\"font\": " + font + "}", "0.5"},
                     {{"antialiased", "false"}},
                     list({npy(mono), pair(monoPen.row, monoPen.col)}),
                     0});

    cases.push_back({"format_numbers",
                     {quoted("%d|%x|%5u%%|%c"), npy(std::vector<int16_t>{-7, 255, 42, 65})},
                     {},
                     quoted(formatNumbers("%d|%x|%5u%%|%c", std::vector<int16_t>{-7, 255, 42, 65}))});
    cases.push_back({"format_numbers",
                     {quoted("%.3e and %g, %8.2f"), npy(std::vector<double>{12345.678, 1e-7, -0.125})},
                     {},
                     quoted(formatNumbers("%.3e and %g, %8.2f", std::vector<double>{12345.678, 1e-7, -0.125}))});
}

void writeCases()
{
    std::ofstream out(folder + "/cases.json");
    out << "[\n";
    for (size_t k = 0; k < cases.size(); ++k) {
        const Case &c = cases[k];
        out << "{\"function\": " << quoted(c.function) << ", \"args\": [";
        for (size_t i = 0; i < c.args.size(); ++i) {
            out << (i ? ", " : "") << c.args[i];
        }
        out << "], \"kwargs\": {";
        for (size_t i = 0; i < c.kwargs.size(); ++i) {
            out << (i ? ", " : "") << quoted(c.kwargs[i].first) << ": " << c.kwargs[i].second;
        }
        out << "}, \"result\": " << c.result << ", \"draws_into\": " << c.drawsInto << "}"
            << (k + 1 < cases.size() ? ",\n" : "\n");
    }
    out << "]\n";
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <folder>\n", argv[0]);
        return 2;
    }
    folder = argv[1];
    motionCases<float>();
    motionCases<double>();
    detectionCases<float>();
    detectionCases<double>();
    geometryCases<float>();
    geometryCases<double>();
    drawCases();
    textCases();
    writeCases();
    return 0;
}
