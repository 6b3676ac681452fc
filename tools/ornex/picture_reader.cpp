#include "image_io.hpp"

#include <OpenImageIO/imageio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>
#include <vector>

#include "picture_files.hpp"
#include "tool_error.hpp"

namespace ornex::tool {
namespace {

// Enough for any picture the tool is meant for, and a guard against headers
// that announce gigantic images (a PNG can do so in a few bytes).
constexpr uint64_t kMaxPixels = uint64_t(1) << 30;

[[noreturn]] void readFailure(const std::string &label, const std::string &why)
{
    throw ToolError("cannot read " + label + ": " + why);
}

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

} // namespace ornex::tool
