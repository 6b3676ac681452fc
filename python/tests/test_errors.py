"""Refused arguments: each raises its exception with the layer's message and
leaves the caller's array as it was."""

import numpy as np
import pytest

import ornex


def canvas(dtype=np.float64, shape=(20, 30), order="F"):
    return np.arange(np.prod(shape)).reshape(shape).astype(dtype).copy(order=order)


def read_only():
    image = canvas()
    image.flags.writeable = False
    return image


FLOAT = canvas()
FONT = {"a": (np.full((3, 2), 255, np.uint8), 0, 3, 3)}
SQUARE = [(2, 2), (2, 9), (9, 9), (9, 2)]

# (call on the image, exception, words of the message)
REFUSALS = [
    # element types each family does not take
    (lambda im: ornex.canny(canvas(np.uint8)), TypeError, "image: dtype uint8 is not supported (float64, float32)"),
    (lambda im: ornex.fill_polygon(canvas(np.int32), SQUARE, 1), TypeError, "dtype int32 is not supported"),
    (lambda im: ornex.draw_text(canvas(np.uint8), "a", (5, 5), FONT, 1), TypeError, "dtype uint8"),
    (lambda im: ornex.hough(FLOAT), TypeError, "edges: dtype float64 is not supported (uint8, bool)"),
    (lambda im: ornex.lucas_kanade(FLOAT, FLOAT.astype(np.float32)), TypeError, "frame2: dtype float32 differs"),
    (lambda im: ornex.format_numbers("%d", np.array([1], np.int64)), TypeError, "values: dtype int64"),
    (lambda im: ornex.draw_line([[0, 0]], (0, 0), (1, 1), 1), TypeError, "image: must be a numpy array"),
    (lambda im: ornex.fill_polygon(im, [(0.5, 1), (2, 3), (4, 5)], 1), TypeError, "vertices: must hold whole numbers"),
    (lambda im: ornex.warp(canvas(np.float32), (10, 10), ornex.homography((0, 0, 20, 30), SQUARE, (20, 30))),
     TypeError, "transform: made for the other precision"),
    # where the array must be drawn into in place
    (lambda im: ornex.draw_line(canvas(order="C"), (0, 0), (5, 5), 1), ValueError, "image: must be Fortran-ordered"),
    (lambda im: ornex.fill_polygon(im[:, ::2], SQUARE, 1), ValueError, "Fortran-ordered"),
    (lambda im: ornex.draw_circle(read_only(), (5, 5), 3, 1), ValueError, "image: is read-only"),
    # values the element type cannot hold, and plane counts
    (lambda im: ornex.draw_line(canvas(np.uint8), (0, 0), (5, 5), 300), ValueError, "value: out of range for uint8"),
    (lambda im: ornex.draw_line(canvas(np.int16), (0, 0), (5, 5), 1.5), ValueError, "value: must be whole numbers"),
    (lambda im: ornex.fill_polygon(im, SQUARE, [1, 2]), ValueError, "value: needs one value or one per plane (1)"),
    (lambda im: ornex.fill_polygon(im, [(1, 2, 3)] * 3, 1), ValueError, "vertices: must have shape (n, 2)"),
    (lambda im: ornex.draw_line(im, (0, 2**31), (1, 1), 1), ValueError, "start: coordinates must fit in 32 bits"),
    # checks of the C++ layer, with its messages
    (lambda im: ornex.fill_polygon(im, SQUARE[:2], 1), ValueError, "vertices"),
    (lambda im: ornex.fill_polygon(im, SQUARE, 1, opacity=1.5), ValueError, "opacity"),
    (lambda im: ornex.draw_circle(im, (5, 5), 0, 1), ValueError, "radius: must be positive"),
    (lambda im: ornex.draw_line(im, (0, 0), (0, 40000), 1), ValueError, "to: must lie within 32000 rows and columns"),
    (lambda im: ornex.canny(FLOAT, thresholds=(0.3, 0.1)), ValueError, "thresholds: low must not exceed high"),
    (lambda im: ornex.canny(canvas(shape=(20, 30, 3))), ValueError, "image: must have shape (rows, cols)"),
    (lambda im: ornex.hough(canvas(np.uint8), theta_resolution=0.7), ValueError,
     "thetaResolution: must divide 90 degrees"),
    (lambda im: ornex.homography((0, 0, 20, 30), [(0, 0), (1, 1), (2, 2), (9, 0)], (20, 30)), ValueError,
     "to: must be a convex quadrilateral with its corners going round"),
    (lambda im: ornex.horn_schunck(FLOAT, FLOAT, max_iterations=None), ValueError,
     "options: needs an iteration limit or a threshold"),
    (lambda im: ornex.lucas_kanade(FLOAT, FLOAT, levels=0), ValueError, "levels: must be positive"),
    (lambda im: ornex.block_matching(FLOAT, FLOAT, overlap=8), ValueError, "overlap: must be smaller than the block"),
    (lambda im: ornex.shear(FLOAT, "horizontal", float("inf")), ValueError, "amount: must be finite"),
    # names the module takes
    (lambda im: ornex.block_matching(FLOAT, FLOAT, search="diagonal"), ValueError,
     "search: must be one of 'full', 'three_step'"),
    (lambda im: ornex.shear(FLOAT, "sideways", 0.5), ValueError, "direction: must be one of"),
    (lambda im: ornex.warp(FLOAT, (5, 5), ornex.homography((0, 0, 20, 30), SQUARE, (20, 30)), interpolation="cubic"),
     ValueError, "interpolation: must be one of 'nearest', 'bilinear', 'bicubic'"),
    # text
    (lambda im: ornex.draw_text(im, "a\u20ac", (5, 5), FONT, 1.0), ValueError, "text: has characters beyond U+00FF"),
    (lambda im: ornex.draw_text(im, "ab", (5, 5), FONT, 1.0), ValueError, "glyphs: has no glyph for 'b'"),
    (lambda im: ornex.draw_text(im, "a", (5, 5), lambda c: (np.zeros(3, np.uint8), 0, 0, 1), 1.0), ValueError,
     "bitmap must be a (height, width) uint8 array"),
    (lambda im: ornex.format_numbers("%f", [1]), ValueError, "format"),
]


@pytest.mark.parametrize("call, error, words", REFUSALS, ids=[words for _, _, words in REFUSALS])
def test_refused_with_its_message_and_nothing_written(call, error, words):
    image = canvas()
    before = image.copy()
    with pytest.raises(error) as raised:
        call(image)
    assert words in str(raised.value)
    assert np.array_equal(image, before)


def test_a_refused_glyph_leaves_earlier_characters_undrawn():
    image = canvas()
    before = image.copy()
    with pytest.raises(ValueError):
        ornex.draw_text(image, "aaab", (10, 2), FONT, 1.0)
    assert np.array_equal(image, before)
