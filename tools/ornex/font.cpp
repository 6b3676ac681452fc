#include "font.hpp"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <map>
#include <string>
#include <system_error>
#include <vector>

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include "tool_error.hpp"

namespace ornex::tool {
namespace {

// FreeType's own descriptions of its error codes. FT_Error_String only
// works when the library was built with its error strings, so the table is
// built here from the same list.
struct ErrorMessage {
    int code;
    const char *text;
};
#undef FTERRORS_H_
#define FT_ERRORDEF(e, v, s) {e, s},
#define FT_ERROR_START_LIST constexpr ErrorMessage errorMessages[] = {
#define FT_ERROR_END_LIST {0, nullptr}};
#include FT_ERRORS_H

const char *describe(FT_Error error)
{
    for (const ErrorMessage &message : errorMessages) {
        if (message.text != nullptr && message.code == error) {
            return message.text;
        }
    }
    return "unknown FreeType error";
}

// Why the file at `path` cannot be a font before FreeType gets to see it.
std::string fileProblem(const std::string &path)
{
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (error || !std::filesystem::exists(status)) {
        return "no such file";
    }
    if (std::filesystem::is_directory(status)) {
        return "is a directory";
    }
    return {};
}

struct PatternDeleter {
    void operator()(FcPattern *pattern) const { FcPatternDestroy(pattern); }
};
using Pattern = std::unique_ptr<FcPattern, PatternDeleter>;

std::string family(const FcPattern *pattern, int index)
{
    FcChar8 *name = nullptr;
    if (FcPatternGetString(pattern, FC_FAMILY, index, &name) != FcResultMatch) {
        return {};
    }
    return reinterpret_cast<const char *>(name);
}

bool sameName(const std::string &a, const std::string &b)
{
    return FcStrCmpIgnoreCase(reinterpret_cast<const FcChar8 *>(a.c_str()),
                              reinterpret_cast<const FcChar8 *>(b.c_str())) == 0;
}

} // namespace

// The FreeType library and face, and the glyphs rendered so far. Each
// cached bitmap is written once and never resized, so spans handed out stay
// valid as long as the font.
struct Font::Faces {
    struct Cached {
        bool rendered = false;
        std::vector<uint8_t> bitmap;
        Glyph glyph;
    };

    FT_Library library = nullptr;
    FT_Face face = nullptr;
    int pixelHeight = 0;
    std::string path;
    // A map keeps each entry where it is as others are added.
    std::map<char32_t, Cached> glyphs;

    Faces() = default;
    Faces(const Faces &) = delete;
    Faces &operator=(const Faces &) = delete;
    ~Faces()
    {
        if (face != nullptr) {
            FT_Done_Face(face);
        }
        if (library != nullptr) {
            FT_Done_FreeType(library);
        }
    }

    [[noreturn]] void fail(const std::string &reason) const
    {
        throw ToolError("cannot load font '" + path + "': " + reason);
    }

