#include "image_io.hpp"

#include <png.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cmath>
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "tool_error.hpp"

namespace ornex::tool {
namespace {

// Enough for any picture the tool is meant for, and a guard against headers
// that announce gigantic images (a PNG can do so in a few bytes).
constexpr uint64_t kMaxPixels = uint64_t(1) << 30;

[[noreturn]] void readFailure(const std::string &path, const std::string &why)
{
    throw ToolError("cannot read '" + path + "': " + why);
}

[[noreturn]] void writeFailure(const std::string &path, const std::string &why)
{
    throw ToolError("cannot write '" + path + "': " + why);
}

std::string systemMessage(int error, const char *fallback)
{
    return error != 0 ? std::string(std::strerror(error)) : std::string(fallback);
}

struct FileCloser {
    void operator()(FILE *file) const { std::fclose(file); }
};

std::vector<unsigned char> readWholeFile(const std::string &path)
{
    errno = 0;
    FILE *file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        const int error = errno;
        readFailure(path, error == ENOENT ? std::string("no such file") : systemMessage(error, "cannot open"));
    }
    std::unique_ptr<FILE, FileCloser> closer(file);
    std::vector<unsigned char> bytes;
    unsigned char chunk[1 << 16];
    for (;;) {
        errno = 0;
        const size_t got = std::fread(chunk, 1, sizeof chunk, file);
        bytes.insert(bytes.end(), chunk, chunk + got);
        if (got < sizeof chunk) {
            if (std::ferror(file)) {
                readFailure(path, systemMessage(errno, "read error"));
            }
            break;
        }
    }
    return bytes;
}

// ---------------------------------------------------------------- PNG input

// libpng reports errors by longjmp. Everything it may jump over (its own
// frames and the callbacks below) holds no C++ object with a destructor, and
// the functions that call setjmp hold plain values only; the owning C++ code
// runs before and after them.
struct PngSource {
    const unsigned char *data;
    size_t size;
    size_t position;
    bool truncated;
    char message[256];
};

void pngRead(png_structp png, png_bytep out, size_t length)
{
    auto *source = static_cast<PngSource *>(png_get_io_ptr(png));
    if (source->size - source->position < length) {
        source->truncated = true;
        png_error(png, "truncated PNG data");
    }
    std::memcpy(out, source->data + source->position, length);
    source->position += length;
}

void pngFail(png_structp png, png_const_charp message)
{
    auto *source = static_cast<PngSource *>(png_get_error_ptr(png));
    std::snprintf(source->message, sizeof source->message, "%s", message != nullptr ? message : "unknown error");
    png_longjmp(png, 1);
}

void pngIgnoreWarning(png_structp, png_const_charp) {}

struct PngLayout {
    png_uint_32 width;
    png_uint_32 height;
    int channels;
    int bitDepth;
    size_t rowBytes;
};

// Reads the header and sets the transforms: palettes become RGB, grey below
// 8 bits is widened to 8, alpha (stored or from tRNS) is dropped, 16 bits
// stay 16 bits, and gamma is left alone so that the stored values come out.
bool readPngHeader(png_structp png, png_infop info, PngLayout *layout)
{
    if (setjmp(png_jmpbuf(png))) {
        return false;
    }
    png_set_read_fn(png, png_get_error_ptr(png), pngRead);
    png_read_info(png, info);
    const int colorType = png_get_color_type(png, info);
    const int bitDepth = png_get_bit_depth(png, info);
    if (colorType == PNG_COLOR_TYPE_PALETTE) {
        png_set_palette_to_rgb(png);
    }
    if (colorType == PNG_COLOR_TYPE_GRAY && bitDepth < 8) {
        png_set_expand_gray_1_2_4_to_8(png);
    }
    png_set_strip_alpha(png);
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
    layout->width = png_get_image_width(png, info);
    layout->height = png_get_image_height(png, info);
    layout->channels = png_get_channels(png, info);
    layout->bitDepth = png_get_bit_depth(png, info);
    layout->rowBytes = png_get_rowbytes(png, info);
    return true;
}

bool readPngRows(png_structp png, png_bytepp rows)
{
    if (setjmp(png_jmpbuf(png))) {
        return false;
    }
    png_read_image(png, rows);
    return true;
}

struct PngReader {
    png_structp png = nullptr;
    png_infop info = nullptr;
    ~PngReader() { png_destroy_read_struct(&png, info != nullptr ? &info : nullptr, nullptr); }
};

Image<double> decodePng(const std::string &path, const std::vector<unsigned char> &bytes)
{
    PngSource source{bytes.data(), bytes.size(), 0, false, {}};
    PngReader reader;
    reader.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &source, pngFail, pngIgnoreWarning);
    if (reader.png == nullptr || (reader.info = png_create_info_struct(reader.png)) == nullptr) {
        readFailure(path, "not enough memory");
    }
    auto failure = [&]() -> std::string {
        return source.truncated ? std::string("truncated PNG data")
                                : "invalid PNG file (" + std::string(source.message) + ")";
    };

