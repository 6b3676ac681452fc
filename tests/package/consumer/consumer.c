#include <stdio.h>

#include <ornex_rt.h>

int main(void)
{
    /* 4x5 region, one column per line; the 2x2 block, columns (1, 2) and
       (3, 4), sits at row 1, column 2. */
    const double region[20] = {
        9, 9, 9, 9,
        9, 9, 9, 9,
        9, 1, 2, 9,
        9, 3, 4, 9,
        9, 9, 9, 9,
    };
    const double block[4] = {1, 2, 3, 4};
    int32_t bestCol = -1, bestRow = -1;
    ORNEX_SearchMethod_Full_MAD_D(block, region, 2, 4, 2, 2, 5, 4, &bestCol, &bestRow);
    printf("%d %d %s\n", (int)bestCol, (int)bestRow, ornex_rt_version);
    return 0;
}
