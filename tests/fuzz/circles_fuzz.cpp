// Anti-aliased circle outlines and filled discs, every element type, one
// plane set or RGB.
// Kept in range, as the header asks: whole circles (the walk from x0 = 0,
// y0 = radius); radius 1..2^20 for outlines (the walk's values stay in 32
// bits below about 2^29) and 1..32767 for discs, centres near the image or
// far enough that centre +- (radius + 1) stays in int32; the clip rectangle
// inside the image; the integer outlines' square-root table exactly its
// 3224 entries; opacity on 0..1 (Q10 0..1024 for integer images).
#include <cmath>

#include "draw_scene.hpp"
#include "ornex_rt.h"

namespace {

const std::vector<int16_t> sqrtTable = [] {
    std::vector<int16_t> t(3224);
    for (size_t i = 0; i < t.size(); ++i)
        t[i] = int16_t(std::lround(4096.0 * std::sqrt(1.0 - (i / 4096.0) * (i / 4096.0))));
    return t;
}();

template <class T, auto outlineI, auto outlineRgb, auto discI, auto discRgb>
void run(FuzzInput &in)
{
    const bool rgb = in.flag(), disc = in.flag(), far = in.flag();
    DrawScene<T> s(in, rgb);
    const int32_t radius = far ? in.range(1, disc ? 32767 : 1 << 20) : in.range(1, 20);
    // Far centres sit up to a radius and a bit from the image, so the
    // circle still passes near it now and then.
    const int32_t reach = far ? radius + 2 : 4;
    const int32_t cr = in.range(-reach, s.rows + reach), cc = in.range(-reach, s.cols + reach);
    T *p0 = s.plane(0), *p1 = s.plane(1 % s.numPlanes), *p2 = s.plane(2 % s.numPlanes);
    const T *colour = s.colour.data();
    if (disc && rgb)
        discRgb(p0, p1, p2, colour, cr, cc, s.rowMin, s.rowMax, s.colMin, s.colMax, s.rows, radius, s.opacity);
    else if (disc)
        discI(p0, colour, cr, cc, s.rowMin, s.rowMax, s.colMin, s.colMax, s.rows, radius, s.opacity, s.numPlanes,
              s.planeStride);
    else if constexpr (std::is_floating_point_v<T>) {
        if (rgb)
            outlineRgb(p0, p1, p2, colour, 0, radius, cr, cc, s.rowMin, s.rowMax, s.colMin, s.colMax, s.rows, radius);
        else
            outlineI(p0, colour, 0, radius, cr, cc, s.rowMin, s.rowMax, s.colMin, s.colMax, s.rows, radius, s.numPlanes,
                     s.planeStride);
    } else if (rgb) // the integer outlines take the square-root table after the colour
        outlineRgb(p0, p1, p2, colour, sqrtTable.data(), 0, radius, cr, cc, s.rowMin, s.rowMax, s.colMin, s.colMax,
                   s.rows, radius);
    else
        outlineI(p0, colour, sqrtTable.data(), 0, radius, cr, cc, s.rowMin, s.rowMax, s.colMin, s.colMax, s.rows,
                 radius, s.numPlanes, s.planeStride);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput in(data, size);
    static void (*const members[])(FuzzInput &) = {
        run<double, ORNEX_Draw_AA_Circle_I_D, ORNEX_Draw_AA_Circle_RGB_D, ORNEX_Draw_AA_FilledCircle_I_D,
            ORNEX_Draw_AA_FilledCircle_RGB_D>,
        run<float, ORNEX_Draw_AA_Circle_I_R, ORNEX_Draw_AA_Circle_RGB_R, ORNEX_Draw_AA_FilledCircle_I_R,
            ORNEX_Draw_AA_FilledCircle_RGB_R>,
        run<uint8_t, ORNEX_Draw_AA_Circle_I_UI8, ORNEX_Draw_AA_Circle_RGB_UI8, ORNEX_Draw_AA_FilledCircle_I_UI8,
            ORNEX_Draw_AA_FilledCircle_RGB_UI8>,
        run<int8_t, ORNEX_Draw_AA_Circle_I_I8, ORNEX_Draw_AA_Circle_RGB_I8, ORNEX_Draw_AA_FilledCircle_I_I8,
            ORNEX_Draw_AA_FilledCircle_RGB_I8>,
        run<uint16_t, ORNEX_Draw_AA_Circle_I_UI16, ORNEX_Draw_AA_Circle_RGB_UI16, ORNEX_Draw_AA_FilledCircle_I_UI16,
            ORNEX_Draw_AA_FilledCircle_RGB_UI16>,
        run<int16_t, ORNEX_Draw_AA_Circle_I_I16, ORNEX_Draw_AA_Circle_RGB_I16, ORNEX_Draw_AA_FilledCircle_I_I16,
            ORNEX_Draw_AA_FilledCircle_RGB_I16>};
    members[in.range(0, 5)](in);
    return 0;
}
