// Polygon fill, plain and anti-aliased, every element type, one plane set
// or RGB.
// Kept in range, as the header asks: 1..8 vertices, either near the image
// or anywhere within +-16000 (so rows stay within +-524287 and every edge
// within 32767 in each direction, the anti-aliased fill's intended range);
// edgeBuffer 16N and sortRecords 6N int32; the clip rectangle inside the
// image; opacity and the 49-entry coverage table on 0..1 (Q10 0..1024 for
// integer and logical images).
#include "draw_scene.hpp"
#include "ornex_rt.h"

namespace {

template <class T, auto plainI, auto plainRgb, auto smoothI, auto smoothRgb>
void run(FuzzInput &in)
{
    using W = typename DrawScene<T>::Weight;
    const bool rgb = in.flag(), smooth = in.flag(), far = in.flag();
    DrawScene<T> s(in, rgb);
    const int32_t numValues = in.range(2, 17), edges = numValues / 2;
    std::vector<int32_t> vertices(static_cast<size_t>(numValues));
    for (size_t k = 0; k < vertices.size(); ++k)
        vertices[k] = far ? in.range(-16000, 16000) : in.range(-8, (k % 2 ? s.cols : s.rows) + 8);
    std::vector<W> weights(49);
    for (W &w : weights)
        w = s.weight(in);
    std::vector<int32_t> edgeBuffer(size_t(16 * edges)), sortRecords(size_t(6 * edges));
    int32_t *e = edgeBuffer.data(), *sr = sortRecords.data();
    const int32_t *v = vertices.data();
    if (smooth && rgb)
        smoothRgb(e, numValues, v, sr, s.plane(0), s.plane(1), s.plane(2), s.rowMin, s.rowMax, s.colMin, s.colMax,
                  s.rows, s.colour.data(), s.opacity, weights.data());
    else if (smooth)
        smoothI(e, numValues, v, sr, s.plane(0), s.rowMin, s.rowMax, s.colMin, s.colMax, s.rows, s.colour.data(),
                s.opacity, weights.data(), s.numPlanes, s.planeStride);
    else if (rgb)
        plainRgb(e, numValues, v, sr, s.plane(0), s.plane(1), s.plane(2), s.rowMin, s.rowMax, s.colMin, s.colMax,
                 s.rows, s.colour.data(), s.opacity);
    else
        plainI(e, numValues, v, sr, s.plane(0), s.rowMin, s.rowMax, s.colMin, s.colMax, s.rows, s.colour.data(),
               s.opacity, s.numPlanes, s.planeStride);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput in(data, size);
    static void (*const members[])(FuzzInput &) = {
        run<double, ORNEX_FillOnePolygon_I_D, ORNEX_FillOnePolygon_RGB_D, ORNEX_FillOnePolygon_AA_I_D,
            ORNEX_FillOnePolygon_AA_RGB_D>,
        run<float, ORNEX_FillOnePolygon_I_R, ORNEX_FillOnePolygon_RGB_R, ORNEX_FillOnePolygon_AA_I_R,
            ORNEX_FillOnePolygon_AA_RGB_R>,
        run<uint8_t, ORNEX_FillOnePolygon_I_Bool, ORNEX_FillOnePolygon_RGB_Bool, ORNEX_FillOnePolygon_AA_I_Bool,
            ORNEX_FillOnePolygon_AA_RGB_Bool>,
        run<uint8_t, ORNEX_FillOnePolygon_I_UI8, ORNEX_FillOnePolygon_RGB_UI8, ORNEX_FillOnePolygon_AA_I_UI8,
            ORNEX_FillOnePolygon_AA_RGB_UI8>,
        run<int8_t, ORNEX_FillOnePolygon_I_I8, ORNEX_FillOnePolygon_RGB_I8, ORNEX_FillOnePolygon_AA_I_I8,
            ORNEX_FillOnePolygon_AA_RGB_I8>,
        run<uint16_t, ORNEX_FillOnePolygon_I_UI16, ORNEX_FillOnePolygon_RGB_UI16, ORNEX_FillOnePolygon_AA_I_UI16,
            ORNEX_FillOnePolygon_AA_RGB_UI16>,
        run<int16_t, ORNEX_FillOnePolygon_I_I16, ORNEX_FillOnePolygon_RGB_I16, ORNEX_FillOnePolygon_AA_I_I16,
            ORNEX_FillOnePolygon_AA_RGB_I16>};
    members[in.range(0, 6)](in);
    return 0;
}
