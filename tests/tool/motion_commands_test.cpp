#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <random>

#include "commands.hpp"
#include "flow_files.hpp"
#include "flow_pictures.hpp"
#include "files.hpp"
#include "image_io.hpp"

namespace {
namespace fs = std::filesystem;
using namespace ornex;
using namespace ornex::tool;
using namespace std::string_literals;

std::string bytes(const std::string &hex) { std::string out; for (size_t k = 0; k < hex.size(); k += 2) out += char(std::stoi(hex.substr(k, 2), nullptr, 16)); return out; }

// The output of a command, or "error: " and its message.
std::string run(int (*command)(const std::vector<std::string> &), const std::string &line)
{
    std::istringstream in(line);
    const std::vector<std::string> words{std::istream_iterator<std::string>(in), {}};
    std::string error;
    testing::internal::CaptureStdout();
    try { command(words); } catch (const std::exception &e) { error = "error: "s + e.what(); }
    const std::string out = testing::internal::GetCapturedStdout();
    return error.empty() ? out : error;
}

// A 2 x 3 field of values whose float32 bits are known: u then v, row by row.
TEST(MotionFiles, FloAndNpyHoldTheFieldAsTheirFormatsDefine)
{
    VelocityField<double> field{Image<double>(2, 3), Image<double>(2, 3)};
    const double u[2][3] = {{1, -2, 0.5}, {0, 1.5, -0.25}}, v[2][3] = {{2, 0, -1}, {3, 0.5, 1}};
    for (int k = 0; k < 6; ++k) field.u(k / 3, k % 3) = u[k / 3][k % 3], field.v(k / 3, k % 3) = v[k / 3][k % 3];
    const std::string data = bytes("0000803f00000040" "000000c000000000" "0000003f000080bf" "0000000000004040" "0000c03f0000003f" "000080be0000803f");
    const fs::path folder = fs::temp_directory_path() / ("ornex-flow-files-" + std::to_string(::getpid()));
    fs::create_directories(folder);
    writeFlow((folder / "f.flo").string(), field), writeFlow((folder / "f.NPY").string(), field);
    EXPECT_EQ(slurp((folder / "f.flo").string()), "PIEH" + bytes("03000000" "02000000") + data); // 202021.25, width, height
    const std::string dict = "{'descr': '<f4', 'fortran_order': False, 'shape': (2, 3, 2), }";
    EXPECT_EQ(slurp((folder / "f.NPY").string()), "\x93NUMPY\x01\x00\x76\x00"s + dict + std::string(128 - 10 - dict.size() - 1, ' ') + "\n" + data);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 2); // no temporary file left
    fs::remove_all(folder);
}

// The wheel's colours: red at 0 degrees (right), then clockwise: down between wheel colours 13 and 14 (green 221 and
// 238 of 255), left at colour 27 (green 255 - 46), up between 40 and 41 (red 78 and 98); shorter is paler.
TEST(MotionFiles, TheColourWheelGivesTheKnownHues)
{
    const std::pair<std::array<double, 2>, std::array<double, 3>> cases[] = {
        {{1, 0}, {1, 0, 0}}, {{0, 1}, {1, 229.5 / 255, 0}}, {{-1, 0}, {0, 209 / 255.0, 1}}, {{0, -1}, {88 / 255.0, 0, 1}},
        {{0.5, 0}, {1, 0.5, 0.5}}, {{0, 0}, {1, 1, 1}}, {{0, -0.0}, {1, 1, 1}}};
    for (const auto &[motion, colour] : cases) {
        const auto found = wheelColour(motion[0], motion[1]);
        for (int p = 0; p < 3; ++p) EXPECT_NEAR(found[size_t(p)], colour[size_t(p)], 1e-12) << motion[0] << "," << motion[1] << " plane " << p;
    }
}

// An arrow straight up (which the line kernel draws only top down) reaches its true length and has barbs either side.
TEST(MotionFiles, ArrowsHaveTheirTrueLengthAndAHead)
{
    Picture picture(20, 20, 3);
    drawArrow(colourPlanes(picture), Point{15, 10}, 0, -8, {1, 1, 1});
    int left = 0, right = 0, beyond = 0;
    for (int r = 0; r < 20; ++r)
        for (int c = 0; c < 20; ++c) left += c < 10 && picture(r, c) > 0.5, right += c > 10 && picture(r, c) > 0.5, beyond += r < 7 && picture(r, c) > 0;
    for (int r = 7; r <= 15; ++r) EXPECT_EQ(picture(r, 10), 1.0) << r;
    EXPECT_TRUE(left > 0 && right > 0 && beyond == 0) << left << " " << right << " " << beyond;
}

