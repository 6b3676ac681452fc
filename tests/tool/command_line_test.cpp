#include <gtest/gtest.h>
#include <sys/wait.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <thread>
#include <unistd.h>

#include "draw_items.hpp"
#include "font.hpp"
#include "files.hpp"
#include "image_io.hpp"
#include "ornex_rt.h"
#include "progress.hpp"
#include "tool_error.hpp"

namespace {
namespace fs = std::filesystem;
using namespace ornex;
using namespace ornex::tool;
using namespace std::string_literals;


struct Outcome { int code; std::string out, err; };

// Each test runs the program in a fresh folder holding a 48 x 48 grey texture t.pgm, noise n.pgm and a 24 x 48
// colour bg.ppm of value 100/255 everywhere; what the program prints goes to files beside that folder.
struct CommandLine : testing::Test {
    void SetUp() override
    {
        std::string name = (fs::temp_directory_path() / "ornex-cli-XXXXXX").string();
        root = mkdtemp(name.data());
        fs::create_directory(root / "w"), fs::current_path(root / "w");
        Image<double> texture(48, 48), noise(48, 48);
        for (int k = 0; k < 48 * 48; ++k) {
            const int r = k % 48, c = k / 48;
            texture(r, c) = std::round(128 + 64 * std::sin(0.3 * c + 0.2 * r) + 51 * std::cos(0.25 * r - 0.1 * c)) / 255;
            noise(r, c) = ((r * r * 31 + c * c * 17 + r * c * 7) & 255) / 255.0;
        }
        writeImage("t.pgm", texture), writeImage("n.pgm", noise), writeImage("bg.ppm", Image<double>(24, 48, 3, 100 / 255.0));
    }
    void TearDown() override { fs::current_path(fs::temp_directory_path()), fs::remove_all(root); }

