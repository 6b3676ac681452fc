#include <gtest/gtest.h>
#include <png.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "image_io.hpp"
#include "tool_error.hpp"

namespace {

namespace fs = std::filesystem;
using ornex::Image;
using ornex::tool::readImage;
using ornex::tool::ToolError;
using ornex::tool::writeImage;
using Bytes = std::vector<unsigned char>;

Bytes bytesOf(const std::string &text) { return Bytes(text.begin(), text.end()); }

Bytes operator+(Bytes a, const Bytes &b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

void writeFile(const std::string &path, const Bytes &bytes)
{
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char *>(bytes.data()), std::streamsize(bytes.size()));
    ASSERT_TRUE(out.good()) << path;
}

Bytes readFile(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The message of the ToolError that `action` throws, or a marker that says
// what happened instead.
std::string errorOf(const std::function<void()> &action)
{
    try {
        action();
    } catch (const ToolError &error) {
        return error.what();
    } catch (const std::exception &error) {
        return std::string("<other exception: ") + error.what() + ">";
    }
    return "<no exception>";
}

bool startsWith(const std::string &text, const std::string &prefix)
{
    return text.compare(0, prefix.size(), prefix) == 0;
}

// Pixel values that are exact multiples of 1/255, different at every
// position and plane so that any transposition or plane swap shows.
Image<double> byteImage(int32_t rows, int32_t cols, int32_t planes)
{
    Image<double> image(rows, cols, planes);
    for (int32_t p = 0; p < planes; ++p) {
        for (int32_t c = 0; c < cols; ++c) {
            for (int32_t r = 0; r < rows; ++r) {
                const int k = (r * 53 + c * 17 + p * 101 + (r == 0 && c == 0 ? 0 : 7)) % 256;
                image(r, c, p) = double(k) / 255.0;
            }
        }
    }
    // Both ends of the range.
    image(0, 0, 0) = 0.0;
    image(rows - 1, cols - 1, planes - 1) = 1.0;
    return image;
}

void expectSamePixels(const Image<double> &actual, const Image<double> &expected)
{
    ASSERT_EQ(actual.rows(), expected.rows());
    ASSERT_EQ(actual.cols(), expected.cols());
    ASSERT_EQ(actual.planes(), expected.planes());
    for (int32_t p = 0; p < expected.planes(); ++p) {
        for (int32_t c = 0; c < expected.cols(); ++c) {
            for (int32_t r = 0; r < expected.rows(); ++r) {
                ASSERT_EQ(actual(r, c, p), expected(r, c, p)) << "at row " << r << ", column " << c << ", plane " << p;
            }
        }
    }
}

// An image from rows of samples as they appear in a file: each row lists
// its pixels left to right, the samples of a pixel together, over `maximum`.
Image<double> fromFileOrder(const std::vector<std::vector<unsigned>> &rows, int32_t planes, double maximum)
{
    const int32_t cols = int32_t(rows[0].size()) / planes;
    Image<double> image(int32_t(rows.size()), cols, planes);
    for (size_t r = 0; r < rows.size(); ++r) {
        for (int32_t c = 0; c < cols; ++c) {
            for (int32_t p = 0; p < planes; ++p) {
                image(int32_t(r), c, p) = double(rows[r][size_t(c * planes + p)]) / maximum;
            }
        }
    }
    return image;
}

// ------------------------------------------------- PNG files made by libpng

struct PngPicture {
    uint32_t width = 0, height = 0;
    int colorType = PNG_COLOR_TYPE_GRAY;
    int bitDepth = 8;
    int interlace = PNG_INTERLACE_NONE;
    std::vector<png_color> palette;
    std::vector<png_byte> transparency;
    std::vector<Bytes> rows; // packed as libpng expects them
};

// Only plain values live here: a libpng error jumps back to the setjmp.
bool encodePng(FILE *file, png_structp png, png_infop info, const PngPicture *picture, png_bytepp rows)
{
    if (setjmp(png_jmpbuf(png))) {
        return false;
    }
    png_init_io(png, file);
    png_set_IHDR(png, info, picture->width, picture->height, picture->bitDepth, picture->colorType,
                 picture->interlace, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (!picture->palette.empty()) {
        png_set_PLTE(png, info, picture->palette.data(), int(picture->palette.size()));
    }
    if (!picture->transparency.empty()) {
        png_set_tRNS(png, info, picture->transparency.data(), int(picture->transparency.size()), nullptr);
    }
    png_write_info(png, info);
    png_write_image(png, rows);
    png_write_end(png, nullptr);
    return true;
}

void writePngFile(const std::string &path, const PngPicture &picture)
{
    FILE *file = std::fopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr) << path;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    std::vector<png_bytep> rows;
    for (const Bytes &row : picture.rows) {
        rows.push_back(const_cast<png_bytep>(row.data()));
    }
    const bool written = encodePng(file, png, info, &picture, rows.data());
    png_destroy_write_struct(&png, &info);
    ASSERT_EQ(std::fclose(file), 0);
    ASSERT_TRUE(written);
}

// A PNG chunk with its CRC (the PNG standard's CRC-32, computed bitwise).
Bytes pngChunk(const std::string &type, const Bytes &data)
{
    Bytes body = bytesOf(type) + data;
    uint32_t crc = 0xffffffffu;
    for (unsigned char byte : body) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 1) ? (crc >> 1) ^ 0xedb88320u : crc >> 1;
        }
    }
    crc ^= 0xffffffffu;
    auto be32 = [](uint32_t v) {
        return Bytes{(unsigned char)(v >> 24), (unsigned char)(v >> 16), (unsigned char)(v >> 8), (unsigned char)v};
    };
    return be32(uint32_t(data.size())) + body + be32(crc);
}

