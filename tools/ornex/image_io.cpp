#include "image_io.hpp"

#include <OpenImageIO/imageio.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <limits>
#include <map>
#include <memory>
#include <new>

#include "tool_error.hpp"

namespace ornex::tool {
namespace {

namespace fs = std::filesystem;

// Enough for any picture the tool is meant for, and a guard against headers
// that announce gigantic images (a PNG can do so in a few bytes).
constexpr uint64_t kMaxPixels = uint64_t(1) << 30;

[[noreturn]] void readFailure(const std::string &label, const std::string &why)
{
    throw ToolError("cannot read " + label + ": " + why);
}

[[noreturn]] void writeFailure(const std::string &path, const std::string &why)
{
    throw ToolError("cannot write '" + path + "': " + why);
}

std::string systemMessage(int error, const char *fallback)
{
    return error != 0 ? std::string(std::strerror(error)) : std::string(fallback);
}

// OpenImageIO's message, or a fallback when it has none (its netpbm reader
// fails on truncated data without one).
std::string oiioMessage(std::string message, const char *fallback)
{
    while (!message.empty() && (message.back() == '\n' || message.back() == ' ')) {
        message.pop_back();
    }
    return message.empty() ? std::string(fallback) : message;
}

std::string lower(std::string text)
{
    for (char &ch : text) {
        ch = char(std::tolower(static_cast<unsigned char>(ch)));
    }
    return text;
}

// A file removed when this goes out of scope, unless released.
class FileRemover {
public:
    explicit FileRemover(std::string path) : path_(std::move(path)) {}
    FileRemover(const FileRemover &) = delete;
    FileRemover &operator=(const FileRemover &) = delete;
    ~FileRemover()
    {
        if (!path_.empty()) {
            ::unlink(path_.c_str());
        }
    }
    const std::string &path() const { return path_; }
    void release() { path_.clear(); }

private:
    std::string path_;
};

// A new empty file in the system's temporary folder.
std::string makeTemporaryFile(const char *stem, int &descriptor)
{
    std::string name = (fs::temp_directory_path() / (std::string(stem) + "-XXXXXX")).string();
    descriptor = ::mkstemp(name.data());
    if (descriptor < 0) {
        throw ToolError(std::string("cannot create a temporary file: ") + std::strerror(errno));
    }
    return name;
}

// ----------------------------------------------------------------- reading

// The format from the file's first bytes.
const char *formatFromContent(const unsigned char *head, size_t size)
{
    auto starts = [&](const char *magic, size_t length, size_t at = 0) {
        return size >= at + length && std::memcmp(head + at, magic, length) == 0;
    };
    if (starts("\x89PNG\r\n\x1a\n", 8)) {
        return "png";
    }
    if (starts("\xff\xd8\xff", 3)) {
        return "jpeg";
    }
    if (starts("II*\0", 4) || starts("MM\0*", 4) || starts("II+\0", 4) || starts("MM\0+", 4)) {
        return "tiff";
    }
    if (starts("RIFF", 4) && starts("WEBP", 4, 8)) {
        return "webp";
    }
    if (size >= 3 && head[0] == 'P' && head[1] >= '1' && head[1] <= '6' &&
        (std::isspace(head[2]) != 0 || head[2] == '#')) {
        return "pnm";
    }
    return nullptr;
}

// Spools standard input into a temporary file, for OpenImageIO to read as a
// file (some of its readers need to seek).
class SpooledInput {
public:
    SpooledInput() : file_(spool()) {}
    const std::string &path() const { return file_.path(); }

private:
    static std::string spool()
    {
        int descriptor = -1;
        const std::string name = makeTemporaryFile("ornex-stdin", descriptor);
        FileRemover remover(name);
        char chunk[1 << 16];
        for (;;) {
            const ssize_t got = ::read(STDIN_FILENO, chunk, sizeof chunk);
            if (got == 0) {
                break;
            }
            if (got < 0) {
                if (errno == EINTR) {
                    continue;
                }
                const int error = errno;
                ::close(descriptor);
                readFailure("standard input", std::strerror(error));
            }
            for (ssize_t done = 0; done < got;) {
                const ssize_t put = ::write(descriptor, chunk + done, size_t(got - done));
                if (put < 0 && errno != EINTR) {
                    const int error = errno;
                    ::close(descriptor);
                    readFailure("standard input", std::string("cannot keep it in a temporary file: ") +
                                                      std::strerror(error));
                }
                done += std::max<ssize_t>(put, 0);
            }
        }
        ::close(descriptor);
        remover.release();
        return name;
    }