    Outcome ornex(const std::string &words) const
    {
        const int status = std::system(("'" ORNEX_PROGRAM "' " + words + " > '" + (root / "out").string() + "' 2> '" + (root / "err").string() + "'").c_str());
        return {WEXITSTATUS(status), slurp(root / "out"), slurp(root / "err")};
    }
    static std::map<std::string, std::string> snapshot()
    {
        std::map<std::string, std::string> files;
        for (const auto &entry : fs::recursive_directory_iterator(".")) files[entry.path()] = entry.is_directory() ? "/" : slurp(entry.path());
        return files;
    }
    fs::path root;
};

TEST_F(CommandLine, HelpOnEveryCommandListsItsOptions)
{
    const std::map<std::string, std::vector<std::string>> options = {
        {"edges", {"--sigma", "--low", "--high", "--auto", "--out-dir", "--quiet"}}, {"lines", {"--count", "--theta-step", "--auto", "--out-dir"}},
        {"motion", {"--block", "--range", "--search", "--cost"}}, {"flow", {"--method", "--iterations", "--smoothness", "--threshold"}},
        {"warp", {"--to", "--size", "--interpolation", "--approximate", "--subdivisions", "--background", "--out-dir"}},
        {"shear", {"--amount", "--vertical", "--interpolation", "--background", "--out-dir"}},
        {"draw", {"--input", "--size", "--font", "--font-size", "--out-dir", "#rrggbb", "/OPACITY", "UTF-8"}}, {"demo", {"OUTDIR"}}};
    for (const auto &[command, names] : options) {
        for (const char *help : {" -h", " --help", " --sigma 1 --help"}) {
            if (command != "edges" && help == " --sigma 1 --help"s) continue; // help wins over the other options
            const Outcome outcome = ornex(command + help);
            EXPECT_EQ(outcome.code, 0) << command << help;
            EXPECT_TRUE(outcome.out.starts_with("usage: ornex " + command + " ") && outcome.err.empty()) << command << help;
            for (const std::string &name : names) EXPECT_NE(outcome.out.find(name), std::string::npos) << command << ": " << name;
            EXPECT_NE(outcome.out.find("-h, --help"), std::string::npos) << command;
        }
    }
    for (const char *help : {"-h", "--help"}) {
        const Outcome outcome = ornex(help);
        EXPECT_EQ(outcome.code, 0);
        for (const auto &[command, names] : options) EXPECT_NE(outcome.out.find("\n  " + command + " "), std::string::npos) << command;
    }
}

// Each refusal is one line on stderr naming the command and the option as typed, exit code 2, and nothing is written.
TEST_F(CommandLine, UsageErrorsExitWith2AndNameTheOption)
{
    const std::pair<std::string, std::string> refused[] = { // words, part of the message
        {"lines t.pgm o.png --theta-step 0.7", "--theta-step: must divide 90 degrees into whole steps"},
        {"lines none.pgm o.png --theta-step=0.7", "--theta-step: must divide 90"}, // refused before any file is read
        {"edges t.pgm o.png --auto 60 --low 0.1", "--auto and --low contradict each other"}, {"lines t.pgm o.png --high=0.3 --auto=60", "--auto and --high"},
        {"edges t.pgm o.png --low 0.3 --high 0.2", "--low: must not exceed --high"}, {"edges t.pgm o.png --low 1.5", "--low: expects a value from 0 to 1"},
        {"edges t.pgm o.png --auto 101", "--auto: expects a percentage from 0 to 100"}, {"edges t.pgm o.png --sigma=0", "--sigma: must be positive"},
        {"edges t.pgm o.png --colour 2", "unknown option '--colour'"}, {"edges t.pgm o.png --colour=2", "unknown option '--colour'"},
        {"edges t.pgm o.png -x", "unknown option '-x'"}, {"edges t.pgm o.png --sigma", "--sigma: needs a value"},
        {"edges t.pgm o.png --sigma=", "--sigma: expects a number, got ''"}, {"edges t.pgm o.png --sigma 1 --sigma=2", "--sigma: given more than once"},
        {"shear t.pgm o.png --vertical=yes --amount 1", "--vertical: takes no value"}, {"shear t.pgm o.png --amount=11", "--amount: expects a value from -10 to 10"},
        {"edges t.pgm", "expects INPUT OUTPUT"}, {"edges t.pgm n.pgm o.png", "several inputs need --out-dir"},
        {"edges - --out-dir e", "--out-dir: standard input ('-')"}, {"edges t.pgm sub/t.ppm --out-dir e", "'t.pgm' and 'sub/t.ppm' would both be written to 'e/t.png'"},
        {"warp t.pgm o.png --to 1,2,3", "--to: expects 8 comma-separated numbers"},
        {"warp t.pgm o.png --to 0,0,0,1e12,5,5,9,0", "--to: corners must lie within -536870912 .. 536870912"},
        {"warp t.pgm o.png --to 0,0,0,20,0,10,20,20", "--to: must be a convex quadrilateral with its corners going round"},
        {"motion t.pgm t.pgm o.png --search=diamond", "--search: expects full or three-step"},
        {"flow t.pgm t.pgm o.png --smoothness -1", "--smoothness: must be positive"},
        {"flow t.pgm t.pgm o.png --method lk --iterations 5", "--iterations: applies to --method hs only"},
        {"flow t.pgm t.pgm o.png --threshold 0.1", "--threshold: applies to --method lk only"}, {"motion t.pgm t.pgm o.png --block 1", "--block"},
        {"draw o.png line:1,1,2,2 --input bg.ppm --size 5,5", "--size and --input contradict each other"},
        {"draw o.png line:1,1,2,2 --input bg.ppm --input t.pgm", "--input: several inputs need --out-dir"},
        {"draw line:1,1,2,2 --out-dir d", "--out-dir: needs each image to draw over as --input IN"},
        {"draw o.png 'line:1,1,2,2@#ff00'", "item 'line:1,1,2,2@#ff00' colour: expects #rrggbb"},
        {"draw o.png 'aadisc:5,5,3/1.5'", "item 'aadisc:5,5,3/1.5': the opacity after '/' lies on 0..1"},
        {"draw o.png circle:5,5,0", "item 'circle:5,5,0': radius: must be positive"}, {"blur t.pgm o.png", "ornex: unknown command 'blur'"}};
    const auto before = snapshot();
    for (const auto &[words, message] : refused) {
        const Outcome outcome = ornex(words);
        EXPECT_EQ(outcome.code, 2) << words;
        const std::string command = words.substr(0, words.find(' ')), lead = command == "blur" ? "ornex: "s : "ornex "s.append(command) + ": ";
        EXPECT_TRUE(outcome.err.starts_with(lead) &&
                    outcome.err.find(message) != std::string::npos && outcome.err.find('\n') == outcome.err.size() - 1)
            << words << ": " << outcome.err;
        EXPECT_EQ(snapshot(), before) << words;
    }
}

// Failures on the data or files exit with 1; with several inputs the others are still done.
TEST_F(CommandLine, FailuresExitWith1)
{
    const std::pair<std::string, std::string> failing[] = {
        {"edges none.pgm o.png", "ornex edges: cannot read 'none.pgm'"}, {"edges -- -t.pgm o.png", "ornex edges: cannot read '-t.pgm'"}, {"motion t.pgm bg.ppm o.png", "ornex motion: frames: must have the same size"},
        {"draw o.png text:9,9,x --font 'No Such Family'", "ornex draw: --font: no font family 'No Such Family' is installed"},
        {"draw o.png text:9,9,x --font /no/such.ttf", "ornex draw: --font: cannot load font '/no/such.ttf': no such file"},
        {"edges t.pgm none.pgm --out-dir e", "ornex edges: none.pgm: cannot read 'none.pgm'"}};
    for (const auto &[words, message] : failing) {
        const Outcome outcome = ornex(words);
        EXPECT_EQ(outcome.code, 1) << words;
        EXPECT_TRUE(outcome.err.starts_with(message)) << words << ": " << outcome.err;
    }
    EXPECT_TRUE(fs::exists("e/t.png") && !fs::exists("o.png"));
}

TEST_F(CommandLine, ValuesMayFollowAnEqualsSign)
{
    const std::tuple<std::string, std::string, std::string> runs[] = { // with '=', with a space, with another value
        {"shear t.pgm a.ppm --amount=0.5 --interpolation=bicubic", "shear t.pgm b.ppm --amount 0.5 --interpolation bicubic", "shear t.pgm c.ppm --amount 0.25 --interpolation bicubic"},
        {"edges n.pgm a.ppm --low=0.1 --high=0.4", "edges n.pgm b.ppm --low 0.1 --high 0.4", "edges n.pgm c.ppm --low 0.1 --high 0.2"},
        {"draw a.ppm line:1,1,9,9 --input=t.pgm", "draw b.ppm line:1,1,9,9 --input t.pgm", "draw c.ppm line:1,1,9,9 --input n.pgm"}};
    for (const auto &[equals, space, other] : runs) {
        EXPECT_EQ(ornex(equals).code + ornex(space).code + ornex(other).code, 0) << equals;
        EXPECT_TRUE(slurp("a.ppm") == slurp("b.ppm") && slurp("a.ppm") != slurp("c.ppm")) << equals;
    }
}

TEST_F(CommandLine, VersionIsTheLibrarys)
{
    const Outcome outcome = ornex("--version");
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(outcome.out, parts, std::regex("ornex ([0-9]+\\.[0-9]+\\.[0-9]+\\.[0-9]+) \\(ornex_rt built (.+)\\)\n"))) << outcome.out;
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(parts[1], ornex_rt_version); EXPECT_EQ(parts[2], ornex_rt_build_date);
}

