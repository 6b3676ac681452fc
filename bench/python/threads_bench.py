"""Four frames processed on one thread, then on two: the module releases the
GIL inside every kernel, so two threads should take about half the time on a
machine with two free cores.
Usage: python3 bench/python/threads_bench.py [repeats]"""

import statistics
import sys
import time
from concurrent.futures import ThreadPoolExecutor

import numpy as np

import ornex


def frame(seed, rows=720, cols=1280):
    y, x = np.mgrid[0:rows, 0:cols]
    noise = np.random.default_rng(seed).random((rows, cols))
    image = 0.5 + 0.3 * np.sin(x / 23.0 + seed) * np.cos(y / 17.0) + 0.1 * noise
    return np.asfortranarray(image.astype(np.float32))


def process(image):
    edges, _ = ornex.canny(image, sigma=1.5)
    ornex.hough(edges, dtype=np.float32)
    rows, cols = image.shape
    transform = ornex.homography((0, 0, rows, cols), [(20, 0), (0, cols - 1), (rows - 1, cols - 30), (rows - 10, 5)],
                                 image.shape, dtype=np.float32)
    ornex.warp(image, image.shape, transform, interpolation="bicubic")


def timed(frames, threads):
    start = time.perf_counter()
    with ThreadPoolExecutor(max_workers=threads) as pool:
        list(pool.map(process, frames))
    return time.perf_counter() - start


def main():
    repeats = int(sys.argv[1]) if len(sys.argv) > 1 else 7
    frames = [frame(seed) for seed in range(4)]
    timed(frames, 2)
    one, two = [], []
    for _ in range(repeats):
        one.append(timed(frames, 1))
        two.append(timed(frames, 2))
    a, b = statistics.median(one), statistics.median(two)
    print(f"4 frames of 720x1280 float32 (Canny, Hough, bicubic warp), median of {repeats}:")
    print(f"  one thread   {a * 1000:8.1f} ms")
    print(f"  two threads  {b * 1000:8.1f} ms")
    print(f"  two / one    {b / a:8.2f}")


if __name__ == "__main__":
    main()