const Bytes kPngSignature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};

class ImageIo : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = (fs::temp_directory_path() / "ornex-image-io-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        dir_ = pattern;
    }
    void TearDown() override
    {
        // Folders a test made read-only must become writable to be removed.
        std::error_code ignored;
        fs::permissions(dir_, fs::perms::owner_all, fs::perm_options::add, ignored);
        for (auto it = fs::recursive_directory_iterator(dir_, ignored); it != fs::recursive_directory_iterator();
             it.increment(ignored)) {
            if (it->is_directory(ignored)) {
                fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
            }
        }
        fs::remove_all(dir_, ignored);
    }

    std::string path(const std::string &name) const { return (fs::path(dir_) / name).string(); }

    std::vector<std::string> entries(const std::string &folder = "") const
    {
        std::vector<std::string> names;
        for (const auto &entry : fs::directory_iterator(folder.empty() ? fs::path(dir_) : fs::path(folder))) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    std::string dir_;
};

using Names = std::vector<std::string>;

// -------------------------------------------------------------- round trips

TEST_F(ImageIo, GreyRoundTripsThroughEveryFormatExactly)
{
    const Image<double> image = byteImage(5, 7, 1);
    for (const char *name : {"grey.png", "grey.pgm"}) {
        writeImage(path(name), image);
        expectSamePixels(readImage(path(name)), image);
    }
    EXPECT_EQ(entries(), (Names{"grey.pgm", "grey.png"}));
}

TEST_F(ImageIo, ColourRoundTripsThroughPngAndPpmExactly)
{
    const Image<double> image = byteImage(6, 4, 3);
    for (const char *name : {"colour.png", "colour.ppm"}) {
        writeImage(path(name), image);
        expectSamePixels(readImage(path(name)), image);
    }
    EXPECT_EQ(entries(), (Names{"colour.png", "colour.ppm"}));
}

TEST_F(ImageIo, EveryByteValueSurvivesPng)
{
    Image<double> image(16, 16, 1);
    for (int k = 0; k < 256; ++k) {
        image(k / 16, k % 16) = double(k) / 255.0;
    }
    writeImage(path("ramp.png"), image);
    expectSamePixels(readImage(path("ramp.png")), image);
}

TEST_F(ImageIo, GreyImageSavedAsPpmHasThreeEqualPlanes)
{
    const Image<double> grey = byteImage(3, 5, 1);
    writeImage(path("grey.ppm"), grey);
    const Image<double> back = readImage(path("grey.ppm"));
    ASSERT_EQ(back.planes(), 3);
    for (int32_t p = 0; p < 3; ++p) {
        Image<double> plane(3, 5, 1);
        std::copy(back.data() + p * 15, back.data() + (p + 1) * 15, plane.data());
        expectSamePixels(plane, grey);
    }
}