// Outputs named after their inputs, each what a run on that input alone makes, the report led by the input's name.
TEST_F(CommandLine, SeveralInputsGoToTheOutputFolder)
{
    const Outcome t = ornex("edges t.pgm t.png"), n = ornex("edges n.pgm n.png"), both = ornex("edges t.pgm n.pgm --out-dir e/f");
    EXPECT_EQ(both.code, 0);
    EXPECT_EQ(both.out, "t.pgm: " + t.out + "n.pgm: " + n.out);
    EXPECT_TRUE(readImage("e/f/t.png").values() == readImage("t.png").values() && readImage("e/f/n.png").values() == readImage("n.png").values());
    for (const char *command : {"shear t.pgm bg.ppm --amount 0.5 --out-dir s", "warp t.pgm bg.ppm --to 0,0,0,20,20,20,20,0 --out-dir s",
                                "lines t.pgm bg.ppm --count 1 --out-dir s", "draw 'line:0,0,0,9@#00ff00' --input t.pgm --input bg.ppm --out-dir s"}) {
        fs::remove_all("s");
        EXPECT_EQ(ornex(command).code, 0) << command;
        EXPECT_TRUE(fs::exists("s/t.png") && fs::exists("s/bg.png") && fs::directory_iterator("s")->exists()) << command;
    }
    EXPECT_EQ((std::array{readImage("s/bg.png")(0, 5, 0), readImage("s/bg.png")(0, 5, 1), readImage("s/t.png")(0, 10, 1)}), (std::array{0.0, 1.0, readImage("t.pgm")(0, 10)}));
}

