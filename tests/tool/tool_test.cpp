#include <gtest/gtest.h>
#include <zlib.h>

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
#include "image_io.hpp"

namespace {
namespace fs = std::filesystem;
using namespace ornex;
using namespace ornex::tool;
using namespace std::string_literals;
using Samples = std::vector<unsigned>; // in file order: rows top to bottom, a pixel's samples together

void put(const std::string &path, const std::string &bytes) { std::ofstream(path, std::ios::binary) << bytes; }
std::string slurp(const std::string &path) { std::ifstream in(path, std::ios::binary); return {std::istreambuf_iterator<char>(in), {}}; }
std::string be32(uint32_t v) { return {char(v >> 24), char(v >> 16), char(v >> 8), char(v)}; }

std::string chunk(const std::string &type, const std::string &data)
{
    const uLong crc = crc32(crc32(0, (const Bytef *)type.data(), 4), (const Bytef *)data.data(), uInt(data.size()));
    return be32(uint32_t(data.size())) + type + data + be32(uint32_t(crc));
}

// A PNG whose scanlines (each row led by its filter byte, 0 here; or the passes when adam7) are compressed by zlib into one IDAT.
std::string png(uint32_t cols, uint32_t rows, int depth, int type, const std::string &scan, const std::string &extra = "", bool adam7 = false)
{
    std::string idat(compressBound(uLong(scan.size())), '\0');
    uLongf size = idat.size();
    compress((Bytef *)idat.data(), &size, (const Bytef *)scan.data(), uLong(scan.size()));
    return "\x89PNG\r\n\x1a\n" + chunk("IHDR", be32(cols) + be32(rows) + char(depth) + char(type) + "\0\0"s + char(adam7)) + extra +
           chunk("IDAT", idat.substr(0, size)) + chunk("IEND", "");
}

Image<double> fromFileOrder(const Samples &samples, int32_t cols, int32_t planes, double maximum)
{
    Image<double> image(int32_t(samples.size()) / cols / planes, cols, planes);
    for (size_t k = 0; k < samples.size(); ++k) image(int32_t(k / planes / cols), int32_t(k / planes % cols), int32_t(k % planes)) = samples[k] / maximum;
    return image;
}

Samples ramp(size_t count) { Samples samples(count); std::ranges::generate(samples, [k = 0u]() mutable { return k++ * 37 % 256; }); return samples; }

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

struct Case { const char *name; std::string file; int32_t cols, planes; double maximum; Samples samples; };
struct ImageFiles : InFolder, testing::WithParamInterface<Case> {};

// A case without file bytes goes through writeImage to its name; the others are written by hand to in.pgm.
TEST_P(ImageFiles, ReadBackExactly)
{
    const Case &test = GetParam();
    const Image<double> expected = fromFileOrder(test.samples, test.cols, test.planes, test.maximum);
    const std::string path = test.file.empty() ? test.name : "in.pgm";
    test.file.empty() ? writeImage(path, expected) : put(path, test.file);
    const Image<double> actual = readImage(path);
    ASSERT_EQ((std::vector{actual.rows(), actual.cols(), actual.planes()}), (std::vector{expected.rows(), test.cols, test.planes}));
    EXPECT_EQ(actual.values(), expected.values());
    if (test.file.empty() && !path.ends_with("PNG") && !path.ends_with("png")) { // a netpbm header, then the samples as bytes
        EXPECT_EQ(slurp(path), (test.planes == 3 ? "P6\n" : "P5\n") + std::to_string(test.cols) + ' ' + std::to_string(expected.rows()) + "\n255\n" +
                                   std::string(test.samples.begin(), test.samples.end()));
    }
    EXPECT_EQ(snapshot().size(), 9u); // the eight files of every test and this one: no temporary file left behind
}

// Palette colours 0 to 3. The interlaced 3 x 1 PNG: pass 1 holds column 0, pass 4 column 2, pass 6 column 1, the others nothing.
const std::string palette = chunk("PLTE", "\x0a\x14\x1e\xff\x00\x80\x00\x00\x00\x07\x08\x09"s);
INSTANTIATE_TEST_SUITE_P(Formats, ImageFiles, testing::Values(
    Case{"grey.png", "", 16, 1, 255, ramp(256)}, Case{"colour.png", "", 10, 3, 255, ramp(270)}, Case{"grey.pgm", "", 16, 1, 255, ramp(256)},
    Case{"colour.ppm", "", 9, 3, 255, ramp(270)}, Case{"CAPS.PNG", "", 3, 3, 255, ramp(18)}, Case{"maximum 15", "P5 3 1 15\n\x00\x05\x0f"s, 3, 1, 15, {0, 5, 15}},
    Case{"pgm", "P5\n# by hand\n3 2\n# still the header\n255\n\x00\x0a\x14\x1e\x28\xff"s, 3, 1, 255, {0, 10, 20, 30, 40, 255}},
    Case{"ppm", "P6 2 2 255\n\xff\x00\x00\x00\xff\x00\x00\x00\xff\xc8\xc9\xca"s, 2, 3, 255, {255, 0, 0, 0, 255, 0, 0, 0, 255, 200, 201, 202}},
    Case{"pgm16", "P5\n3 1\n65535\n\x12\x34\xff\xff\x00\x01"s, 3, 1, 65535, {0x1234, 0xffff, 1}},
    Case{"ppm16", "P6\n1 2\n1000\n\x01\xf4\x03\xe8\x00\x00\x00\x01\x00\x02\x00\x03"s, 1, 3, 1000, {500, 1000, 0, 1, 2, 3}},
    Case{"plain pgm", "P2\n# plain\n2 2\n100\n0 50\n 100\t25\n", 2, 1, 100, {0, 50, 100, 25}},
    Case{"plain ppm", "P3 2 1 255\n1 2 3   4 5 6", 2, 3, 255, {1, 2, 3, 4, 5, 6}}, Case{"pixels like space", "P5\n2 1\n255\n\n ", 2, 1, 255, {'\n', ' '}},
    Case{"png grey", png(3, 2, 8, 0, "\0\x01\x02\x03\0\xfe\xff\x00"s), 3, 1, 255, {1, 2, 3, 254, 255, 0}},
    Case{"png grey 1-bit", png(10, 2, 1, 0, "\0\xb0\x40\0\x00\xc0"s), 10, 1, 1, {1, 0, 1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1}},
    Case{"png rgb", png(2, 1, 8, 2, "\0\x01\x02\x03\xfd\xfe\xff"s), 2, 3, 255, {1, 2, 3, 253, 254, 255}},
    Case{"png rgba", png(2, 2, 8, 6, "\0\x01\x02\x03\x00\x04\x05\x06\xff\0\x07\x08\x09\x64\xfa\xfb\xfc\x01"s), 2, 3, 255, {1, 2, 3, 4, 5, 6, 7, 8, 9, 250, 251, 252}},
    Case{"png palette, transparency", png(3, 2, 8, 3, "\0\x00\x01\x02\0\x03\x03\x01"s, palette + chunk("tRNS", "\x00\x80"s)), 3, 3, 255,
         {10, 20, 30, 255, 0, 128, 0, 0, 0, 7, 8, 9, 7, 8, 9, 255, 0, 128}},
    Case{"png palette 2-bit", png(5, 1, 2, 3, "\0\xe4\xc0"s, palette), 5, 3, 255, {7, 8, 9, 0, 0, 0, 255, 0, 128, 10, 20, 30, 7, 8, 9}},
    Case{"png grey+alpha 16", png(2, 1, 16, 4, "\0\x12\x34\x00\x00\xab\xcd\x80\x00"s), 2, 1, 65535, {0x1234, 0xabcd}},
    Case{"png rgb 16", png(1, 2, 16, 2, "\0\x00\x01\x01\x00\xff\xfe\0\x80\x00\x00\x00\xff\xff"s), 1, 3, 65535, {1, 256, 0xfffe, 0x8000, 0, 0xffff}},
    Case{"png interlaced", png(3, 1, 8, 0, "\0\x01\0\x03\0\x02"s, "", true), 3, 1, 255, {1, 2, 3}}),
    [](const auto &info) { std::string name = info.param.name; for (char &ch : name) if (!std::isalnum(ch)) ch = '_'; return name; });

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
    const Samples noise = ramp(80);
    const std::string good = png(80, 1, 8, 0, "\0"s + std::string(noise.begin(), noise.end()));
    std::string badCrc = good;
    badCrc[29] ^= 0x55; // in the CRC of IHDR
    const std::string magic = "not a PNG, PGM or PPM file", cut = "truncated pixel data", range = " header (maximum value must be 1 to 65535)";
    const std::pair<std::string, std::string> unreadable[] = { // file content, why
        {"", magic}, {"\x89PNG\r\n\x1a\r 1 1 255\n", magic}, {"\x89PNG\r\n\x1a\n"s, "truncated PNG data"}, {"P4 1 1\n\x80", magic}, {"P5x", magic}, {"P5 1 1 255", cut},
        {"P5\n2 1\n65535\n\1\2\3", cut}, {"P6\n1 1\n255\n\1\2", cut}, {"P2 2 2 9\n1 2 3\n", cut}, {"P6\n2 2", "truncated PPM header"},
        {"P5\nx 2\n255\n", "invalid PGM header"}, {"P5\n0 2\n255\n", "invalid PGM header (no pixels)"}, {"P5\n1 1\n0\n\1", "invalid PGM" + range},
        {"P6\n1 1\n65536\n\1\1\1\1\1\1", "invalid PPM" + range}, {"P5\n99999999999 1\n255\n", "image too large"},
        {"P5\n2 1\n200\n\xc8\xc9", "pixel value 201 above the maximum 200"}, {"P2\n2 1\n9\n3 10\n", "pixel value 10 above the maximum 9"},
        {"P3\n1 1\n9\n3 x 1\n", "invalid pixel value"}, {png(50000, 50000, 8, 0, ""), "image too large"}, {good.substr(0, 70), "truncated PNG data"},
        {good.substr(0, good.size() - 13), "truncated PNG data"}, {badCrc, "invalid PNG file (IHDR: CRC error)"}};
    const std::string items = "expects line:R1,C1,R2,C2, aaline:..., circle:R,C,RADIUS, aacircle:..., aadisc:..., "
                              "polygon:R,C,R,C,R,C[,...], aapolygon:... or text:ROW,COL,WORDS";
    const std::string extension = "': unsupported extension (use .png, .pgm or .ppm)", font = "cannot load font '" + Font::defaultPath();
    const std::pair<std::string, std::string> refused[] = { // command, message
        {"shear none o.png --amount 0", "cannot read 'none': no such file"}, {"shear . o.png --amount 0", "cannot read '.': Is a directory"},
        {"shear t.pgm o.jpg --amount 0", "cannot write 'o.jpg" + extension}, {"shear t.pgm x.png/o --amount 0", "cannot write 'x.png/o" + extension},
        {"shear c.ppm t.pgm --amount 0", "cannot write 't.pgm': a PGM file holds grey images only (use .ppm or .png for colour)"},
        {"shear t.pgm no/o.png --amount 0", "cannot write 'no/o.png': No such file or directory"}, {"demo t.pgm/out", "cannot create 't.pgm/out': Not a directory"},
        {"shear t.pgm t.pgm/o.pgm --amount 0", "cannot write 't.pgm/o.pgm': Not a directory"}, {"shear t.pgm d.png --amount 0", "cannot write 'd.png': Is a directory"},
        {"edges t.pgm", "expects 2 file names; usage: ornex edges INPUT OUTPUT [options]"}, {"edges t.pgm o.png --colour 2", "unknown option '--colour'"},
        {"shear t.pgm o.png --amount", "option '--amount' needs a value"}, {"shear t.pgm o.png --amount x", "--amount: expects a number, got 'x'"},
        {"shear t.pgm o.png", "--amount: required"}, {"shear t.pgm o.png --amount -10.5", "--amount: expects a value from -10 to 10"},
        {"shear t.pgm o.png --amount 1 --interpolation cubic", "--interpolation: expects nearest, bilinear or bicubic, got 'cubic'"},
        {"edges t.pgm o.png --sigma -1", "sigma: must be positive and finite"}, {"lines t.pgm o.png --count 0", "--count: expects a whole number from 1 to 1000"},
        {"motion t.pgm c.ppm o.png", "frames: must have the same size"}, {"motion t.pgm t.pgm o.png --block 1", "--block: expects a whole number from 2 to 512"},
        {"motion t.pgm t.pgm o.png --range 2.5", "--range: expects a whole number, got '2.5'"}, {"flow t.pgm t.pgm o.png --method x", "--method: expects hs or lk, got 'x'"},
        {"motion t.pgm t.pgm o.png --search diamond", "--search: expects full or three-step, got 'diamond'"},
        {"warp t.pgm o.png", "--to: the four output corners are required"}, {"warp t.pgm o.png --to 1,2,3", "--to: expects 8 comma-separated numbers"},
        {"warp t.pgm o.png --to 0,0,0,1,1,1,1,0 --size 0,5", "--size: expects ROWS,COLS from 1 to 30000"},
        {"draw o.png line:1,1,2,2 --size 5,30001", "--size: expects ROWS,COLS from 1 to 30000"},
        {"draw o.png line:1,1,2,2 --font-size 3", "--font-size: expects a value from 4 to 400"}, {"draw o.png polygon:1,2,3,4", "item 'polygon:1,2,3,4': " + items},
        {"draw o.png", "expects an output file and at least one item; usage: ornex draw OUTPUT ITEM... [options]"},
        {"draw o.png line", "item 'line': expects KIND:NUMBERS, for example line:10,10,50,80"}, {"draw o.png star:1,2", "item 'star:1,2': " + items},
        {"draw o.png line:1,1,2,2@1,0", "item 'line:1,1,2,2@1,0': a colour is three numbers R,G,B from 0 to 1"},
        {"draw o.png text:1,2", "item 'text:1,2': expects text:ROW,COL,WORDS"}, {"draw o.png circle:5,5,0", "radius: must be positive"},
        {"font 0 " + Font::defaultPath(), font + "': the pixel height must be positive, not 0"}, {"font 24 .", "cannot load font '.': is a directory"},
        {"font 24 /no/such.ttf", "cannot load font '/no/such.ttf': no such file"}, {"font 24 t.pgm", "cannot load font 't.pgm': not a font file FreeType can read"}};
    auto refuses = [](const std::string &line, const std::string &message, const std::string &content) {
        const auto before = snapshot();
        EXPECT_EQ(run(line), "error: " + message) << line << " on " << testing::PrintToString(content);
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
             {"edges t.pgm o.png --sigma -1", 1, "ornex edges: sigma: must be positive and finite\n"}, {"demo a b", 2, "usage: ornex demo [OUTDIR]"}}) {
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