TEST_F(ImageIo, ExtensionsAreMatchedWithoutRegardToCase)
{
    const Image<double> image = byteImage(2, 3, 3);
    writeImage(path("shout.PNG"), image);
    expectSamePixels(readImage(path("shout.PNG")), image);
}

TEST_F(ImageIo, WritingReplacesAnExistingFile)
{
    writeFile(path("out.pgm"), bytesOf("old contents that are not an image"));
    const Image<double> image = byteImage(4, 4, 1);
    writeImage(path("out.pgm"), image);
    expectSamePixels(readImage(path("out.pgm")), image);
    EXPECT_EQ(entries(), (Names{"out.pgm"}));
}

// ------------------------------------------------------ bytes that we write

TEST_F(ImageIo, PgmBytesAreRowsTopToBottom)
{
    // 2 rows, 3 columns: (r, c) = (10 * r + c + 1) / 255.
    Image<double> image(2, 3, 1);
    for (int32_t r = 0; r < 2; ++r) {
        for (int32_t c = 0; c < 3; ++c) {
            image(r, c) = double(10 * r + c + 1) / 255.0;
        }
    }
    writeImage(path("rows.pgm"), image);
    EXPECT_EQ(readFile(path("rows.pgm")), (bytesOf("P5\n3 2\n255\n") + Bytes{1, 2, 3, 11, 12, 13}));
}

TEST_F(ImageIo, PpmBytesInterleaveTheThreePlanes)
{
    Image<double> image(1, 2, 3);
    const unsigned samples[2][3] = {{1, 2, 3}, {4, 5, 6}}; // [column][plane]
    for (int32_t c = 0; c < 2; ++c) {
        for (int32_t p = 0; p < 3; ++p) {
            image(0, c, p) = samples[c][p] / 255.0;
        }
    }
    writeImage(path("pair.ppm"), image);
    EXPECT_EQ(readFile(path("pair.ppm")), (bytesOf("P6\n2 1\n255\n") + Bytes{1, 2, 3, 4, 5, 6}));
}