    FileRemover file_;
};

LoadedImage decode(const std::string &file, const std::string &label)
{
    struct stat info {};
    if (::stat(file.c_str(), &info) != 0) {
        readFailure(label, errno == ENOENT ? std::string("no such file") : systemMessage(errno, "cannot open"));
    }
    if (S_ISDIR(info.st_mode)) {
        readFailure(label, std::strerror(EISDIR));
    }
    unsigned char head[16] = {};
    size_t headSize = 0;
    {
        std::FILE *stream = std::fopen(file.c_str(), "rb");
        if (stream == nullptr) {
            readFailure(label, systemMessage(errno, "cannot open"));
        }
        headSize = std::fread(head, 1, sizeof head, stream);
        std::fclose(stream);
    }
    const char *format = formatFromContent(head, headSize);
    if (format == nullptr) {
        readFailure(label, "not a PNG, JPEG, TIFF, WebP, PGM or PPM file");
    }

    auto input = OIIO::ImageInput::create(format);
    if (!input) {
        readFailure(label, oiioMessage(OIIO::geterror(), "no reader for this format"));
    }
    OIIO::ImageSpec config, header;
    config.attribute("oiio:UnassociatedAlpha", 1);
    if (!input->open(file, header, config)) {
        readFailure(label, oiioMessage(input->geterror(), "cannot decode the file"));
    }
    if (header.deep) {
        readFailure(label, "deep images are not supported");
    }
    if (header.width <= 0 || header.height <= 0 || header.nchannels <= 0) {
        readFailure(label, "the image has no pixels");
    }
    if (uint64_t(header.width) * uint64_t(header.height) > kMaxPixels) {
        readFailure(label, "image too large");
    }

    // Integer samples of one byte read as such, wider ones as 16 bits, floats
    // as floats: each then becomes a double by one division.
    const int channels = header.nchannels;
    OIIO::TypeDesc type = OIIO::TypeDesc::UINT16;
    int bitDepth = 16;
    if (header.format.is_floating_point()) {
        type = OIIO::TypeDesc::FLOAT;
    } else if (header.format.size() == 1) {
        type = OIIO::TypeDesc::UINT8;
        bitDepth = 8;
    }
    const size_t sampleCount = size_t(header.width) * size_t(header.height) * size_t(channels);
    std::vector<uint8_t> narrow(type == OIIO::TypeDesc::UINT8 ? sampleCount : 0);
    std::vector<uint16_t> broad(type == OIIO::TypeDesc::UINT16 ? sampleCount : 0);
    std::vector<float> real(type == OIIO::TypeDesc::FLOAT ? sampleCount : 0);
    void *const data = !narrow.empty() ? static_cast<void *>(narrow.data())
                       : !broad.empty() ? static_cast<void *>(broad.data())
                                        : static_cast<void *>(real.data());
    if (!input->read_image(0, 0, 0, channels, type, data)) {
        readFailure(label, oiioMessage(input->geterror(), "truncated or damaged image data"));
    }
    int orientation = header.get_int_attribute("Orientation", 1);
    orientation = orientation >= 1 && orientation <= 8 ? orientation : 1;
    const bool unassociated = header.get_int_attribute("oiio:UnassociatedAlpha", 0) != 0;
    input->close();

    // Channels: grey, grey+alpha, RGB, RGBA; past that the first three colour
    // channels and the alpha that the file names.
    int alphaChannel = header.alpha_channel;
    const bool namedAlpha = alphaChannel >= 0 && alphaChannel < channels;
    if (!namedAlpha) {
        alphaChannel = channels == 2 || channels == 4 ? channels - 1 : -1;
    }
    std::vector<int> colour;
    for (int ch = 0; ch < channels && colour.size() < 3; ++ch) {
        if (ch != alphaChannel) {
            colour.push_back(ch);
        }
    }
    if (colour.empty()) {
        readFailure(label, "the image has only an alpha channel");
    }
    const int planes = colour.size() >= 3 ? 3 : 1;

    // The EXIF orientation, applied here: OpenImageIO 2.4's reorient swaps
    // 5 (transpose) and 7 (transverse). Pixel (r, c) as shown is stored at
    // (storedRow, storedCol).
    const int32_t height = header.height, width = header.width;
    const bool turned = orientation >= 5;
    const int32_t rows = turned ? width : height, cols = turned ? height : width;
    auto sample = [&](int32_t r, int32_t c, int ch) -> double {
        int32_t storedRow = r, storedCol = c;
        switch (orientation) {
        case 2: storedCol = width - 1 - c; break;
        case 3: storedRow = height - 1 - r, storedCol = width - 1 - c; break;
        case 4: storedRow = height - 1 - r; break;
        case 5: storedRow = c, storedCol = r; break;
        case 6: storedRow = height - 1 - c, storedCol = r; break;
        case 7: storedRow = height - 1 - c, storedCol = width - 1 - r; break;
        case 8: storedRow = c, storedCol = width - 1 - r; break;
        default: break;
        }
        const size_t k = (size_t(storedRow) * size_t(width) + size_t(storedCol)) * size_t(channels) + size_t(ch);
        if (!narrow.empty()) {
            return narrow[k] / 255.0;
        }
        if (!broad.empty()) {
            return broad[k] / 65535.0;
        }
        return real[k];
    };
    LoadedImage loaded;
    loaded.bitDepth = bitDepth;
    loaded.pixels = Image<double>(rows, cols, planes);
    for (int p = 0; p < planes; ++p) {
        for (int32_t c = 0; c < cols; ++c) {
            for (int32_t r = 0; r < rows; ++r) {
                loaded.pixels(r, c, p) = sample(r, c, colour[size_t(p)]);
            }
        }
    }
    if (alphaChannel >= 0) {
        Image<double> alpha(rows, cols);
        for (int32_t c = 0; c < cols; ++c) {
            for (int32_t r = 0; r < rows; ++r) {
                alpha(r, c) = sample(r, c, alphaChannel);
            }
        }
        // Colours stored multiplied by alpha (associated), as TIFF may and
        // as OpenImageIO 2.4 hands over WebP whatever it is asked, are
        // divided back.
        if (namedAlpha && !unassociated) {
            for (int p = 0; p < planes; ++p) {
                for (int32_t c = 0; c < cols; ++c) {
                    for (int32_t r = 0; r < rows; ++r) {
                        if (alpha(r, c) > 0) {
                            loaded.pixels(r, c, p) = std::min(1.0, loaded.pixels(r, c, p) / alpha(r, c));
                        }
                    }
                }
            }
        }
        loaded.alpha = std::move(alpha);
    }
    return loaded;
}

// ----------------------------------------------------------------- writing

struct Format {
    const char *name;     // for messages
    const char *oiioName; // OpenImageIO's plug-in
    int maxBitDepth;
    bool alpha;     // keeps an alpha plane
    bool greyOnly;  // refuses colour
    bool colourOnly; // grey is written as RGB
    int32_t maxSide = std::numeric_limits<int32_t>::max();
};

const Format kPng{"PNG", "png", 16, true, false, false};
// libjpeg ends the process on a larger image instead of reporting it.
const Format kJpeg{"JPEG", "jpeg", 8, false, false, false, 65500};
const Format kTiff{"TIFF", "tiff", 16, true, false, false};
const Format kWebp{"WebP", "webp", 8, false, false, true};
const Format kPgm{"PGM", "pnm", 8, false, true, false};
const Format kPpm{"PPM", "pnm", 8, false, false, true};

const Format *formatNamed(const std::string &name)
{
    static const std::pair<const char *, const Format *> names[] = {
        {"png", &kPng},  {"jpg", &kJpeg},  {"jpeg", &kJpeg}, {"tif", &kTiff},
        {"tiff", &kTiff}, {"webp", &kWebp}, {"pgm", &kPgm},   {"ppm", &kPpm}};
    const std::string key = lower(name);
    for (const auto &[known, format] : names) {
        if (key == known) {
            return format;
        }
    }
    return nullptr;
}

std::string extensionOf(const std::string &path)
{
    const size_t slash = path.find_last_of('/');
    const size_t dot = path.find_last_of('.');
    if (dot != std::string::npos && (slash == std::string::npos || dot > slash)) {
        return path.substr(dot + 1);
    }
    return "";
}

const Format &formatFor(const std::string &path, const std::string &explicitFormat)
{
    if (!explicitFormat.empty()) {
        const Format *format = formatNamed(explicitFormat);
        if (format == nullptr) {
            writeFailure(path, "unsupported format '" + explicitFormat + "' (use png, jpeg, tiff, webp, pgm or ppm)");
        }
        return *format;
    }
    if (path == "-") {
        return kPng;
    }
    const Format *format = formatNamed(extensionOf(path));
    if (format == nullptr) {
        writeFailure(path, "unsupported extension (use .png, .jpg, .tif, .webp, .pgm or .ppm)");
    }
    return *format;
}

// Clamped to [0, 1] and rounded half away from zero; NaN counts as 0.
template <class Sample>
Sample quantised(double value)
{
    constexpr double maximum = double(std::numeric_limits<Sample>::max());
    if (!(value > 0.0)) {
        return 0;
    }
    if (value >= 1.0) {
        return Sample(maximum);
    }
    return static_cast<Sample>(std::lround(value * maximum));
}

// Samples in file order: rows top to bottom, a pixel's channels together
// (colour, then alpha).
template <class Sample>
std::vector<Sample> interleave(ImageView<const double> pixels, const ImageView<const double> *alpha,
                               int colourChannels)
{
    const int channels = colourChannels + (alpha != nullptr ? 1 : 0);
    std::vector<Sample> out(size_t(pixels.rows) * size_t(pixels.cols) * size_t(channels));
    size_t k = 0;
    for (int32_t r = 0; r < pixels.rows; ++r) {
        for (int32_t c = 0; c < pixels.cols; ++c) {
            for (int ch = 0; ch < colourChannels; ++ch) {
                out[k++] = quantised<Sample>(pixels(r, c, pixels.planes == 1 ? 0 : ch));
            }
            if (alpha != nullptr) {
                out[k++] = quantised<Sample>((*alpha)(r, c));
            }
        }
    }
    return out;
}

// A new file next to the target, which OpenImageIO then writes over: made
// here so that a missing or unwritable folder is reported as such.
std::string createSibling(const std::string &target)
{
    static unsigned counter = 0;
    for (int attempt = 0;; ++attempt) {
        const std::string name =
            target + ".tmp-" + std::to_string(long(::getpid())) + "-" + std::to_string(counter++);
        const int descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor >= 0) {
            ::close(descriptor);
            return name;
        }
        if (errno != EEXIST || attempt >= 100) {
            writeFailure(target, systemMessage(errno, "cannot create a file"));
        }
    }
}

void encode(const std::string &target, const std::string &file, const Format &format, const OIIO::ImageSpec &header,
            const void *samples)
{
    // OpenImageIO names the file it writes: the user knows it as the target.
    auto failure = [&](std::string message) {
        message = oiioMessage(std::move(message), "cannot encode the image");
        for (size_t at = message.find(file); at != std::string::npos; at = message.find(file, at + target.size())) {
            message.replace(at, file.size(), target);
        }
        writeFailure(target, message);
    };
    auto output = OIIO::ImageOutput::create(format.oiioName);
    if (!output) {
        failure(OIIO::geterror());
    }
    if (!output->open(file, header)) {
        failure(output->geterror());
    }
    const bool written = output->write_image(header.format, samples);
    const bool closed = output->close();
    if (!written || !closed) {
        failure(output->geterror());
    }
}

void copyToStandardOutput(const std::string &file)
{
    std::FILE *in = std::fopen(file.c_str(), "rb");
    if (in == nullptr) {
        writeFailure("-", systemMessage(errno, "cannot reopen the encoded image"));
    }
    std::unique_ptr<std::FILE, int (*)(std::FILE *)> closer(in, std::fclose);
    std::fflush(stdout);
    char chunk[1 << 16];
    size_t got;
    while ((got = std::fread(chunk, 1, sizeof chunk, in)) > 0) {
        if (std::fwrite(chunk, 1, got, stdout) != got) {
            writeFailure("-", systemMessage(errno, "write error"));
        }
    }
    if (std::ferror(in) || std::fflush(stdout) != 0) {
        writeFailure("-", systemMessage(errno, "write error"));
    }
}

} // namespace

