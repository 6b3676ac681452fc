#pragma once

#include <memory>
#include <string>

#include "ornex/draw.hpp"

namespace ornex::tool {

// Glyphs of a TrueType font rendered by FreeType at a pixel height, as the
// C++ layer's drawText takes them (a callable char -> Glyph). Glyph bitmaps
// are rendered once per character and kept for the font's lifetime.
class Font {
public:
    explicit Font(int pixelHeight, const std::string &path = defaultPath());
    ~Font();
    Font(Font &&) noexcept;
    Font &operator=(Font &&) noexcept;

    Glyph operator()(char c) const;
    int pixelHeight() const;
    // The width in pixels of a text set in this font.
    int32_t textWidth(std::string_view text) const;

    // DejaVu Sans from the Debian font package.
    static std::string defaultPath();

private:
    struct Faces;
    std::unique_ptr<Faces> faces_;
};

} // namespace ornex::tool