    PngLayout layout{};
    if (!readPngHeader(reader.png, reader.info, &layout)) {
        readFailure(path, failure());
    }
    const bool wide = layout.bitDepth == 16;
    if ((layout.bitDepth != 8 && !wide) || layout.channels < 1 || layout.channels > 4) {
        readFailure(path, "unsupported PNG layout");
    }
    if (uint64_t(layout.width) * layout.height > kMaxPixels) {
        readFailure(path, "image too large");
    }
    const int32_t rows = int32_t(layout.height);
    const int32_t cols = int32_t(layout.width);
    const int32_t planes = layout.channels >= 3 ? 3 : 1;
    const size_t bytesPerSample = wide ? 2 : 1;
    if (layout.rowBytes < size_t(cols) * size_t(layout.channels) * bytesPerSample) {
        readFailure(path, "unsupported PNG layout");
    }

    std::vector<unsigned char> pixels(layout.rowBytes * size_t(rows));
    std::vector<png_bytep> rowPointers(static_cast<size_t>(rows));
    for (int32_t r = 0; r < rows; ++r) {
        rowPointers[size_t(r)] = pixels.data() + size_t(r) * layout.rowBytes;
    }
    if (!readPngRows(reader.png, rowPointers.data())) {
        readFailure(path, failure());
    }

    Image<double> image(rows, cols, planes);
    const double maximum = wide ? 65535.0 : 255.0;
    for (int32_t r = 0; r < rows; ++r) {
        const unsigned char *row = rowPointers[size_t(r)];
        for (int32_t c = 0; c < cols; ++c) {
            const unsigned char *pixel = row + size_t(c) * size_t(layout.channels) * bytesPerSample;
            for (int32_t p = 0; p < planes; ++p) {
                const unsigned char *sample = pixel + size_t(p) * bytesPerSample;
                const unsigned value = wide ? (unsigned(sample[0]) << 8) | sample[1] : sample[0];
                image(r, c, p) = double(value) / maximum;
            }
        }
    }
    return image;
}

// ------------------------------------------------------------ PGM/PPM input

bool isSpace(unsigned char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }
bool isDigit(unsigned char c) { return c >= '0' && c <= '9'; }

class NetpbmParser {
public:
    NetpbmParser(const std::string &path, const std::vector<unsigned char> &bytes)
        : path_(path), bytes_(bytes), plain_(bytes[1] == '2' || bytes[1] == '3'),
          planes_(bytes[1] == '3' || bytes[1] == '6' ? 3 : 1), kind_(planes_ == 3 ? "PPM" : "PGM")
    {
    }

    Image<double> parse()
    {
        position_ = 2;
        const uint64_t width = headerNumber();
        const uint64_t height = headerNumber();
        const uint64_t maxval = headerNumber();
        if (width == 0 || height == 0) {
            fail("invalid " + kind_ + " header (no pixels)");
        }
        if (maxval == 0 || maxval > 65535) {
            fail("invalid " + kind_ + " header (maximum value must be 1 to 65535)");
        }
        // Exactly one whitespace character separates the header from the
        // pixels; binary pixels may themselves look like whitespace.
        if (position_ >= bytes_.size() || !isSpace(bytes_[position_])) {
            fail(position_ >= bytes_.size() ? std::string("truncated pixel data") : "invalid " + kind_ + " header");
        }
        ++position_;

        const uint64_t pixels = width * height; // both below 2^31 here
        const uint64_t samples = pixels * uint64_t(planes_);
        const uint64_t remaining = bytes_.size() - position_;
        // Every sample takes at least one byte in either encoding.
        if (samples > remaining) {
            fail("truncated pixel data");
        }
        if (pixels > kMaxPixels) {
            fail("image too large");
        }
        const int32_t rows = int32_t(height);
        const int32_t cols = int32_t(width);
        const unsigned maximum = unsigned(maxval);
        const size_t bytesPerSample = maximum > 255 ? 2 : 1;
        if (!plain_ && samples * bytesPerSample > remaining) {
            fail("truncated pixel data");
        }

        Image<double> image(rows, cols, planes_);
        for (int32_t r = 0; r < rows; ++r) {
            for (int32_t c = 0; c < cols; ++c) {
                for (int32_t p = 0; p < planes_; ++p) {
                    uint64_t value;
                    if (plain_) {
                        value = plainSample();
                    } else if (bytesPerSample == 2) {
                        value = (uint64_t(bytes_[position_]) << 8) | bytes_[position_ + 1];
                        position_ += 2;
                    } else {
                        value = bytes_[position_++];
                    }
                    if (value > maximum) {
                        fail("pixel value " + std::to_string(value) + " above the maximum " +
                             std::to_string(maximum));
                    }
                    image(r, c, p) = double(value) / double(maximum);
                }
            }
        }
        return image;
    }

private:
    [[noreturn]] void fail(const std::string &why) const { readFailure(path_, why); }

