"""Many calls, refused ones among them, must neither keep their arguments
alive nor let the process grow."""

import sys

import numpy as np
import pytest

import ornex


def resident_bytes():
    with open("/proc/self/statm") as statm:
        return int(statm.read().split()[1]) * 4096


IMAGE = np.asfortranarray(np.random.default_rng(3).random((200, 240)))
CANVAS = np.zeros((200, 240, 3), np.uint8, order="F")
FONT = {c: (np.full((7, 5), 255, np.uint8), 0, 7, 6) for c in "0123456789"}


def round_of_calls():
    edges, _ = ornex.canny(IMAGE)
    ornex.hough(edges)
    transform = ornex.homography((0, 0, 200, 240), [(0, 5), (3, 230), (199, 239), (190, 0)], IMAGE.shape)
    ornex.warp(IMAGE, (150, 150), transform)
    ornex.block_matching(IMAGE, IMAGE)
    ornex.horn_schunck(IMAGE, IMAGE)
    ornex.fill_polygon(CANVAS, [(0, 0), (150, 30), (40, 200)], (1, 2, 3))
    ornex.draw_text(CANVAS.astype(np.float64, order="F"), "2026", (20, 5), FONT, 1.0)
    ornex.format_numbers("%d-%d", [1, 2])
    for refused in (lambda: ornex.canny(IMAGE, thresholds=(0.5, 0.1)),
                    lambda: ornex.fill_polygon(CANVAS, [(0, 0)], 1),
                    lambda: ornex.canny(CANVAS)):
        with pytest.raises((ValueError, TypeError)):
            refused()


@pytest.mark.skipif(not sys.platform.startswith("linux"), reason="reads /proc")
def test_no_growth_over_many_calls():
    references = [sys.getrefcount(IMAGE), sys.getrefcount(CANVAS), sys.getrefcount(FONT)]
    for _ in range(20):
        round_of_calls()
    before = resident_bytes()
    for _ in range(300):
        round_of_calls()
    # One round allocates about 4 MB of results; a leak of any of them would
    # add hundreds of megabytes.
    assert resident_bytes() - before < 8 * 2**20
    assert [sys.getrefcount(IMAGE), sys.getrefcount(CANVAS), sys.getrefcount(FONT)] == references
