"""The module releases the GIL while a kernel runs: frames processed on two
threads must come out exactly as on one."""

from concurrent.futures import ThreadPoolExecutor

import numpy as np

import ornex


def frame(seed):
    rng = np.random.default_rng(seed)
    rows, cols = np.mgrid[0:120, 0:160]
    image = 0.5 + 0.4 * np.sin(rows / (7 + seed)) * np.cos(cols / 9) + 0.05 * rng.random((120, 160))
    return np.asfortranarray(image.astype(np.float32))


def process(image):
    edges, magnitude = ornex.canny(image, sigma=1.2)
    accumulator, _, _ = ornex.hough(edges)
    transform = ornex.homography((0, 0, 120, 160), [(4, 0), (0, 150), (119, 159), (110, 8)], image.shape,
                                 dtype=np.float32)
    warped = ornex.warp(image, image.shape, transform, interpolation="bicubic")
    flow = ornex.lucas_kanade(image, np.roll(image, 1, axis=1))
    drawn = np.zeros(image.shape, np.uint8, order="F")
    ornex.fill_antialiased_polygon(drawn, [(10, 10), (100, 30), (60, 150)], 200)
    return [edges, magnitude, accumulator, warped, flow, drawn]


def test_two_threads_give_the_results_of_one():
    frames = [frame(seed) for seed in range(8)]
    alone = [process(image) for image in frames]
    with ThreadPoolExecutor(max_workers=2) as pool:
        together = list(pool.map(process, frames))
    for expected, actual in zip(alone, together):
        for a, b in zip(expected, actual):
            assert a.tobytes() == b.tobytes()