TEST_F(ImageIo, ValuesAreClampedAndRounded)
{
    const double values[] = {-0.5, 1.5, std::nan(""), 0.5, 100.4 / 255.0, 100.6 / 255.0, 1.0, 0.0,
                             -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
    const Bytes expected = {0, 255, 0, 128, 100, 101, 255, 0, 0, 255};
    Image<double> image(1, 10, 1);
    for (int32_t c = 0; c < 10; ++c) {
        image(0, c) = values[c];
    }
    writeImage(path("clamped.pgm"), image);
    EXPECT_EQ(readFile(path("clamped.pgm")), bytesOf("P5\n10 1\n255\n") + expected);

    writeImage(path("clamped.png"), image);
    const Image<double> back = readImage(path("clamped.png"));
    ASSERT_EQ(back.cols(), 10);
    for (int32_t c = 0; c < 10; ++c) {
        EXPECT_EQ(back(0, c), expected[size_t(c)] / 255.0) << "column " << c;
    }
}

// ---------------------------------------------------- hand-written PGM/PPM

TEST_F(ImageIo, ReadsHandWrittenPgmWithComments)
{
    writeFile(path("a.pgm"), bytesOf("P5\n# made by hand\n3 2\n# still the header\n255\n") +
                                 Bytes{0, 10, 20, 30, 40, 255});
    expectSamePixels(readImage(path("a.pgm")), fromFileOrder({{0, 10, 20}, {30, 40, 255}}, 1, 255.0));
}

TEST_F(ImageIo, ReadsHandWrittenPpm)
{
    // Two rows of two pixels: red, green / blue, white-ish.
    writeFile(path("a.ppm"), bytesOf("P6 2 2 255\n") + Bytes{255, 0, 0, 0, 255, 0, 0, 0, 255, 200, 201, 202});
    const Image<double> image = readImage(path("a.ppm"));
    expectSamePixels(image, fromFileOrder({{255, 0, 0, 0, 255, 0}, {0, 0, 255, 200, 201, 202}}, 3, 255.0));
    EXPECT_EQ(image(0, 1, 1), 1.0); // top right is green
    EXPECT_EQ(image(1, 0, 2), 1.0); // bottom left is blue
}

TEST_F(ImageIo, PixelDataMayStartWithWhitespaceBytes)
{
    // After the single separator, '\n' and ' ' are pixel values.
    writeFile(path("ws.pgm"), bytesOf("P5\n2 1\n255\n\n "));
    expectSamePixels(readImage(path("ws.pgm")), fromFileOrder({{'\n', ' '}}, 1, 255.0));
}

TEST_F(ImageIo, ReadsSixteenBitPgmBigEndian)
{
    writeFile(path("deep.pgm"), bytesOf("P5\n3 1\n65535\n") + Bytes{0x12, 0x34, 0xff, 0xff, 0x00, 0x01});
    expectSamePixels(readImage(path("deep.pgm")), fromFileOrder({{0x1234, 0xffff, 1}}, 1, 65535.0));
}

TEST_F(ImageIo, ReadsSixteenBitPpm)
{
    writeFile(path("deep.ppm"),
              bytesOf("P6\n1 2\n1000\n") + Bytes{0x01, 0xf4, 0x03, 0xe8, 0x00, 0x00, 0, 1, 0, 2, 0, 3});
    expectSamePixels(readImage(path("deep.ppm")), fromFileOrder({{500, 1000, 0}, {1, 2, 3}}, 3, 1000.0));
    EXPECT_EQ(readImage(path("deep.ppm"))(0, 0, 0), 0.5);
}

TEST_F(ImageIo, SmallMaximumScalesToOne)
{
    writeFile(path("small.pgm"), bytesOf("P5 3 1 15\n") + Bytes{0, 5, 15});
    const Image<double> image = readImage(path("small.pgm"));
    EXPECT_EQ(image(0, 0), 0.0);
    EXPECT_EQ(image(0, 1), 5.0 / 15.0);
    EXPECT_EQ(image(0, 2), 1.0);
}

TEST_F(ImageIo, ReadsPlainTextPgmAndPpm)
{
    writeFile(path("plain.pgm"), bytesOf("P2\n# plain\n2 2\n100\n0 50\n 100\t25\n"));
    expectSamePixels(readImage(path("plain.pgm")), fromFileOrder({{0, 50}, {100, 25}}, 1, 100.0));
    writeFile(path("plain.ppm"), bytesOf("P3 2 1 255\n1 2 3   4 5 6"));
    expectSamePixels(readImage(path("plain.ppm")), fromFileOrder({{1, 2, 3, 4, 5, 6}}, 3, 255.0));
}

// ------------------------------------------------------- PNG from libpng

TEST_F(ImageIo, ReadsPaletteWithTransparencyAsRgb)
{
    PngPicture picture;
    picture.width = 3;
    picture.height = 2;
    picture.colorType = PNG_COLOR_TYPE_PALETTE;
    picture.palette = {{10, 20, 30}, {255, 0, 128}, {0, 0, 0}, {7, 8, 9}};
    picture.transparency = {0, 128}; // alpha is dropped
    picture.rows = {{0, 1, 2}, {3, 3, 1}};
    writePngFile(path("palette.png"), picture);

    std::vector<std::vector<unsigned>> expected;
    for (const Bytes &row : picture.rows) {
        std::vector<unsigned> samples;
        for (unsigned char index : row) {
            const png_color &colour = picture.palette[index];
            samples.insert(samples.end(), {colour.red, colour.green, colour.blue});
        }
        expected.push_back(samples);
    }
    expectSamePixels(readImage(path("palette.png")), fromFileOrder(expected, 3, 255.0));
}

TEST_F(ImageIo, ReadsTwoBitPaletteRows)
{
    PngPicture picture;
    picture.width = 5;
    picture.height = 1;
    picture.colorType = PNG_COLOR_TYPE_PALETTE;
    picture.bitDepth = 2;
    picture.palette = {{0, 0, 0}, {255, 255, 255}, {1, 2, 3}, {40, 50, 60}};
    // Indices 3, 2, 1, 0, 3 packed two bits each, high bits first.
    picture.rows = {{0b11100100, 0b11000000}};
    writePngFile(path("packed.png"), picture);
    expectSamePixels(readImage(path("packed.png")),
                     fromFileOrder({{40, 50, 60, 1, 2, 3, 255, 255, 255, 0, 0, 0, 40, 50, 60}}, 3, 255.0));
}

TEST_F(ImageIo, DropsAlphaFromRgba)
{
    PngPicture picture;
    picture.width = 2;
    picture.height = 2;
    picture.colorType = PNG_COLOR_TYPE_RGB_ALPHA;
    picture.rows = {{1, 2, 3, 0, 4, 5, 6, 255}, {7, 8, 9, 100, 250, 251, 252, 1}};
    writePngFile(path("rgba.png"), picture);
    expectSamePixels(readImage(path("rgba.png")),
                     fromFileOrder({{1, 2, 3, 4, 5, 6}, {7, 8, 9, 250, 251, 252}}, 3, 255.0));
}

TEST_F(ImageIo, ReadsSixteenBitGreyWithAlpha)
{
    PngPicture picture;
    picture.width = 2;
    picture.height = 2;
    picture.colorType = PNG_COLOR_TYPE_GRAY_ALPHA;
    picture.bitDepth = 16;
    // Big-endian grey, alpha pairs.
    picture.rows = {{0x12, 0x34, 0x00, 0x00, 0xff, 0xff, 0x80, 0x00}, {0x00, 0x01, 0xff, 0xff, 0xab, 0xcd, 0x12, 0x12}};
    writePngFile(path("ga16.png"), picture);
    expectSamePixels(readImage(path("ga16.png")), fromFileOrder({{0x1234, 0xffff}, {0x0001, 0xabcd}}, 1, 65535.0));
}

TEST_F(ImageIo, ReadsSixteenBitRgb)
{
    PngPicture picture;
    picture.width = 1;
    picture.height = 2;
    picture.colorType = PNG_COLOR_TYPE_RGB;
    picture.bitDepth = 16;
    picture.rows = {{0x00, 0x01, 0x01, 0x00, 0xff, 0xfe}, {0x80, 0x00, 0x00, 0x00, 0xff, 0xff}};
    writePngFile(path("rgb16.png"), picture);
    expectSamePixels(readImage(path("rgb16.png")), fromFileOrder({{1, 256, 0xfffe}, {0x8000, 0, 0xffff}}, 3, 65535.0));
}

TEST_F(ImageIo, ReadsOneBitGreyAsZeroAndOne)
{
    PngPicture picture;
    picture.width = 10;
    picture.height = 2;
    picture.bitDepth = 1;
    picture.rows = {{0b10110000, 0b01000000}, {0b00000000, 0b11000000}};
    writePngFile(path("bits.png"), picture);
    expectSamePixels(readImage(path("bits.png")),
                     fromFileOrder({{1, 0, 1, 1, 0, 0, 0, 0, 0, 1}, {0, 0, 0, 0, 0, 0, 0, 0, 1, 1}}, 1, 1.0));
}

TEST_F(ImageIo, ReadsInterlacedPng)
{
    PngPicture picture;
    picture.width = 9;
    picture.height = 11;
    picture.colorType = PNG_COLOR_TYPE_GRAY;
    picture.interlace = PNG_INTERLACE_ADAM7;
    std::vector<std::vector<unsigned>> expected;
    for (uint32_t r = 0; r < picture.height; ++r) {
        Bytes row;
        std::vector<unsigned> samples;
        for (uint32_t c = 0; c < picture.width; ++c) {
            row.push_back((unsigned char)(r * 20 + c));
            samples.push_back(r * 20 + c);
        }
        picture.rows.push_back(row);
        expected.push_back(samples);
    }
    writePngFile(path("adam7.png"), picture);
    expectSamePixels(readImage(path("adam7.png")), fromFileOrder(expected, 1, 255.0));
}

TEST_F(ImageIo, FormatIsTakenFromContentNotName)
{
    writeFile(path("really-a-pgm.png"), bytesOf("P5 1 1 255\n") + Bytes{51});
    EXPECT_EQ(readImage(path("really-a-pgm.png"))(0, 0), 0.2);
    writeImage(path("really-a-png.png"), byteImage(2, 2, 1));
    fs::rename(path("really-a-png.png"), path("really-a-png.ppm"));
    expectSamePixels(readImage(path("really-a-png.ppm")), byteImage(2, 2, 1));
}

// ------------------------------------------------------------ read errors

TEST_F(ImageIo, MissingFile)
{
    const std::string p = path("nothing.png");
    EXPECT_EQ(errorOf([&] { readImage(p); }), "cannot read '" + p + "': no such file");
}

TEST_F(ImageIo, ReadingAFolder)
{
    const std::string p = path("folder.png");
    fs::create_directory(p);
    EXPECT_EQ(errorOf([&] { readImage(p); }), "cannot read '" + p + "': " + std::strerror(EISDIR));
}

TEST_F(ImageIo, NotAnImage)
{
    for (const std::string &content : {std::string("hello, world"), std::string(""), std::string("P4 1 1\n\x80"),
                                       std::string("P5x"), std::string("\x89PNG\r\n")}) {
        const std::string p = path("text.png");
        writeFile(p, bytesOf(content));
        EXPECT_EQ(errorOf([&] { readImage(p); }), "cannot read '" + p + "': not a PNG, PGM or PPM file")
            << content;
    }
}

TEST_F(ImageIo, TruncatedPixelData)
{
    const std::string pgm = path("short.pgm");
    writeFile(pgm, bytesOf("P5\n3 2\n255\n") + Bytes{1, 2, 3, 4, 5});
    EXPECT_EQ(errorOf([&] { readImage(pgm); }), "cannot read '" + pgm + "': truncated pixel data");

    const std::string deep = path("short16.pgm");
    writeFile(deep, bytesOf("P5\n2 1\n65535\n") + Bytes{1, 2, 3});
    EXPECT_EQ(errorOf([&] { readImage(deep); }), "cannot read '" + deep + "': truncated pixel data");

    const std::string ppm = path("short.ppm");
    writeFile(ppm, bytesOf("P6\n1 1\n255\n") + Bytes{1, 2});
    EXPECT_EQ(errorOf([&] { readImage(ppm); }), "cannot read '" + ppm + "': truncated pixel data");

    const std::string plain = path("short-plain.pgm");
    writeFile(plain, bytesOf("P2 2 2 9\n1 2 3\n"));
    EXPECT_EQ(errorOf([&] { readImage(plain); }), "cannot read '" + plain + "': truncated pixel data");

    const std::string none = path("no-separator.pgm");
    writeFile(none, bytesOf("P5 1 1 255"));
    EXPECT_EQ(errorOf([&] { readImage(none); }), "cannot read '" + none + "': truncated pixel data");
}

TEST_F(ImageIo, BadNetpbmHeaders)
{
    const struct {
        const char *content;
        const char *message;
    } cases[] = {
        {"P5\nx 2\n255\n", "invalid PGM header"},
        {"P6\n2 2", "truncated PPM header"},
        {"P5\n0 2\n255\n", "invalid PGM header (no pixels)"},
        {"P5\n1 1\n0\n\x01", "invalid PGM header (maximum value must be 1 to 65535)"},
        {"P6\n1 1\n65536\n\x01\x01\x01\x01\x01\x01", "invalid PPM header (maximum value must be 1 to 65535)"},
        {"P5\n99999999999 1\n255\n", "image too large"},
        {"P5\n1 1\n255x\x01", "invalid PGM header"},
        {"P5\n2 1\n200\n\xc8\xc9", "pixel value 201 above the maximum 200"},
        {"P2\n2 1\n9\n3 10\n", "pixel value 10 above the maximum 9"},
        {"P3\n1 1\n9\n3 x 1\n", "invalid pixel value"},
        {"P2\n1 1\n9\n3x\n", "invalid pixel value"},
    };
    for (const auto &test : cases) {
        const std::string p = path("bad");
        writeFile(p, bytesOf(test.content));
        EXPECT_EQ(errorOf([&] { readImage(p); }), "cannot read '" + p + "': " + test.message) << test.content;
    }
}

TEST_F(ImageIo, TruncatedPng)
{
    // Noisy pixels so that the compressed data is long enough to cut.
    Image<double> image(24, 24, 3);
    uint32_t state = 12345;
    for (double &value : image.values()) {
        state = state * 1103515245u + 12345u;
        value = double((state >> 16) & 255) / 255.0;
    }
    writeImage(path("full.png"), image);
    const Bytes full = readFile(path("full.png"));
    ASSERT_GT(full.size(), 1000u);

    for (size_t keep : {size_t(20), size_t(40), full.size() / 2, full.size() - 13}) {
        const std::string p = path("cut.png");
        writeFile(p, Bytes(full.begin(), full.begin() + std::ptrdiff_t(keep)));
        EXPECT_EQ(errorOf([&] { readImage(p); }), "cannot read '" + p + "': truncated PNG data") << keep;
    }
}

TEST_F(ImageIo, CorruptPng)
{
    writeImage(path("good.png"), byteImage(8, 8, 3));
    Bytes bytes = readFile(path("good.png"));
    // Find the IDAT chunk and change one byte of its data: its CRC no longer
    // matches.
    const Bytes idat = bytesOf("IDAT");
    auto at = std::search(bytes.begin(), bytes.end(), idat.begin(), idat.end());
    ASSERT_NE(at, bytes.end());
    at[6] ^= 0x55;
    const std::string p = path("bad.png");
    writeFile(p, bytes);
    const std::string message = errorOf([&] { readImage(p); });
    EXPECT_TRUE(startsWith(message, "cannot read '" + p + "': invalid PNG file (")) << message;
    EXPECT_EQ(message.find('\n'), std::string::npos) << message;
}

TEST_F(ImageIo, PngHeaderAnnouncingAGiganticImage)
{
    // 50000 x 50000 grey pixels announced in a few bytes: refused before any
    // pixel memory is taken.
    const Bytes header = {0, 0, 0xc3, 0x50, 0, 0, 0xc3, 0x50, 8, 0, 0, 0, 0};
    const std::string p = path("huge.png");
    writeFile(p, kPngSignature + pngChunk("IHDR", header) + pngChunk("IDAT", {}) + pngChunk("IEND", {}));
    EXPECT_EQ(errorOf([&] { readImage(p); }), "cannot read '" + p + "': image too large");
}

TEST_F(ImageIo, HandBuiltPngChunksAreReadable)
{
    // The chunk builder above is right: a 1 x 1 grey PNG with a stored
    // (uncompressed) zlib block holding filter byte 0 and the value 77.
    const Bytes header = {0, 0, 0, 1, 0, 0, 0, 1, 8, 0, 0, 0, 0};
    const Bytes zlib = {0x78, 0x01, 0x01, 0x02, 0x00, 0xfd, 0xff, 0x00, 77, 0x00, 0x4f, 0x00, 0x4e};
    const std::string p = path("tiny.png");
    writeFile(p, kPngSignature + pngChunk("IHDR", header) + pngChunk("IDAT", zlib) + pngChunk("IEND", {}));
    const Image<double> image = readImage(p);
    ASSERT_EQ(image.rows(), 1);
    ASSERT_EQ(image.cols(), 1);
    ASSERT_EQ(image.planes(), 1);
    EXPECT_EQ(image(0, 0), 77.0 / 255.0);
}

// ----------------------------------------------------------- write errors

TEST_F(ImageIo, UnsupportedExtension)
{
    const Image<double> image = byteImage(2, 2, 1);
    for (const char *name : {"out.jpg", "out", "out.png.bak", "folder.png/out"}) {
        const std::string p = path(name);
        EXPECT_EQ(errorOf([&] { writeImage(p, image); }),
                  "cannot write '" + p + "': unsupported extension (use .png, .pgm or .ppm)");
    }
    EXPECT_EQ(entries(), Names{});
}

TEST_F(ImageIo, UnsupportedPlaneCounts)
{
    const Image<double> two = byteImage(2, 2, 2);
    const Image<double> four = byteImage(2, 2, 4);
    const Image<double> colour = byteImage(2, 2, 3);
    for (const char *name : {"out.png", "out.pgm", "out.ppm"}) {
        const std::string p = path(name);
        EXPECT_TRUE(startsWith(errorOf([&] { writeImage(p, two); }), "cannot write '" + p + "': ")) << name;
        EXPECT_TRUE(startsWith(errorOf([&] { writeImage(p, four); }), "cannot write '" + p + "': ")) << name;
    }
    const std::string pgm = path("colour.pgm");
    EXPECT_EQ(errorOf([&] { writeImage(pgm, colour); }),
              "cannot write '" + pgm + "': a PGM file holds grey images only (use .ppm or .png for colour)");
    EXPECT_TRUE(startsWith(errorOf([&] { writeImage(path("empty.png"), Image<double>()); }),
                           "cannot write '" + path("empty.png") + "': "));
    EXPECT_EQ(entries(), Names{});
}

TEST_F(ImageIo, FailedWriteKeepsTheOldFile)
{
    const Image<double> old = byteImage(3, 3, 1);
    writeImage(path("keep.pgm"), old);
    EXPECT_THROW(writeImage(path("keep.pgm"), byteImage(3, 3, 3)), ToolError);
    EXPECT_THROW(writeImage(path("keep.pgm"), byteImage(3, 3, 2)), ToolError);
    expectSamePixels(readImage(path("keep.pgm")), old);
    EXPECT_EQ(entries(), (Names{"keep.pgm"}));
}

TEST_F(ImageIo, WriteIntoMissingFolder)
{
    const Image<double> image = byteImage(2, 2, 3);
    for (const char *name : {"missing/out.png", "missing/out.ppm"}) {
        const std::string p = path(name);
        EXPECT_EQ(errorOf([&] { writeImage(p, image); }), "cannot write '" + p + "': " + std::strerror(ENOENT));
    }
    EXPECT_EQ(entries(), Names{});
}

TEST_F(ImageIo, WriteBelowAPlainFile)
{
    writeFile(path("notes.txt"), bytesOf("not a folder"));
    const std::string p = path("notes.txt/out.pgm");
    EXPECT_EQ(errorOf([&] { writeImage(p, byteImage(2, 2, 1)); }),
              "cannot write '" + p + "': " + std::strerror(ENOTDIR));
    EXPECT_EQ(entries(), (Names{"notes.txt"}));
    EXPECT_EQ(readFile(path("notes.txt")), bytesOf("not a folder"));
}

TEST_F(ImageIo, WriteOverAFolderLeavesNoTemporaryFile)
{
    // The temporary file is written, then renaming it over the folder fails.
    const std::string p = path("taken.png");
    fs::create_directory(p);
    const std::string message = errorOf([&] { writeImage(p, byteImage(4, 4, 3)); });
    EXPECT_TRUE(startsWith(message, "cannot write '" + p + "': ")) << message;
    EXPECT_EQ(entries(), (Names{"taken.png"}));
    EXPECT_TRUE(fs::is_directory(p));
    EXPECT_EQ(entries(p), Names{});
}

TEST_F(ImageIo, WriteIntoReadOnlyFolder)
{
    const std::string folder = path("locked");
    fs::create_directory(folder);
    writeImage(folder + "/old.pgm", byteImage(2, 2, 1));
    fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
    if (access(folder.c_str(), W_OK) == 0) {
        GTEST_SKIP() << "this user may write into read-only folders";
    }
    const std::string p = folder + "/old.pgm";
    EXPECT_EQ(errorOf([&] { writeImage(p, byteImage(3, 3, 1)); }),
              "cannot write '" + p + "': " + std::strerror(EACCES));
    EXPECT_EQ(errorOf([&] { writeImage(folder + "/new.png", byteImage(2, 2, 1)); }),
              "cannot write '" + folder + "/new.png': " + std::strerror(EACCES));
    EXPECT_EQ(entries(folder), (Names{"old.pgm"}));
    expectSamePixels(readImage(p), byteImage(2, 2, 1));
}

} // namespace