LoadedImage readPicture(const std::string &path)
{
    try {
        if (path == "-") {
            const SpooledInput spooled;
            return decode(spooled.path(), "standard input");
        }
        return decode(path, "'" + path + "'");
    } catch (const std::bad_alloc &) {
        readFailure(path == "-" ? std::string("standard input") : "'" + path + "'", "not enough memory");
    }
}

Image<double> readImage(const std::string &path) { return readPicture(path).pixels; }

void writePicture(const std::string &path, ImageView<const double> pixels,
                  std::optional<ImageView<const double>> alpha, int bitDepth, const std::string &format)
{
    const Format &chosen = formatFor(path, format);
    if (pixels.empty()) {
        writeFailure(path, "the image is empty");
    }
    if (pixels.planes != 1 && pixels.planes != 3) {
        writeFailure(path, "the image has " + std::to_string(pixels.planes) +
                               " planes; only 1 (grey) or 3 (colour) can be saved");
    }
    if (alpha && (alpha->planes != 1 || alpha->rows != pixels.rows || alpha->cols != pixels.cols)) {
        writeFailure(path, "the alpha plane does not match the image");
    }
    if (bitDepth != 8 && bitDepth != 16) {
        writeFailure(path, "a bit depth is 8 or 16, not " + std::to_string(bitDepth));
    }
    if (pixels.rows > chosen.maxSide || pixels.cols > chosen.maxSide) {
        writeFailure(path, std::string("a ") + chosen.name + " image has at most " + std::to_string(chosen.maxSide) +
                               " rows and columns");
    }
    if (chosen.greyOnly && pixels.planes != 1) {
        writeFailure(path, "a PGM file holds grey images only (use .ppm or .png for colour)");
    }
    const int colourChannels = chosen.colourOnly ? 3 : pixels.planes;
    const ImageView<const double> *keptAlpha = alpha && chosen.alpha ? &*alpha : nullptr;
    const bool wide = std::min(bitDepth, chosen.maxBitDepth) == 16;

    OIIO::ImageSpec header(pixels.cols, pixels.rows, colourChannels + (keptAlpha != nullptr ? 1 : 0),
                         wide ? OIIO::TypeDesc::UINT16 : OIIO::TypeDesc::UINT8);
    if (keptAlpha != nullptr) {
        header.alpha_channel = colourChannels;
        header.attribute("oiio:UnassociatedAlpha", 1);
    }
    if (&chosen == &kJpeg) {
        header.attribute("Compression", "jpeg:95");
        header.attribute("jpeg:subsampling", "4:4:4");
    }
    try {
        std::vector<uint8_t> narrow;
        std::vector<uint16_t> broad;
        const void *samples = nullptr;
        if (wide) {
            broad = interleave<uint16_t>(pixels, keptAlpha, colourChannels);
            samples = broad.data();
        } else {
            narrow = interleave<uint8_t>(pixels, keptAlpha, colourChannels);
            samples = narrow.data();
        }
        if (path == "-") {
            int descriptor = -1;
            FileRemover encoded(makeTemporaryFile("ornex-stdout", descriptor));
            ::close(descriptor);
            encode(path, encoded.path(), chosen, header, samples);
            copyToStandardOutput(encoded.path());
            return;
        }
        FileRemover temporary(createSibling(path));
        encode(path, temporary.path(), chosen, header, samples);
        if (std::rename(temporary.path().c_str(), path.c_str()) != 0) {
            writeFailure(path, systemMessage(errno, "cannot replace the file"));
        }
        temporary.release();
    } catch (const std::bad_alloc &) {
        writeFailure(path, "not enough memory");
    }
}

void writePicture(const std::string &path, const LoadedImage &picture, const std::string &format)
{
    std::optional<ImageView<const double>> alpha;
    if (picture.alpha) {
        alpha = picture.alpha->view();
    }
    writePicture(path, picture.pixels.view(), alpha, picture.bitDepth, format);
}

void writeImage(const std::string &path, ImageView<const double> image, const std::string &format)
{
    writePicture(path, image, std::nullopt, 8, format);
}

std::FILE *reportStreamFor(const std::string &outputPath) { return outputPath == "-" ? stderr : stdout; }

} // namespace ornex::tool