    void render(char32_t code, Cached &entry) const;
};

// Renders one character as 8-bit coverage; a character without a glyph in
// the font gets the font's missing-glyph (glyph index 0).
void Font::Faces::render(char32_t code, Cached &entry) const
{
    const FT_Error loadError = FT_Load_Char(face, code, FT_LOAD_RENDER | FT_LOAD_TARGET_NORMAL);
    if (loadError != 0) {
        fail("cannot render character " + std::to_string(uint32_t(code)) + ": " + describe(loadError));
    }
    const FT_GlyphSlot slot = face->glyph;
    const FT_Bitmap &source = slot->bitmap;
    const unsigned width = source.width, rows = source.rows;
    if (width > std::numeric_limits<uint16_t>::max() || rows > std::numeric_limits<uint16_t>::max()) {
        fail("the glyph of character " + std::to_string(uint32_t(code)) + " is too large");
    }
    if (width > 0 && rows > 0 && source.pixel_mode != FT_PIXEL_MODE_GRAY && source.pixel_mode != FT_PIXEL_MODE_MONO) {
        fail("character " + std::to_string(uint32_t(code)) + " renders in an unsupported pixel format");
    }

    std::vector<uint8_t> bitmap(static_cast<size_t>(width) * rows);
    const size_t stride = static_cast<size_t>(std::abs(source.pitch));
    const unsigned greys = source.num_grays;
    for (unsigned r = 0; r < rows; ++r) {
        // A negative pitch stores the rows bottom up from the buffer start.
        const unsigned stored = source.pitch >= 0 ? r : rows - 1 - r;
        const uint8_t *line = source.buffer + stored * stride;
        uint8_t *out = bitmap.data() + static_cast<size_t>(r) * width;
        for (unsigned c = 0; c < width; ++c) {
            if (source.pixel_mode == FT_PIXEL_MODE_MONO) {
                out[c] = (line[c >> 3] & (0x80u >> (c & 7))) != 0 ? 255 : 0;
            } else if (greys == 256 || greys < 2) {
                out[c] = line[c];
            } else {
                out[c] = static_cast<uint8_t>((line[c] * 255u + (greys - 1) / 2) / (greys - 1));
            }
        }
    }

    entry.bitmap = std::move(bitmap);
    entry.glyph.bitmap = {entry.bitmap.data(), entry.bitmap.size()};
    entry.glyph.width = static_cast<uint16_t>(width);
    entry.glyph.height = static_cast<uint16_t>(rows);
    // drawText puts the bitmap's top-left pixel xOffset columns right of the
    // pen and yOffset rows above the baseline: exactly FreeType's bearings.
    entry.glyph.xOffset = slot->bitmap_left;
    entry.glyph.yOffset = slot->bitmap_top;
    entry.glyph.advance = static_cast<int32_t>(slot->advance.x >> 6);
    entry.rendered = true;
}

Font::Font(int pixelHeight, const std::string &path) : faces_(std::make_unique<Faces>())
{
    Faces &faces = *faces_;
    faces.path = path;
    faces.pixelHeight = pixelHeight;
    if (pixelHeight <= 0) {
        faces.fail("the pixel height must be positive, not " + std::to_string(pixelHeight));
    }
    if (const std::string problem = fileProblem(path); !problem.empty()) {
        faces.fail(problem);
    }
    if (const FT_Error error = FT_Init_FreeType(&faces.library); error != 0) {
        faces.library = nullptr;
        faces.fail(std::string("cannot start FreeType: ") + describe(error));
    }
    if (const FT_Error error = FT_New_Face(faces.library, path.c_str(), 0, &faces.face); error != 0) {
        faces.face = nullptr;
        if (error == FT_Err_Unknown_File_Format) {
            faces.fail("not a font file FreeType can read");
        }
        faces.fail(describe(error));
    }
    // Prefer the Unicode map so that code points find their characters; a
    // font without one keeps whatever map FreeType chose.
    FT_Select_Charmap(faces.face, FT_ENCODING_UNICODE);
    if (const FT_Error error = FT_Set_Pixel_Sizes(faces.face, 0, static_cast<FT_UInt>(pixelHeight)); error != 0) {
        faces.fail("cannot set the size to " + std::to_string(pixelHeight) + " pixels: " + describe(error));
    }
}

Font::~Font() = default;
Font::Font(Font &&) noexcept = default;
Font &Font::operator=(Font &&) noexcept = default;

Glyph Font::operator()(char c) const { return glyph(static_cast<unsigned char>(c)); }

// Not safe to call from several threads at once: the first use of a
// character fills its cache entry.
Glyph Font::glyph(char32_t codePoint) const
{
    Faces::Cached &entry = faces_->glyphs[codePoint];
    if (!entry.rendered) {
        faces_->render(codePoint, entry);
    }
    return entry.glyph;
}

int Font::pixelHeight() const { return faces_->pixelHeight; }

int32_t Font::textWidth(std::string_view text) const
{
    int64_t width = 0;
    for (const char c : text) {
        width += (*this)(c).advance;
    }
    if (width > std::numeric_limits<int32_t>::max() || width < std::numeric_limits<int32_t>::min()) {
        throw ToolError("the text is too wide to set (" + std::to_string(width) + " pixels)");
    }
    return static_cast<int32_t>(width);
}

std::string Font::defaultPath() { return find("DejaVu Sans"); }

} // namespace ornex::tool

namespace ornex::tool {

std::string Font::find(const std::string &name)
{
    std::error_code error;
    if (name.find('/') != std::string::npos || std::filesystem::is_regular_file(name, error)) {
        return name;
    }
    if (!FcInit()) {
        throw ToolError("cannot start fontconfig to look for the font '" + name + "'");
    }
    const Pattern pattern(FcNameParse(reinterpret_cast<const FcChar8 *>(name.c_str())));
    if (!pattern) {
        throw ToolError("'" + name + "' is neither a font file nor a font family");
    }
    // Read before substitution, which appends fallback families.
    const std::string wanted = family(pattern.get(), 0);
    FcConfigSubstitute(nullptr, pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    FcResult result = FcResultNoMatch;
    const Pattern match(FcFontMatch(nullptr, pattern.get(), &result));
    FcChar8 *file = nullptr;
    if (!match || FcPatternGetString(match.get(), FC_FILE, 0, &file) != FcResultMatch) {
        throw ToolError("fontconfig finds no font for '" + name + "'");
    }
    bool installed = wanted.empty();
    for (int k = 0; !family(match.get(), k).empty(); ++k) {
        installed = installed || sameName(family(match.get(), k), wanted);
    }
    if (!installed) {
        throw ToolError("no font family '" + wanted + "' is installed (fontconfig's nearest is '" +
                        family(match.get(), 0) + "'); name an installed family or a font file");
    }
    return reinterpret_cast<const char *>(file);
}

std::optional<std::u32string> decodeUtf8(std::string_view text)
{
    std::u32string codePoints;
    for (size_t k = 0; k < text.size();) {
        const auto lead = static_cast<unsigned char>(text[k]);
        const int length = lead < 0x80 ? 1 : lead >> 5 == 0x6 ? 2 : lead >> 4 == 0xe ? 3 : lead >> 3 == 0x1e ? 4 : 0;
        if (length == 0 || k + length > text.size()) {
            return std::nullopt;
        }
        char32_t code = length == 1 ? lead : lead & (0x7f >> length);
        for (int m = 1; m < length; ++m) {
            const auto next = static_cast<unsigned char>(text[k + m]);
            if (next >> 6 != 0x2) {
                return std::nullopt;
            }
            code = code << 6 | (next & 0x3f);
        }
        constexpr char32_t shortest[] = {0, 0, 0x80, 0x800, 0x10000};
        if (code < shortest[length] || code > 0x10ffff || (code >= 0xd800 && code <= 0xdfff)) {
            return std::nullopt;
        }
        codePoints.push_back(code);
        k += length;
    }
    return codePoints;
}

} // namespace ornex::tool
