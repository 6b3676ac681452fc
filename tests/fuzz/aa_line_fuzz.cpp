// Anti-aliased lines, every element type, one plane set or RGB.
// Kept in range, as the header asks: end-points near the image or anywhere
// within +-30000 (the clipper's 32-bit products stay exact below 2^15 and
// beyond it lines count as missing); the clip rectangle inside the image;
// a weight table of exactly level + planes rows of 25 entries, row 0 a keep
// factor on 0..1 (Q10 0..1024 for integer images), the colour rows any value
// of the table type (integer members wrap by design).
#include "draw_scene.hpp"
#include "ornex_rt.h"

namespace {

template <class T, class W, auto drawI, auto drawRgb>
void run(FuzzInput &in)
{
    const bool rgb = in.flag(), far = in.flag();
    DrawScene<T> s(in, rgb);
    int32_t ends[4];
    for (int k = 0; k < 4; ++k)
        ends[k] = far ? in.range(-30000, 30000) : in.range(-4, (k % 2 ? s.cols : s.rows) + 4);
    const int32_t level = in.range(1, 3);
    std::vector<W> table(size_t(25 * (level + s.numPlanes)));
    for (size_t k = 0; k < table.size(); ++k) {
        if (k < 25)
            table[k] = W(in.range(0, 1024) * (DrawScene<T>::full / 1024));
        else if constexpr (std::is_floating_point_v<W>)
            table[k] = W(in.real(2));
        else
            table[k] = in.raw<W>();
    }
    if (rgb)
        drawRgb(ends[0], ends[1], ends[2], ends[3], s.plane(0), s.plane(1), s.plane(2), s.rows, s.rowMin, s.rowMax,
             s.colMin, s.colMax, table.data(), level);
    else
        drawI(ends[0], ends[1], ends[2], ends[3], s.plane(0), s.rows, s.rowMin, s.rowMax, s.colMin, s.colMax,
                  table.data(), level, s.numPlanes, s.planeStride);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput in(data, size);
    static void (*const members[])(FuzzInput &) = {
        run<double, double, ORNEX_Draw_AA_Line_I_D, ORNEX_Draw_AA_Line_RGB_D>,
        run<float, float, ORNEX_Draw_AA_Line_I_R, ORNEX_Draw_AA_Line_RGB_R>,
        run<uint8_t, int16_t, ORNEX_Draw_AA_Line_I_UI8, ORNEX_Draw_AA_Line_RGB_UI8>,
        run<int8_t, int16_t, ORNEX_Draw_AA_Line_I_I8, ORNEX_Draw_AA_Line_RGB_I8>,
        run<uint16_t, uint16_t, ORNEX_Draw_AA_Line_I_UI16, ORNEX_Draw_AA_Line_RGB_UI16>,
        run<int16_t, int16_t, ORNEX_Draw_AA_Line_I_I16, ORNEX_Draw_AA_Line_RGB_I16>};
    members[in.range(0, 5)](in);
    return 0;
}
