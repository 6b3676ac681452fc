#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <regex>
#include <sstream>

#include "commands.hpp"
#include "font.hpp"
#include "files.hpp"
#include "image_io.hpp"
#include "pictures.hpp"
#include "tool_error.hpp"

namespace {
namespace fs = std::filesystem;
using namespace ornex;
using namespace ornex::tool;
using namespace std::string_literals;

void put(const std::string &path, const std::string &bytes) { std::ofstream(path, std::ios::binary) << bytes; }
int shell(const std::string &line) { return WEXITSTATUS(std::system(line.c_str())); }
double maxDifference(const Image<double> &a, const Image<double> &b)
{
    double worst = 0;
    for (size_t k = 0; k < a.values().size(); ++k) worst = std::max(worst, std::abs(a.values()[k] - b.values()[k]));
    return worst;
}

const std::map<std::string, std::function<int(const std::vector<std::string> &)>> actions = {
    {"edges", runEdges}, {"lines", runLines}, {"motion", runMotion}, {"flow", runFlow}, {"warp", runWarp},
    {"shear", runShear}, {"draw", runDraw}, {"demo", runDemo},
    {"font", [](const std::vector<std::string> &w) { Font(std::stoi(w[0]), w[1]); return 0; }}};

std::string run(const std::string &line)
{
    std::istringstream in(line);
    const std::vector<std::string> words{std::istream_iterator<std::string>(in), {}};
    std::string error;
    testing::internal::CaptureStdout();
    try { actions.at(words[0])({words.begin() + 1, words.end()}); } catch (const std::exception &e) { error = "error: "s + e.what(); }
    const std::string out = testing::internal::GetCapturedStdout();
    return error.empty() ? out : error;
}

// Each test runs in a fresh folder holding a 48 x 48 grey texture t.pgm, the same moved one row down and two columns
// right (t12.pgm), one column right (t01.pgm) or one of each (t11.pgm), noise n.pgm and n12.pgm, a colour c.ppm, a folder d.png.
struct InFolder : testing::Test {
    static double texture(int r, int c) { return std::round(128 + 64 * std::sin(0.3 * c + 0.2 * r) + 51 * std::cos(0.25 * r - 0.1 * c)) / 255; }
    static double noise(int r, int c) { return ((r * r * 31 + c * c * 17 + r * c * 7) & 255) / 255.0; }
    void SetUp() override
    {
        std::string name = (fs::temp_directory_path() / "ornex-tool-XXXXXX").string();
        fs::current_path(folder = mkdtemp(name.data()));
        for (const auto &[file, dr, dc] : {std::tuple{"t.pgm", 0, 0}, {"t12.pgm", 1, 2}, {"t01.pgm", 0, 1}, {"t11.pgm", 1, 1}, {"n.pgm", 0, 0}, {"n12.pgm", 1, 2}}) {
            Image<double> image(48, 48);
            for (int k = 0; k < 48 * 48; ++k) image(k % 48, k / 48) = (file[0] == 'n' ? noise : texture)(k % 48 - dr, k / 48 - dc);
            writeImage(file, image);
        }
        writeImage("c.ppm", Image<double>(4, 4, 3, 0.5)), fs::create_directory("d.png");
    }
    void TearDown() override { fs::current_path(fs::temp_directory_path()), fs::remove_all(folder); }
    fs::path folder;
};

std::map<std::string, std::string> snapshot()
{
    std::map<std::string, std::string> files;
    for (const auto &entry : fs::directory_iterator(".")) files[entry.path().filename()] = entry.is_directory() ? "/" : slurp(entry.path());
    return files;
}

// A smooth picture (so that lossy formats keep it well) whose 16-bit samples still use their low bits, and an alpha
// plane with every 8-bit value somewhere; both exact multiples of 1/65535 and of 1/255 respectively.
Image<double> smooth(int rows, int cols, int planes)
{
    Image<double> image(rows, cols, planes);
    for (int p = 0; p < planes; ++p)
        for (int c = 0; c < cols; ++c)
            for (int r = 0; r < rows; ++r) image(r, c, p) = (4000 + 900 * r + 700 * c + 9000 * p + (r * c + p) % 7) / 65535.0;
    return image;
}
Image<double> alphaPlane(int rows, int cols)
{
    Image<double> alpha(rows, cols);
    for (int k = 0; k < rows * cols; ++k) alpha.values()[size_t(k)] = (k * 37 % 256) / 255.0;
    return alpha;
}
Image<double> quantised(const Image<double> &image, int depth)
{
    Image<double> out = image;
    const double top = depth == 16 ? 65535 : 255;
    for (double &v : out.values()) v = std::lround(v * top) / top;
    return out;
}

// Written with writePicture at the depth asked, with or without alpha, read back: what the format keeps (planes,
// alpha, depth) and the largest error. JPEG at quality 95 without chroma subsampling quantises this smooth picture's
// few low frequencies in steps of 1 to 2 levels (a tenth of the standard tables), each coefficient off by at most half
// a step, and YCbCr to RGB rounds once more: 3/255 allowed (2 seen). WebP here is lossy only (quality 100) with 4:2:0
// chroma and limited-range luma (one luma level is 1.16 RGB levels): 5/255 allowed (3 seen).
struct RoundTrip { const char *file; int planes, depth; bool alpha; int planesBack, depthBack; bool alphaBack; double tolerance; const char *format = ""; };
struct RoundTrips : InFolder, testing::WithParamInterface<RoundTrip> {};

TEST_P(RoundTrips, KeepWhatTheFormatHolds)
{
    const RoundTrip &t = GetParam();
    const Image<double> pixels = smooth(24, 32, t.planes), alpha = alphaPlane(24, 32);
    writePicture(t.file, pixels.view(), t.alpha ? std::optional(alpha.view()) : std::nullopt, t.depth, t.format);
    const LoadedImage back = readPicture(t.file);
    ASSERT_EQ((std::array{back.pixels.rows(), back.pixels.cols(), back.pixels.planes(), back.bitDepth}), (std::array{24, 32, t.planesBack, t.depthBack}));
    ASSERT_EQ(back.alpha.has_value(), t.alphaBack);
    Image<double> expected = quantised(pixels, t.depthBack);
    if (t.planesBack > t.planes) expected = toColour(expected.view()); // grey repeated in R, G and B
    EXPECT_LE(maxDifference(back.pixels, expected), t.tolerance); // 0 for lossless formats
    if (t.alphaBack) { EXPECT_EQ(back.alpha->values(), quantised(alpha, t.depthBack).values()); }
    EXPECT_EQ(snapshot().size(), 9u); // the eight files of every test and this one: no temporary file left behind
}

INSTANTIATE_TEST_SUITE_P(Formats, RoundTrips, testing::Values(
    RoundTrip{"grey.png", 1, 8, false, 1, 8, false, 0}, RoundTrip{"colour16.png", 3, 16, false, 3, 16, false, 0},
    RoundTrip{"rgba.png", 3, 8, true, 3, 8, true, 0}, RoundTrip{"grey_alpha16.png", 1, 16, true, 1, 16, true, 0},
    RoundTrip{"grey16.tif", 1, 16, false, 1, 16, false, 0}, RoundTrip{"colour.tiff", 3, 8, false, 3, 8, false, 0},
    RoundTrip{"rgba16.TIF", 3, 16, true, 3, 16, true, 0}, RoundTrip{"colour.jpg", 3, 16, true, 3, 8, false, 3.0 / 255},
    RoundTrip{"grey.jpeg", 1, 8, false, 1, 8, false, 3.0 / 255}, RoundTrip{"colour.webp", 3, 8, true, 3, 8, false, 5.0 / 255},
    RoundTrip{"grey.webp", 1, 16, false, 3, 8, false, 5.0 / 255}, RoundTrip{"grey16.pgm", 1, 16, false, 1, 8, false, 0},
    RoundTrip{"colour.ppm", 3, 8, true, 3, 8, false, 0}, RoundTrip{"grey.ppm", 1, 8, false, 3, 8, false, 0},
    RoundTrip{"named.dat", 3, 16, true, 3, 16, true, 0, "TIFF"}),
    [](const auto &info) { std::string name = info.param.file; for (char &ch : name) if (!std::isalnum(ch)) ch = '_'; return name; });

// EXIF orientation is applied on reading. A TIFF of 2 x 3 distinct values under each orientation (exact), and the
// JPEG of the brief: orientation 6 (turn a quarter clockwise to show) puts the stored top-left corner at the top right.
TEST_F(InFolder, OrientationIsApplied)
{
    auto store = [](const std::string &path, int rows, int cols, int channels, const std::vector<uint8_t> &samples, int orientation) {
        auto out = OIIO::ImageOutput::create(path);
        OIIO::ImageSpec header(cols, rows, channels, OIIO::TypeDesc::UINT8);
        header.attribute("Orientation", orientation);
        ASSERT_TRUE(out && out->open(path, header) && out->write_image(OIIO::TypeDesc::UINT8, samples.data()) && out->close());
    };
    const std::vector<uint8_t> stored{10, 20, 30, 40, 50, 60}; // rows 10 20 30 and 40 50 60
    const auto s = [&](int r, int c) { return stored[size_t(r * 3 + c)] / 255.0; };
    const std::function<double(int, int)> shown[8] = {
        [&](int r, int c) { return s(r, c); }, [&](int r, int c) { return s(r, 2 - c); }, [&](int r, int c) { return s(1 - r, 2 - c); },
        [&](int r, int c) { return s(1 - r, c); }, [&](int r, int c) { return s(c, r); }, [&](int r, int c) { return s(1 - c, r); },
        [&](int r, int c) { return s(1 - c, 2 - r); }, [&](int r, int c) { return s(c, 2 - r); }};
    for (int o = 1; o <= 8; ++o) {
        store("o.tif", 2, 3, 1, stored, o);
        const Image<double> image = readImage("o.tif");
        ASSERT_EQ(image.rows(), o <= 4 ? 2 : 3) << o;
        for (int k = 0; k < 6; ++k) EXPECT_EQ(image(k % image.rows(), k / image.rows()), shown[o - 1](k % image.rows(), k / image.rows())) << o;
    }
    std::vector<uint8_t> quadrants; // 16 x 24 stored: red top-left, green top-right, blue bottom-left, white bottom-right
    for (int r = 0; r < 16; ++r)
        for (int c = 0; c < 24; ++c) for (int ch = 0; ch < 3; ++ch) quadrants.push_back(r < 8 ? (c < 12 ? ch == 0 : ch == 1) * 255 : (c < 12 ? ch == 2 : 1) * 255);
    store("o.jpg", 16, 24, 3, quadrants, 6);
    const Image<double> turned = readImage("o.jpg");
    ASSERT_EQ((std::array{turned.rows(), turned.cols()}), (std::array{24, 16}));
    const std::array<int, 3> red{1, 0, 0}, green{0, 1, 0}, blue{0, 0, 1}, white{1, 1, 1};
    for (const auto &[r, c, colour] : {std::tuple{0, 15, red}, {23, 15, green}, {0, 0, blue}, {23, 0, white}})
        for (int ch = 0; ch < 3; ++ch) EXPECT_NEAR(turned(r, c, ch), colour[size_t(ch)], 3 / 255.0) << r << ',' << c;
}

// A TIFF that stores colours multiplied by alpha (associated, OpenImageIO's own habit) reads as unassociated colours;
// where alpha is 0 the colour stays as stored.
TEST_F(InFolder, AssociatedAlphaIsDividedBack)
{
    auto out = OIIO::ImageOutput::create("tif");
    const OIIO::ImageSpec header(2, 1, 4, OIIO::TypeDesc::UINT8); // RGBA, alpha named, associated unless said otherwise
    const uint8_t samples[] = {100, 50, 0, 200, 10, 20, 30, 0};
    ASSERT_TRUE(out && out->open("assoc.tif", header) && out->write_image(OIIO::TypeDesc::UINT8, samples) && out->close());
    const LoadedImage image = readPicture("assoc.tif");
    ASSERT_TRUE(image.alpha.has_value());
    EXPECT_EQ(image.pixels.values(), (std::vector{0.5, 10 / 255.0, 0.25, 20 / 255.0, 0.0, 30 / 255.0}));
    EXPECT_EQ(image.alpha->values(), (std::vector{200 / 255.0, 0.0}));
}

// Grey is luma: pure red, green and blue give 0.299, 0.587 and 0.114 through an 8-bit file; grey stays what it was.
TEST_F(InFolder, GreyIsLuma)
{
    Image<double> colours(1, 4, 3);
    std::ranges::copy(std::array{1.0, 0.0, 0.0, 0.4, 0.0, 1.0, 0.0, 0.4, 0.0, 0.0, 1.0, 0.4}, colours.data());
    writeImage("rgb.png", colours), writeImage("grey.png", toGrey(readImage("rgb.png")));
    const Image<double> grey = readImage("grey.png");
    for (const auto &[k, luma] : {std::pair{0, 0.299}, {1, 0.587}, {2, 0.114}, {3, 0.4}}) EXPECT_NEAR(grey(0, k), luma, 0.5 / 255) << k;
    EXPECT_EQ(toGrey(colours)(0, 3), 0.4);
}

// draw and lines keep the input's alpha as it was; warp and shear move it with the picture, transparent where nothing
// lands; edges writes a fresh grey picture. Each at the input's depth: 16-bit samples come back exactly.
TEST_F(InFolder, AlphaAndDepthFollowTheCommands)
{
    const Image<double> pixels = smooth(20, 30, 3), alpha = alphaPlane(20, 30), deep = quantised(pixels, 16);
    writePicture("a.png", pixels.view(), alpha.view(), 8), writePicture("a16.tif", pixels.view(), alpha.view(), 16);
    run("draw dr.png line:2,0,2,29@1,0,0 --input a.png"), run("draw dr16.tif line:2,0,2,29@1,0,0 --input a16.tif");
    for (const auto &[file, depth] : {std::pair{"dr.png", 8}, {"dr16.tif", 16}}) {
        const LoadedImage drawn = readPicture(file);
        ASSERT_TRUE(drawn.alpha && drawn.bitDepth == depth) << file;
        EXPECT_EQ(drawn.alpha->values(), quantised(alpha, 8).values()) << file;
        Image<double> expected = quantised(pixels, depth);
        for (int c = 0; c < 30; ++c) expected(2, c, 0) = 1, expected(2, c, 1) = expected(2, c, 2) = 0; // the red line
        EXPECT_EQ(drawn.pixels.values(), expected.values()) << file;
    }
    run("warp a16.tif w.tif --to 1,2,1,31,20,31,20,2 --interpolation nearest --background 0.5"); // moved one row down, two columns right
    run("shear a.png s.png --amount 1 --interpolation nearest"), run("edges a16.tif e.tif"), run("lines a.png l.png --count 1");
    const LoadedImage warped = readPicture("w.tif"), sheared = readPicture("s.png"), edges = readPicture("e.tif"), lines = readPicture("l.png");
    ASSERT_TRUE(warped.alpha && sheared.alpha && !edges.alpha && lines.alpha && warped.bitDepth == 16 && edges.bitDepth == 16);
    EXPECT_EQ(lines.alpha->values(), alpha.values()); EXPECT_EQ(edges.pixels.planes(), 1);
    for (int k = 0; k < 20 * 30; ++k) {
        const int r = k % 20, c = k / 20, inside = r >= 1 && c >= 2;
        EXPECT_EQ((*warped.alpha)(r, c), inside ? alpha(r - 1, c - 2) : 0.0) << r << ',' << c;
        EXPECT_EQ(warped.pixels(r, c, 2), inside ? deep(r - 1, c - 2, 2) : 32768 / 65535.0) << r << ',' << c; // 0.5 in 16 bits
    }
    ASSERT_EQ(sheared.alpha->cols(), 30 + 19);
    for (int k = 0; k < 20 * 49; ++k) {
        const int r = k % 20, c = k / 20, inside = c >= r && c - r < 30;
        EXPECT_EQ((*sheared.alpha)(r, c), inside ? alpha(r, c - r) : 0.0) << r << ',' << c;
    }
}

// A file appears whole or not at all: a failed encoding (WebP holds at most 16383 columns; OpenImageIO finds out
// while encoding) or a missing folder leaves no temporary file and the old file as it was; a good one replaces it.
// JPEG's limit is checked first: libjpeg would end the process.
TEST_F(InFolder, WritingGoesThroughATemporaryFile)
{
    put("o.webp", "old"), put("o.png", "old");
    const auto before = snapshot();
    const auto refusal = [](const std::string &path, int32_t cols) { try { writeImage(path, Image<double>(1, cols)); } catch (const ToolError &e) { return std::string(e.what()); } return "written"s; };
    EXPECT_EQ(refusal("o.webp", 20000), "cannot write 'o.webp': Failed to encode o.webp as WebP image");
    EXPECT_EQ(refusal("o.jpg", 70000), "cannot write 'o.jpg': a JPEG image has at most 65500 rows and columns");
    EXPECT_EQ(snapshot(), before);
    EXPECT_EQ(run("shear t.pgm no/o.png --amount 0"), "error: cannot write 'no/o.png': No such file or directory");
    EXPECT_EQ(snapshot(), before);
    writeImage("o.png", Image<double>(2, 2));
    EXPECT_EQ(snapshot().size(), before.size()); EXPECT_EQ(readImage("o.png").values(), Image<double>(2, 2).values());
}

// "-" is standard input (any format, found from the content) or output (PNG unless a format is named): a 16-bit TIFF
// with alpha through two commands and a pipe comes out exact; a command's report goes to stderr then.
TEST_F(InFolder, StandardInputAndOutput)
{
    const Image<double> pixels = smooth(20, 30, 3), alpha = alphaPlane(20, 30);
    writePicture("a16.tif", pixels.view(), alpha.view(), 16);
    const std::string ornex = "'" ORNEX_PROGRAM "' ";
    ASSERT_EQ(shell(ornex + "shear a16.tif - --amount 0 --interpolation nearest | " + ornex + "shear - b.tif --amount 0 --interpolation nearest"), 0);
    const LoadedImage back = readPicture("b.tif");
    EXPECT_TRUE(back.bitDepth == 16 && back.alpha && back.pixels.values() == quantised(pixels, 16).values() && back.alpha->values() == alpha.values());
    ASSERT_EQ(shell(ornex + "edges t.pgm - > e.png 2> report.txt"), 0);
    EXPECT_TRUE(slurp("report.txt").ends_with(" edge pixels\n") && readImage("e.png").rows() == 48) << slurp("report.txt");
    EXPECT_EQ(shell(ornex + "edges - o.png < /dev/null 2> err.txt"), 1);
    EXPECT_EQ(slurp("err.txt"), "ornex edges: cannot read standard input: not a PNG, JPEG, TIFF, WebP, PGM or PPM file\n");
    testing::internal::CaptureStdout();
    writeImage("-", Image<double>(4, 4), "jpg");
    EXPECT_TRUE(testing::internal::GetCapturedStdout().starts_with("\xff\xd8\xff"));
}

// Values are clamped to [0, 1] (NaN as 0), times 255, halves rounded up; a grey image goes thrice into a PPM; an old file is replaced.
TEST_F(InFolder, WrittenValuesAreClampedAndRounded)
{
    Image<double> grey(1, 10);
    std::ranges::copy(std::array<double, 10>{-0.5, 1.5, NAN, 0.5, 100.4 / 255, 100.6 / 255, 1.0, 0.0, -INFINITY, INFINITY}, grey.data());
    put("o.ppm", "old contents"), writeImage("o.ppm", grey);
    EXPECT_EQ(slurp("o.ppm"), "P6\n10 1\n255\n\0\0\0\xff\xff\xff\0\0\0\x80\x80\x80\x64\x64\x64\x65\x65\x65\xff\xff\xff\0\0\0\0\0\0\xff\xff\xff"s);
}

TEST_F(InFolder, BadInputsAreRefusedWithTheirMessage)
{
    writeImage("g.png", smooth(24, 32, 3));
    const std::string magic = "not a PNG, JPEG, TIFF, WebP, PGM or PPM file", good = slurp("g.png");
    fs::remove("g.png");
    const std::pair<std::string, std::string> unreadable[] = { // file content, why (empty: OpenImageIO's words)
        {"", magic}, {"hello", magic}, {"P7 1 1 255\n", magic}, {"\x89PNG\r\n\x1a\r", magic}, {"P5 40000 40000 255\n", "image too large"},
        {"P5\n2 2\n255\n\x01", "truncated or damaged image data"}, {"\x89PNG\r\n\x1a\n"s, ""}, {good.substr(0, good.size() / 2), ""},
        {"\xff\xd8\xff\xe0", ""}, {"II*\0\x08\0\0\0"s, ""}, {"RIFF\0\0\0\0WEBPVP8 "s, ""}};
    const std::string items = "expects line:R1,C1,R2,C2, aaline:..., circle:R,C,RADIUS, aacircle:..., aadisc:..., "
                              "polygon:R,C,R,C,R,C[,...], aapolygon:... or text:ROW,COL,WORDS";
    const std::string edgesUsage = "ornex edges INPUT OUTPUT [options]  |  ornex edges INPUT... --out-dir DIR [options]";
    const std::string drawUsage = "ornex draw OUTPUT ITEM... [--input IN | --size R,C] [options]  |  ornex draw ITEM... --out-dir DIR --input IN...";
    const std::string extension = "': unsupported extension (use .png, .jpg, .tif, .webp, .pgm or .ppm)", font = "cannot load font '" + Font::defaultPath();
    const std::pair<std::string, std::string> refused[] = { // command, message
        {"shear none o.png --amount 0", "cannot read 'none': no such file"}, {"shear . o.png --amount 0", "cannot read '.': Is a directory"},
        {"shear t.pgm o.gif --amount 0", "cannot write 'o.gif" + extension}, {"shear t.pgm x.png/o --amount 0", "cannot write 'x.png/o" + extension},
        {"shear c.ppm t.pgm --amount 0", "cannot write 't.pgm': a PGM file holds grey images only (use .ppm or .png for colour)"},
        {"shear t.pgm no/o.png --amount 0", "cannot write 'no/o.png': No such file or directory"}, {"demo t.pgm/out", "cannot create 't.pgm/out': Not a directory"},
        {"shear t.pgm t.pgm/o.pgm --amount 0", "cannot write 't.pgm/o.pgm': Not a directory"}, {"shear t.pgm d.png --amount 0", "cannot write 'd.png': Is a directory"},
        {"edges t.pgm", "expects INPUT OUTPUT, or INPUT... with --out-dir DIR; usage: " + edgesUsage}, {"edges t.pgm o.png --colour 2", "unknown option '--colour'"},
        {"shear t.pgm o.png --amount", "--amount: needs a value"}, {"shear t.pgm o.png --amount x", "--amount: expects a number, got 'x'"},
        {"shear t.pgm o.png", "--amount: required"}, {"shear t.pgm o.png --amount -10.5", "--amount: expects a value from -10 to 10"},
        {"shear t.pgm o.png --amount 1 --interpolation cubic", "--interpolation: expects nearest, bilinear or bicubic, got 'cubic'"},
        {"edges t.pgm o.png --sigma -1", "--sigma: must be positive"}, {"lines t.pgm o.png --count 0", "--count: expects a whole number from 1 to 1000"},
        {"motion t.pgm c.ppm o.png", "frames: must have the same size"}, {"motion t.pgm t.pgm o.png --block 1", "--block: expects a whole number from 2 to 512"},
        {"motion t.pgm t.pgm o.png --range 2.5", "--range: expects a whole number, got '2.5'"}, {"flow t.pgm t.pgm o.png --method x", "--method: expects hs or lk, got 'x'"},
        {"motion t.pgm t.pgm o.png --search diamond", "--search: expects full or three-step, got 'diamond'"},
        {"warp t.pgm o.png", "--to: the four output corners are required"}, {"warp t.pgm o.png --to 1,2,3", "--to: expects 8 comma-separated numbers"},
        {"warp t.pgm o.png --to 0,0,0,1,1,1,1,0 --size 0,5", "--size: expects ROWS,COLS from 1 to 30000"},
        {"draw o.png line:1,1,2,2 --size 5,30001", "--size: expects ROWS,COLS from 1 to 30000"},
        {"draw o.png line:1,1,2,2 --font-size 3", "--font-size: expects a value from 4 to 400"}, {"draw o.png polygon:1,2,3,4", "item 'polygon:1,2,3,4': " + items},
        {"draw o.png", "expects an output file and at least one item; usage: " + drawUsage},
        {"draw o.png line", "item 'line': expects KIND:NUMBERS, for example line:10,10,50,80"}, {"draw o.png star:1,2", "item 'star:1,2': " + items},
        {"draw o.png line:1,1,2,2@1,0", "item 'line:1,1,2,2@1,0' colour: expects #rrggbb or three numbers R,G,B from 0 to 1, got '1,0'"},
        {"draw o.png text:1,2", "item 'text:1,2': expects text:ROW,COL[@COLOUR][/OPACITY],WORDS"}, {"draw o.png circle:5,5,0", "item 'circle:5,5,0': radius: must be positive"},
        {"font 0 " + Font::defaultPath(), font + "': the pixel height must be positive, not 0"}, {"font 24 .", "cannot load font '.': is a directory"},
        {"font 24 /no/such.ttf", "cannot load font '/no/such.ttf': no such file"}, {"font 24 t.pgm", "cannot load font 't.pgm': not a font file FreeType can read"}};
    auto refuses = [](const std::string &line, const std::string &message, const std::string &content) {
        const auto before = snapshot();
        const std::string said = run(line);
        if (message.ends_with(": ")) EXPECT_TRUE(said.starts_with("error: " + message) && said.size() > message.size() + 10) << said;
        else EXPECT_EQ(said, "error: " + message) << line << " on " << testing::PrintToString(content);
        EXPECT_EQ(snapshot(), before) << line;
    };
    for (const auto &[line, message] : refused) refuses(line, message, "");
    for (const auto &[content, why] : unreadable) put("in", content), refuses("shear in o.png --amount 0", "cannot read 'in': " + why, content);
}

TEST_F(InFolder, CommandsRecoverHowTheirInputWasMade)
{
    const auto matches = [](const Image<double> &image, int rows, int cols, auto expected) {
        int wrong = image.rows() == rows && image.cols() == cols ? 0 : 1;
        for (int k = 0; k < rows * cols && !wrong; ++k) wrong += image(k % rows, k / rows) != expected(k % rows, k / rows);
        return wrong == 0;
    };
    for (const char *frames : {"n.pgm n12.pgm", "t.pgm t12.pgm --search three-step --cost mse"}) // one row down, two columns right
        EXPECT_EQ(run("motion "s + frames + " m.ppm --block 8 --range 3"), "36 blocks; median vector (u, v) = (2.0, 1.0)\n") << frames;
    for (const auto &[command, right, down] : {std::tuple{"t01.pgm f.png --iterations 50", 1, 0}, {"t11.pgm f.png --method lk", 1, 1}}) {
        double u = 0, v = 0;
        EXPECT_EQ(std::sscanf(run("flow t.pgm "s + command).c_str(), "median (u, v) = (%lf, %lf)", &u, &v), 2) << command;
        EXPECT_NEAR(u, right, 0.2) << command; EXPECT_NEAR(v, down, 0.2) << command;
        const Image<double> f = readImage("f.png"); // right is red on the colour wheel, down and right towards yellow
        EXPECT_TRUE(f(24, 24, 0) == 1 && (down ? f(24, 24, 1) > f(24, 24, 2) + 0.05 : std::abs(f(24, 24, 1) - f(24, 24, 2)) < 0.1)) << command;
    }
    run("warp t.pgm w.pgm --to 1,2,1,49,48,49,48,2 --interpolation nearest"); // the corners moved as t12 was
    EXPECT_TRUE(matches(readImage("w.pgm"), 48, 48, [](int r, int c) { return r >= 1 && c >= 2 ? texture(r - 1, c - 2) : 0.0; }));
    run("shear t.pgm s.pgm --amount 1 --interpolation nearest"), run("shear t.pgm v.pgm --amount -1 --vertical --interpolation nearest");
    EXPECT_TRUE(matches(readImage("s.pgm"), 48, 95, [](int r, int c) { return c >= r && c - r < 48 ? texture(r, c - r) : 0.0; }));
    EXPECT_TRUE(matches(readImage("v.pgm"), 95, 48, [](int r, int c) { return r >= 47 - c && r - 47 + c < 48 ? texture(r - 47 + c, c) : 0.0; }));

    Image<double> step(16, 16, 1, 50 / 255.0); // a step up at column 8: edges there only, on the vertical line rho = 8
    std::fill(step.values().begin() + 8 * 16, step.values().end(), 200 / 255.0);
    writeImage("step.pgm", step);
    const std::string printed = run("edges step.pgm e.pgm --sigma 1");
    const Image<double> edges = readImage("e.pgm");
    EXPECT_TRUE(matches(edges, 16, 16, [&](int r, int c) { return c == 8 ? edges(r, c) : 0.0; }));
    EXPECT_EQ(printed, std::to_string(std::ranges::count(edges.values(), 1.0)) + " edge pixels\n"); EXPECT_GE(std::ranges::count(edges.values(), 1.0), 10);
    double theta = 1, rho = 0;
    EXPECT_EQ(std::sscanf(run("lines step.pgm l.png --count 1 --theta-step 2 --sigma 1").c_str(), "theta %lf rho %lf", &theta, &rho), 2);
    EXPECT_LE(std::abs(theta), 2); EXPECT_EQ(rho, 8); // within a step of vertical

    // Each item in its colour where it must cover (a line (1, 1)-(1, 6), a circle of radius 3 round (7, 6), ...) or must
    // not, white text with each glyph's coverage at the pen plus its offsets; then a line drawn over the result.
    run("draw p.ppm line:1,1,1,6@1,0,0.5 circle:7,6,3 aaline:28,0,28,39@1,0,1 aadisc:20,6,4@0,0,1 polygon:16,16,16,26,26,26,26,16@1,1,0 "
        "aapolygon:16,30,16,38,26,38,26,30@0,1,1 aacircle:7,20,3@0,1,0 text:12,30,Hp --size 30,50 --font-size 10");
    run("draw q.ppm line:0,0,0,49 --input p.ppm --font-size 4"), run("shear c.ppm s10.png --amount -10"); // the largest allowed
    const Image<double> p = readImage("p.ppm");
    const double half = 128 / 255.0, pixels[][5] = {{1, 0, 0, 0, 0}, {1, 1, 1, 0, half}, {1, 6, 1, 0, half}, {1, 7, 0, 0, 0}, {7, 9, 1, 1, 1}, {7, 3, 1, 1, 1},
        {4, 6, 1, 1, 1}, {7, 6, 0, 0, 0}, {28, 10, 1, 0, 1}, {20, 6, 0, 0, 1}, {21, 21, 1, 1, 0}, {21, 34, 0, 1, 1}, {7, 23, 0, 1, 0}, {7, 20, 0, 0, 0}};
    for (const auto &[r, c, red, green, blue] : pixels) EXPECT_EQ((std::array{p(r, c, 0), p(r, c, 1), p(r, c, 2)}), (std::array{red, green, blue})) << r << ',' << c;
    const Font small(10);
    int wrongInk = 0, pen = 30;
    for (const Glyph g : {small('H'), small('p')}) {
        for (int k = 0; k < g.width * g.height; ++k) wrongInk += p(12 - g.yOffset + k / g.width, pen + g.xOffset + k % g.width, 2) != g.bitmap[size_t(k)] / 255.0;
        pen += g.advance;
    }
    EXPECT_EQ(wrongInk, 0); EXPECT_TRUE(matches(readImage("q.ppm"), 30, 50, [&](int r, int c) { return r == 0 ? 1.0 : p(r, c); }));
    EXPECT_EQ(readImage("s10.png").cols(), 4 + 30);
}

// A refusal is one line on stderr naming the command, exit code 1; no command or an unknown one gives 2. The demo's
// report: block matching within a pixel of the known warp, both flows the one-pixel move, edges, each drawn line within 2 degrees and 3 pixels of a strong Hough line; every stage is a picture.
TEST_F(InFolder, TheProgramAndItsDemo)
{
    for (const auto &[words, code, message] : {std::tuple{"edges none.png o.png", 1, "ornex edges: cannot read 'none.png': no such file\n"s},
             {"blur t.pgm o.png", 2, "ornex: unknown command 'blur' (ornex --help lists the commands)\n"}, {"", 2, "usage: ornex COMMAND [ARGUMENTS]"},
             {"edges t.pgm o.png --sigma -1", 2, "ornex edges: --sigma: must be positive\n"}, {"demo a b", 2, "usage: ornex demo [OUTDIR]"}}) {
        EXPECT_EQ(WEXITSTATUS(std::system(("'" ORNEX_PROGRAM "' "s + words + " > out.txt 2> err.txt").c_str())), code) << words;
        EXPECT_TRUE(message.ends_with('\n') ? slurp("err.txt") == message : slurp("err.txt").starts_with(message)) << words << ": " << slurp("err.txt");
    }
    for (const char *command : {"demo", "edges", "lines", "motion", "flow", "warp", "shear", "draw"}) // --help: the usage, on stdout
        EXPECT_TRUE(run(command + " --help"s).starts_with("usage: ornex "s + command + ' ')) << command;
    std::istringstream report(run("demo out"));
    std::vector<int> found(4);
    const std::regex decimal("-?[0-9]+\\.[0-9]+");
    for (std::string line; std::getline(report, line);) {
        std::vector<double> x;
        for (std::sregex_iterator it(line.begin(), line.end(), decimal), end; it != end; ++it) x.push_back(std::stod(it->str()));
        found[0] += line.find("median vector") != line.npos && std::hypot(x[0] - x[2], x[1] - x[3]) <= 1;
        found[1] += line.find("median (u, v)") != line.npos && x[0] >= 0.4 && x[1] >= 0.4;
        found[2] += line.find("edge pixels") != line.npos && std::stoi(line) >= 1000;
        found[3] += line.find("drawn line") != line.npos && std::abs(x[0] - x[2]) <= 2 && std::abs(x[1] - x[3]) <= 3;
    }
    EXPECT_EQ(found, (std::vector{1, 2, 1, 2})) << report.str();
    for (const char *name : {"scene", "frame2", "motion", "flow_hs", "flow_lk", "edges", "lines", "warp", "shear", "summary"})
        EXPECT_TRUE(fs::file_size("out/"s + name + ".png") > 1000 && readImage("out/"s + name + ".png").planes() > 0) << name;
}

// DejaVu Sans in units of a 2048-unit em: capitals 1493 high, x-height 1120, 'p' 426 below the baseline, 'H' 201 right of
// the pen and 201 short of its advance of 1540, space 651. At 24 px a unit is 24/2048 px; hinting moves an edge by up to a pixel.
TEST(Font, GlyphsHaveTheFontsShapesAndProportions)
{
    const Font font(24);
    const double unit = 24 / 2048.0;
    const Glyph h = font('H'), p = font('p'), e = font('e'), acute = font('\xe9'), space = font(' '), box1 = font('\x01'), box2 = font('\x02');
    EXPECT_NEAR(h.advance, 1540 * unit, 1);
    EXPECT_LE(std::abs(2 * h.xOffset + h.width - h.advance), 1); // bearings equal
    EXPECT_NEAR(h.yOffset, 1493 * unit, 1);
    EXPECT_EQ(h.height, h.yOffset);
    EXPECT_NEAR(p.yOffset, 1120 * unit, 1); EXPECT_NEAR(p.height - p.yOffset, 426 * unit, 1); EXPECT_NEAR(space.advance, 651 * unit, 1);
    EXPECT_EQ(font.textWidth("Hp "), h.advance + p.advance + space.advance); EXPECT_NEAR(Font(48)('H').height, 2 * 1493 * unit, 1);
    const auto at = [](const Glyph &g, int r, int c) { return g.bitmap[size_t(r * g.width + c)]; };
    int stems = 0, bar = 0; // H: two solid stems its full height, a bar across the middle only; p: a stem below the baseline on the left
    for (int r = 0; r < h.height; ++r) stems += at(h, r, 1) == 255 && at(h, r, h.width - 2) == 255, bar += at(h, r, h.width / 2) == 255;
    EXPECT_TRUE(stems == h.height && bar >= 1 && bar <= 4 && at(h, 0, h.width / 2) == 0 && at(h, h.height - 1, h.width / 2) == 0) << bar;
    for (int r = p.yOffset + 1; r < p.height; ++r) EXPECT_TRUE(at(p, r, 1) == 255 && at(p, r, p.width - 1) == 0) << r;
    const int above = acute.yOffset - e.yOffset; // Latin-1 bytes are their own characters: é is the same e under an accent
    ASSERT_TRUE(above >= 3 && acute.width == e.width && acute.xOffset == e.xOffset && acute.advance == e.advance && acute.height >= e.height + above);
    EXPECT_TRUE(std::equal(e.bitmap.begin(), e.bitmap.end(), acute.bitmap.begin() + above * e.width));
    // Control characters have no glyph: each gets the font's missing-glyph box, in an entry of its own.
    EXPECT_TRUE(std::ranges::equal(box1.bitmap, box2.bitmap) && box1.advance == box2.advance && box1.width == box2.width &&
                std::ranges::count(box1.bitmap, 255) > 0 && box1.bitmap.data() != box2.bitmap.data());
    const std::vector<uint8_t> copy(h.bitmap.begin(), h.bitmap.end()); // rendered once: H stays where and what it was
    for (int c = 0; c < 256; ++c) font(char(c));
    EXPECT_EQ(font('H').bitmap.data(), h.bitmap.data()); EXPECT_TRUE(std::ranges::equal(font('H').bitmap, copy));
}

} // namespace
