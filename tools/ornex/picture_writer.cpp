#include "image_io.hpp"

#include <OpenImageIO/imageio.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <new>

#include "picture_files.hpp"
#include "tool_error.hpp"

namespace ornex::tool {
namespace {

[[noreturn]] void writeFailure(const std::string &path, const std::string &why)
{
    throw ToolError("cannot write '" + path + "': " + why);
}

std::string lower(std::string text)
{
    for (char &ch : text) {
        ch = char(std::tolower(static_cast<unsigned char>(ch)));
    }
    return text;
}

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