    void skipSpaceAndComments()
    {
        while (position_ < bytes_.size()) {
            if (isSpace(bytes_[position_])) {
                ++position_;
            } else if (bytes_[position_] == '#') {
                while (position_ < bytes_.size() && bytes_[position_] != '\n' && bytes_[position_] != '\r') {
                    ++position_;
                }
            } else {
                break;
            }
        }
    }

    // A decimal number; false if there is none. Values above 2^31 - 1 are
    // reported as such.
    bool number(uint64_t &value)
    {
        if (position_ >= bytes_.size() || !isDigit(bytes_[position_])) {
            return false;
        }
        value = 0;
        while (position_ < bytes_.size() && isDigit(bytes_[position_])) {
            value = value * 10 + (bytes_[position_++] - '0');
            if (value > 0x7fffffffu) {
                value = uint64_t(0x7fffffffu) + 1;
                while (position_ < bytes_.size() && isDigit(bytes_[position_])) {
                    ++position_;
                }
                break;
            }
        }
        return true;
    }

    uint64_t headerNumber()
    {
        skipSpaceAndComments();
        uint64_t value = 0;
        if (!number(value)) {
            fail(position_ >= bytes_.size() ? "truncated " + kind_ + " header" : "invalid " + kind_ + " header");
        }
        if (value > 0x7fffffffu) {
            fail("image too large");
        }
        return value;
    }

    uint64_t plainSample()
    {
        skipSpaceAndComments();
        uint64_t value = 0;
        if (!number(value)) {
            fail(position_ >= bytes_.size() ? "truncated pixel data" : "invalid pixel value");
        }
        if (position_ < bytes_.size() && !isSpace(bytes_[position_]) && bytes_[position_] != '#') {
            fail("invalid pixel value");
        }
        return value;
    }

    const std::string &path_;
    const std::vector<unsigned char> &bytes_;
    const bool plain_;
    const int32_t planes_;
    const std::string kind_;
    size_t position_ = 0;
};

// ------------------------------------------------------------------ output

enum class Format { Png, Pgm, Ppm };

Format formatFor(const std::string &path)
{
    const size_t slash = path.find_last_of('/');
    const size_t dot = path.find_last_of('.');
    std::string extension;
    if (dot != std::string::npos && (slash == std::string::npos || dot > slash)) {
        extension = path.substr(dot + 1);
        for (char &ch : extension) {
            ch = char(std::tolower(static_cast<unsigned char>(ch)));
        }
    }
    if (extension == "png") {
        return Format::Png;
    }
    if (extension == "pgm") {
        return Format::Pgm;
    }
    if (extension == "ppm") {
        return Format::Ppm;
    }
    writeFailure(path, "unsupported extension (use .png, .pgm or .ppm)");
}

// Clamped to [0, 1] and rounded half away from zero; NaN counts as 0.
unsigned char toByte(double value)
{
    if (!(value > 0.0)) {
        return 0;
    }
    if (value >= 1.0) {
        return 255;
    }
    return static_cast<unsigned char>(std::lround(value * 255.0));
}

// Pixels in file order: rows top to bottom, samples of a pixel together.
std::vector<unsigned char> interleave(ImageView<const double> image, int32_t channels)
{
    std::vector<unsigned char> out(size_t(image.rows) * size_t(image.cols) * size_t(channels));
    size_t i = 0;
    for (int32_t r = 0; r < image.rows; ++r) {
        for (int32_t c = 0; c < image.cols; ++c) {
            for (int32_t ch = 0; ch < channels; ++ch) {
                out[i++] = toByte(image(r, c, image.planes == 1 ? 0 : ch));
            }
        }
    }
    return out;
}

