// Block matching drivers, all sixteen, on images of up to 24 x 24.
// Kept in range, as the header asks: block 1..8 each way, overlap below the
// block, displacement 0..6; padded2 at its natural size plus the spare
// elements an odd overlap reads (zero); padded1 either its own buffer of the
// room the blocks read ((numRows + oR) x (numCols + oC)) or, with no
// overlap, the image itself; motion exactly one result per block of the
// grid the header's loop bounds give. Pixel values are finite, within +-64.
#include "fuzz_input.hpp"
#include "ornex_rt.h"

namespace {

template <class T>
using Driver = void (*)(const T *, const T *, T *, T *, T *, const int32_t *, const int32_t *, const int32_t *, int32_t,
                        int32_t, int32_t, int32_t, int32_t, int32_t);

// Each driver with whether its result is complex.
template <class T>
struct Member {
    Driver<T> run;
    bool complex;
};

const Member<double> doubleMembers[] = {
    {ORNEX_BlockMatching_Full_MAD_D, false},  {ORNEX_BlockMatching_Full_MAD_Z, true},
    {ORNEX_BlockMatching_Full_MSE_D, false},  {ORNEX_BlockMatching_Full_MSE_Z, true},
    {ORNEX_BlockMatching_3Step_MAD_D, false}, {ORNEX_BlockMatching_3Step_MAD_Z, true},
    {ORNEX_BlockMatching_3Step_MSE_D, false}, {ORNEX_BlockMatching_3Step_MSE_Z, true}};
const Member<float> floatMembers[] = {
    {ORNEX_BlockMatching_Full_MAD_R, false},  {ORNEX_BlockMatching_Full_MAD_C, true},
    {ORNEX_BlockMatching_Full_MSE_R, false},  {ORNEX_BlockMatching_Full_MSE_C, true},
    {ORNEX_BlockMatching_3Step_MAD_R, false}, {ORNEX_BlockMatching_3Step_MAD_C, true},
    {ORNEX_BlockMatching_3Step_MSE_R, false}, {ORNEX_BlockMatching_3Step_MSE_C, true}};

// Positions first, first + step, ... below limit: the driver's loop.
int32_t positions(int32_t first, int32_t step, int32_t limit)
{
    return first < limit ? (limit - first + step - 1) / step : 0;
}

template <class T>
void run(FuzzInput &in, const Member<T> &member)
{
    const int32_t rows = in.range(0, 24), cols = in.range(0, 24);
    const int32_t block[2] = {in.range(1, 8), in.range(1, 8)};
    const int32_t overlap[2] = {in.range(0, block[0] - 1), in.range(0, block[1] - 1)};
    const int32_t displacement[2] = {in.range(0, 6), in.range(0, 6)};
    const bool imageAsPadded1 = overlap[0] == 0 && overlap[1] == 0 && in.flag();

    const int32_t r0 = displacement[0] + overlap[0] / 2, c0 = displacement[1] + overlap[1] / 2;
    const int32_t p2Rows = rows + 2 * r0, p2Cols = cols + 2 * c0;
    const int32_t p1Rows = rows + overlap[0], p1Cols = cols + overlap[1];
    const int32_t sR = block[0] - overlap[0], sC = block[1] - overlap[1];
    const int32_t blocks = positions(c0, sC, p2Cols - c0 - sC + 1) * positions(r0, sR, p2Rows - r0 - sR + 1);

    std::vector<T> image1 = in.reals<T>(size_t(rows) * cols, 64), image2 = in.reals<T>(size_t(rows) * cols, 64);
    std::vector<T> padded1(size_t(p1Rows) * p1Cols);
    std::vector<T> padded2(size_t(p2Rows) * (p2Cols + overlap[1] % 2) + overlap[0] % 2);
    std::vector<T> motion(size_t(blocks) * (member.complex ? 2 : 1));
    T *p1 = imageAsPadded1 ? image1.data() : padded1.data();
    member.run(image1.data(), image2.data(), p1, padded2.data(), motion.data(), block, overlap, displacement, rows,
               cols, imageAsPadded1 ? rows : p1Rows, p1Cols, p2Rows, p2Cols);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput in(data, size);
    const int32_t pick = in.range(0, 15);
    if (pick < 8)
        run(in, doubleMembers[pick]);
    else
        run(in, floatMembers[pick - 8]);
    return 0;
}
