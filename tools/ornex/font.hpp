#pragma once

#include <memory>
#include <optional>
#include <string>

#include "ornex/draw.hpp"

namespace ornex::tool {

// Glyphs of a TrueType font rendered by FreeType at a pixel height, by
// Unicode code point, and as the C++ layer's drawText takes them (a callable
// char -> Glyph, each byte taken as the Latin-1 character of that value).
// Glyph bitmaps are rendered once per character and kept for the font's
// lifetime.
class Font {
public:
    explicit Font(int pixelHeight, const std::string &path = defaultPath());
    ~Font();
    Font(Font &&) noexcept;
    Font &operator=(Font &&) noexcept;

    Glyph operator()(char c) const;
    Glyph glyph(char32_t codePoint) const;
    int pixelHeight() const;
    // The width in pixels of a text set in this font.
    int32_t textWidth(std::string_view text) const;

    // The file of DejaVu Sans as fontconfig finds it.
    static std::string defaultPath();
    // The file of a font: `name` itself when it is a path (it holds a '/' or
    // names a file), otherwise the file of the font family or fontconfig
    // pattern it names ("DejaVu Serif", "DejaVu Sans:bold"). A family that
    // is not installed is a ToolError, even when fontconfig would offer
    // another in its place.
    static std::string find(const std::string &name);

private:
    struct Faces;
    std::unique_ptr<Faces> faces_;
};

} // namespace ornex::tool

namespace ornex::tool {

// The code points of UTF-8 text; nothing for bytes that are not UTF-8
// (stray continuation bytes, overlong forms, surrogates, beyond U+10FFFF).
std::optional<std::u32string> decodeUtf8(std::string_view text);

} // namespace ornex::tool