// A smooth random texture, 128 pixels square, and the same moved 3 right and 2 down.
struct Moved : testing::Test {
    void SetUp() override
    {
        folder = fs::temp_directory_path() / ("ornex-motion-" + std::to_string(::getpid()));
        fs::create_directories(folder), fs::current_path(folder);
        std::mt19937 random(11);
        std::uniform_real_distribution<double> angle(0, 2 * std::numbers::pi), frequency(0.08, 0.45);
        std::vector<std::array<double, 4>> waves;
        for (int k = 0; k < 24; ++k) {
            const double a = angle(random), f = frequency(random);
            waves.push_back({f * std::cos(a), f * std::sin(a), angle(random), 0.2 / (1 + 8 * f)});
        }
        for (const auto &[name, du, dv] : {std::tuple{"a.png", 0, 0}, {"b.png", 3, 2}}) {
            Image<double> image(128, 128);
            for (int k = 0; k < 128 * 128; ++k) {
                double sum = 0.5;
                for (const auto &[across, down, phase, amplitude] : waves) sum += amplitude * std::sin(across * (k / 128 - du) + down * (k % 128 - dv) + phase);
                image(k % 128, k / 128) = sum;
            }
            writeImage(name, image);
        }
    }
    void TearDown() override { fs::current_path(fs::temp_directory_path()), fs::remove_all(folder); }
    fs::path folder;
};

TEST_F(Moved, FlowWithLevelsFindsTheMoveAndSavesIt)
{
    for (const auto &[options, levels] : {std::pair{""s, 1}, {" --levels 4 --save-flow f.flo"s, 4}, {" --levels 4 --save-flow f.npy"s, 4},
                                          {" --method lk --threshold 0.0001"s, 1}, {" --method lk --threshold 0.0001 --levels 4"s, 4}}) {
        double u = 0, v = 0, scale = 0;
        const std::string out = run(runFlow, "a.png b.png f.png" + options);
        ASSERT_EQ(std::sscanf(out.c_str(), "median (u, v) = (%lf, %lf) over %*d moving pixels\ncolour scale: full colour from a motion of %lf", &u, &v, &scale), 3) << out;
        EXPECT_EQ(std::hypot(u - 3, v - 2) <= 0.25, levels == 4) << options << ": " << out;
        const Image<double> picture = readImage("f.png"); // down and to the right: between red and yellow; the legend's right red, bottom yellow
        EXPECT_TRUE(picture(64, 64, 0) == 1 && picture(64, 64, 1) > picture(64, 64, 2)) << options;
        EXPECT_TRUE(picture(19, 122, 0) == 1 && picture(19, 122, 1) < 0.2 && picture(19, 122, 2) < 0.2) << options;
        EXPECT_TRUE(picture(33, 108, 0) == 1 && picture(33, 108, 1) > 0.85 && picture(33, 108, 2) < 0.2) << options;
    }
    const std::string flo = slurp("f.flo"), npy = slurp("f.npy");
    ASSERT_TRUE(flo.size() == 12 + 128 * 128 * 8 && npy.size() == 128 + 128 * 128 * 8) << flo.size() << " " << npy.size();
    EXPECT_EQ(flo.substr(0, 12), "PIEH" + bytes("80000000" "80000000"));
    EXPECT_EQ(npy.substr(0, 10) + npy.substr(npy.find('('), 128 - npy.find('(')), "\x93NUMPY\x01\x00\x76\x00(128, 128, 2), }"s + std::string(51, ' ') + "\n");
    EXPECT_TRUE(npy.substr(128) == flo.substr(12)); // the same values in both
}

TEST_F(Moved, BlockVectorsAreSavedAsCsv)
{
    EXPECT_EQ(run(runMotion, "a.png b.png m.png --save-vectors v.csv"), "64 blocks; median vector (u, v) = (3.0, 2.0)\n");
    const std::string csv = slurp("v.csv");
    EXPECT_TRUE(csv.starts_with("row,col,u,v\n7.5,7.5,3,2\n7.5,23.5,")) << csv.substr(0, 60);
    EXPECT_EQ(std::ranges::count(csv, '\n'), 65);
    const Image<double> drawn = readImage("m.png"); // the first block's arrow, centre (8, 8), ends at (10, 11)
    EXPECT_TRUE(drawn(10, 11, 0) == 1 && drawn(10, 11, 2) < 0.2) << drawn(10, 11, 0) << " " << drawn(10, 11, 2);
}

TEST_F(Moved, BadFileNamesAndLevelsWriteNothing)
{
    const std::tuple<int (*)(const std::vector<std::string> &), std::string, std::string> refused[] = {
        {runFlow, "a.png b.png o.png --save-flow f.txt", "--save-flow: expects a file name ending in .flo or .npy, got 'f.txt'"},
        {runFlow, "a.png b.png o.png --levels 0", "--levels: expects a whole number from 1 to 16"},
        {runFlow, "a.png b.png o.png --save-flow no/f.flo", "cannot write 'no/f.flo': No such file or directory"},
        {runFlow, "a.png b.png no/o.png --save-flow f.npy", "cannot write 'no/o.png': No such file or directory"},
        {runMotion, "a.png b.png o.png --save-vectors v.flo", "--save-vectors: expects a file name ending in .csv, got 'v.flo'"},
        {runMotion, "a.png b.png no/o.png --save-vectors v.csv", "cannot write 'no/o.png': No such file or directory"}};
    for (const auto &[command, line, message] : refused) {
        EXPECT_EQ(run(command, line), "error: " + message) << line;
        EXPECT_EQ(std::distance(fs::directory_iterator("."), {}), 2) << line; // a.png and b.png only
    }
}

} // namespace
