// ORNEX_ClipLine on any segment: end-points near the rectangle or anywhere in
// int32 (the header says which ones count as missing), and a rectangle,
// first bound not above the second, within +-40000.
// Besides the sanitizers this checks what the header promises: a segment
// that is kept ends with both end-points inside the rectangle.
#include "fuzz_input.hpp"
#include "ornex_rt.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput in(data, size);
    int32_t rect[4];
    rect[0] = in.range(-40000, 40000);
    rect[1] = in.range(rect[0], 40000);
    rect[2] = in.range(-40000, 40000);
    rect[3] = in.range(rect[2], 40000);
    int32_t points[4];
    for (int k = 0; k < 4; ++k) {
        const int32_t *bounds = rect + (k % 2) * 2;
        points[k] = in.flag() ? in.raw<int32_t>() : in.range(bounds[0] - 64, bounds[1] + 64);
    }
    if (ORNEX_ClipLine(points, points + 2, rect) == 1) {
        for (int k = 0; k < 4; ++k) {
            const int32_t *bounds = rect + (k % 2) * 2;
            if (points[k] < bounds[0] || points[k] > bounds[1])
                __builtin_trap();
        }
    }
    return 0;
}