// On a background of 100 (of 255) a red item at opacity 0.25 gives red 0.25 * 255 + 0.75 * 100 = 138.75, rounded to
// 139, and green and blue 0.75 * 100 = 75, inside every kind of item (once, also where a disc's spans overlap).
TEST_F(CommandLine, OpacityBlendsOverTheBackground)
{
    ASSERT_EQ(ornex("draw o.ppm 'polygon:2,2,2,7,7,7,7,2@#ff0000/0.25' 'line:10,0,10,23@1,0,0/0.25' 'aadisc:17,17,5@#FF0000/0.25' "
                    "'circle:17,5,4@#ff0000/0.25' 'text:23,36@#ff0000/0.25,|' --font-size 24 --input bg.ppm").code, 0);
    const Image<double> o = readImage("o.ppm");
    const Font font(24);
    const Glyph bar = font.glyph(U'|');
    const int barRow = 23 - bar.yOffset + bar.height / 2, barCol = 36 + bar.xOffset + bar.width / 2; // the middle of the bar's stem
    ASSERT_EQ(bar.bitmap[size_t(bar.height / 2 * bar.width + bar.width / 2)], 255);
    for (const auto &[r, c] : {std::pair{4, 4}, {10, 12}, {17, 17}, {13, 5}, {barRow, barCol}})
        EXPECT_EQ((std::array{o(r, c, 0), o(r, c, 1), o(r, c, 2)}), (std::array{139 / 255.0, 75 / 255.0, 75 / 255.0})) << r << ',' << c;
    EXPECT_EQ(o(0, 47, 0), 100 / 255.0);
}

// "€ ü" set by code point: each glyph FreeType gives for U+20AC and U+00FC, white ink of its coverage at the pen plus
// its offsets, the pen moving by the advances of €, space and ü; nothing else is inked. Set byte by byte, five glyphs.
TEST_F(CommandLine, TextIsSetByCodePoint)
{
    ASSERT_EQ(ornex("draw o.ppm 'text:20,2,€ ü' --size 30,48 --font-size 16").code, 0);
    const Font font(16);
    Image<double> expected(30, 48);
    int pen = 2;
    for (const char32_t code : U"€ ü"s) {
        const Glyph g = font.glyph(code);
        for (int k = 0; k < g.width * g.height; ++k) expected(20 - g.yOffset + k / g.width, pen + g.xOffset + k % g.width) = g.bitmap[size_t(k)] / 255.0;
        pen += g.advance;
    }
    const Image<double> o = readImage("o.ppm");
    int wrong = 0;
    for (int k = 0; k < 30 * 48; ++k) wrong += o(k % 30, k / 30, 0) != expected(k % 30, k / 30) || o(k % 30, k / 30, 2) != expected(k % 30, k / 30);
    EXPECT_EQ(wrong, 0);
    EXPECT_TRUE(std::ranges::count_if(expected.values(), [](double v) { return v > 0; }) > 20);
    EXPECT_EQ(decodeUtf8("€ ü")->size(), 3u); EXPECT_EQ("€ ü"s.size(), 6u);
}