// A temporary file next to the target, removed unless renamed over it.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string &target)
        : target_(target), name_(target + ".tmp-" + std::to_string(long(getpid())))
    {
        errno = 0;
        file_ = std::fopen(name_.c_str(), "wb");
        if (file_ == nullptr) {
            writeFailure(target_, systemMessage(errno, "cannot create a file"));
        }
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;
    ~TemporaryFile()
    {
        if (file_ != nullptr) {
            std::fclose(file_);
        }
        if (!renamed_) {
            std::remove(name_.c_str());
        }
    }

    FILE *file() const { return file_; }

    void write(const void *data, size_t size)
    {
        errno = 0;
        if (std::fwrite(data, 1, size, file_) != size) {
            writeFailure(target_, systemMessage(errno, "write error"));
        }
    }

    void commit()
    {
        errno = 0;
        const bool flushed = std::fflush(file_) == 0 && !std::ferror(file_);
        int error = errno;
        const bool closed = std::fclose(file_) == 0;
        file_ = nullptr;
        if (!flushed || !closed) {
            if (error == 0) {
                error = errno;
            }
            writeFailure(target_, systemMessage(error, "write error"));
        }
        errno = 0;
        if (std::rename(name_.c_str(), target_.c_str()) != 0) {
            writeFailure(target_, systemMessage(errno, "cannot replace the file"));
        }
        renamed_ = true;
    }

private:
    std::string target_;
    std::string name_;
    FILE *file_ = nullptr;
    bool renamed_ = false;
};

void writePng(const std::string &path, TemporaryFile &out, ImageView<const double> image,
              const std::vector<unsigned char> &pixels)
{
    png_image description;
    std::memset(&description, 0, sizeof description);
    description.version = PNG_IMAGE_VERSION;
    description.width = png_uint_32(image.cols);
    description.height = png_uint_32(image.rows);
    description.format = image.planes == 3 ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
    errno = 0;
    const int written = png_image_write_to_stdio(&description, out.file(), 0, pixels.data(), 0, nullptr);
    const int error = errno;
    const std::string message = description.message;
    png_image_free(&description);
    if (!written) {
        writeFailure(path, error != 0 ? std::string(std::strerror(error)) : message);
    }
}

} // namespace

Image<double> readImage(const std::string &path)
{
    try {
        const std::vector<unsigned char> bytes = readWholeFile(path);
        if (bytes.size() >= 8 && png_sig_cmp(bytes.data(), 0, 8) == 0) {
            return decodePng(path, bytes);
        }
        if (bytes.size() >= 2 && bytes[0] == 'P' &&
            (bytes[1] == '2' || bytes[1] == '3' || bytes[1] == '5' || bytes[1] == '6') &&
            (bytes.size() == 2 || isSpace(bytes[2]) || bytes[2] == '#')) {
            return NetpbmParser(path, bytes).parse();
        }
        readFailure(path, "not a PNG, PGM or PPM file");
    } catch (const std::bad_alloc &) {
        readFailure(path, "not enough memory");
    }
}

void writeImage(const std::string &path, ImageView<const double> image)
{
    const Format format = formatFor(path);
    if (image.empty()) {
        writeFailure(path, "the image is empty");
    }
    if (image.planes != 1 && image.planes != 3) {
        writeFailure(path, "the image has " + std::to_string(image.planes) +
                               " planes; only 1 (grey) or 3 (colour) can be saved");
    }
    if (format == Format::Pgm && image.planes != 1) {
        writeFailure(path, "a PGM file holds grey images only (use .ppm or .png for colour)");
    }
    try {
        const int32_t channels = format == Format::Ppm ? 3 : image.planes;
        const std::vector<unsigned char> pixels = interleave(image, channels);
        TemporaryFile out(path);
        if (format == Format::Png) {
            writePng(path, out, image, pixels);
        } else {
            const std::string header = std::string(format == Format::Pgm ? "P5" : "P6") + "\n" +
                                       std::to_string(image.cols) + " " + std::to_string(image.rows) + "\n255\n";
            out.write(header.data(), header.size());
            out.write(pixels.data(), pixels.size());
        }
        out.commit();
    } catch (const std::bad_alloc &) {
        writeFailure(path, "not enough memory");
    }
}

} // namespace ornex::tool