TEST(DrawItems, ParseColoursOpacitiesAndWords)
{
    const std::array<double, 3> white{1, 1, 1};
    const std::tuple<std::string, std::string, std::vector<double>, std::array<double, 3>, double, std::u32string> parsed[] = {
        {"line:1,2,3,4@#ff8000", "line", {1, 2, 3, 4}, {1, 128 / 255.0, 0}, 1, U""}, // 0x80 = 128
        {"aaline:1,2,3,4@#FFfF00/0.25", "aaline", {1, 2, 3, 4}, {1, 1, 0}, 0.25, U""},
        {"polygon:0,0,0,5,5,0@0.5,0.25,1/0.75", "polygon", {0, 0, 0, 5, 5, 0}, {0.5, 0.25, 1}, 0.75, U""},
        {"aadisc:1,-2,3/0", "aadisc", {1, -2, 3}, white, 0, U""}, {"circle:1,2,3@#0a1b2c", "circle", {1, 2, 3}, {10 / 255.0, 27 / 255.0, 44 / 255.0}, 1, U""},
        {"text:5,6@#0000ff/0.5,a,b@c/d", "text", {5, 6}, {0, 0, 1}, 0.5, U"a,b@c/d"}, {"text:5,6@1,0,1,x", "text", {5, 6}, {1, 0, 1}, 1, U"x"},
        {"text:-5,6,Grüße €", "text", {-5, 6}, white, 1, U"Gr\u00fc\u00dfe \u20ac"}, {"text:5,6,", "text", {5, 6}, white, 1, U""}};
    for (const auto &[word, kind, numbers, colour, opacity, text] : parsed) {
        const DrawItem item = parseItem(word);
        EXPECT_TRUE(item.kind == kind && item.numbers == numbers && item.colour == colour && item.opacity == opacity && item.text == text) << word;
    }
    const std::pair<std::string, std::string> refused[] = {
        {"line:1,2,3,4@#ff00", "colour: expects #rrggbb"}, {"line:1,2,3,4@#gg0000", "colour: expects #rrggbb"}, {"line:1,2,3,4@ff0000", "colour: expects a number"},
        {"line:1,2,3,4@1,0", "colour: expects #rrggbb or three numbers"}, {"line:1,2,3,4@1,0,2", "three numbers R,G,B from 0 to 1"},
        {"line:1,2,3,4/1.5", "the opacity after '/' lies on 0..1"}, {"line:1,2,3,4/x", "opacity: expects a number"},
        {"line:1,2,3,4/0.5@#ff0000", "expects KIND:NUMBERS[@COLOUR][/OPACITY]"}, {"text:1,2@#ff0000", "expects text:ROW,COL[@COLOUR][/OPACITY],WORDS"},
        {"text:1,2,\xff", "the words are not UTF-8"}, {"circle:1,2@#ff0000", "expects line:R1,C1,R2,C2"}, {"line", "expects KIND:NUMBERS"}};
    for (const auto &[word, message] : refused) {
        try {
            parseItem(word);
            ADD_FAILURE() << word;
        } catch (const UsageError &error) {
            EXPECT_TRUE(std::string(error.what()).starts_with("item '" + word + "'") && std::string(error.what()).find(message) != std::string::npos) << error.what();
        }
    }
}

TEST(Utf8, DecodesCodePointsAndRefusesWhatIsNotUtf8)
{
    EXPECT_EQ(decodeUtf8("a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80\x7f\xc2\x80\xef\xbf\xbf\xf4\x8f\xbf\xbf"), U"a\u00e9\u20ac\U0001f600\x7f\u0080\uffff\U0010ffff");
    for (const char *bad : {"\x80", "\xc3", "a\xe2\x82", "\xc0\xaf", "\xe0\x80\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xf8\x88\x80\x80\x80", "\xc3\x28"})
        EXPECT_FALSE(decodeUtf8(bad)) << testing::PrintToString(std::string(bad));
}

// The files of Debian's fonts-dejavu-core; a family that is not installed is refused rather than replaced.
TEST(Font, FontconfigFindsFamiliesByName)
{
    const std::string dejavu = "/usr/share/fonts/truetype/dejavu/";
    for (const auto &[name, file] : {std::pair{"DejaVu Sans"s, dejavu + "DejaVuSans.ttf"}, {"dejavu sans:bold", dejavu + "DejaVuSans-Bold.ttf"},
                                     {"DejaVu Serif", dejavu + "DejaVuSerif.ttf"}, {"DejaVu Sans Mono", dejavu + "DejaVuSansMono.ttf"}, {"my/font.ttf", "my/font.ttf"}})
        EXPECT_EQ(Font::find(name), file) << name;
    EXPECT_EQ(Font::defaultPath(), dejavu + "DejaVuSans.ttf");
    EXPECT_THROW(Font::find("No Such Family"), ToolError);
}

// A stage is shown once the delay has passed, each change once; nothing when not shown or before the delay.
TEST(Progress, ShowsStagesOnlyAfterTheDelayAndWhenShown)
{
    const fs::path path = fs::temp_directory_path() / ("ornex-progress-" + std::to_string(getpid()));
    const auto printed = [&](bool shown, std::chrono::milliseconds delay) {
        std::FILE *to = std::fopen(path.c_str(), "w");
        {
            Progress progress("edges", to, shown, delay);
            for (const std::string stage : {"reading", "reading", "Canny edges"}) {
                reportStage(stage);
                const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(shown && delay.count() == 0 ? 3000 : 100);
                while (slurp(path).find(stage) == std::string::npos && std::chrono::steady_clock::now() < deadline) std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
        }
        std::fclose(to);
        return slurp(path);
    };
    EXPECT_EQ(printed(true, std::chrono::milliseconds(0)), "ornex edges: reading...\nornex edges: Canny edges...\n");
    EXPECT_EQ(printed(false, std::chrono::milliseconds(0)), "");
    EXPECT_EQ(printed(true, std::chrono::seconds(10)), "");
    fs::remove(path);
    reportStage("without a running command"); // goes nowhere
}

} // namespace
