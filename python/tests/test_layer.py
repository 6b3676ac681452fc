"""Every function against the C++ layer: the cases program runs the layer on
fixed inputs and writes them with its results; here the module makes the
same calls, from arrays in each memory order, and must give the same bits."""

import json
import os
import re
import tracemalloc
from pathlib import Path

import numpy as np
import pytest

import ornex

folder = Path(os.environ.get("ORNEX_LAYER_CASES", "/nonexistent"))
pytestmark = pytest.mark.skipif(
    not (folder / "cases.json").exists(),
    reason="set ORNEX_LAYER_CASES to the folder the ornex_layer_cases program wrote",
)


def load_cases():
    if not (folder / "cases.json").exists():
        return []
    cases = json.loads((folder / "cases.json").read_text())
    counts = {}
    for case in cases:
        counts[case["function"]] = counts.get(case["function"], 0) + 1
        case["id"] = f"{case['function']}-{counts[case['function']]}"
    return cases


CASES = load_cases()


def in_layout(array, layout):
    """The same values as a Fortran array, a C-ordered one, or a strided
    view into a larger buffer."""
    if layout == "fortran" or array.ndim < 2:
        return array
    if layout == "c_order":
        copy = np.ascontiguousarray(array)
        assert not copy.flags.f_contiguous
        return copy
    wider = np.zeros((array.shape[0] * 2,) + array.shape[1:], array.dtype)
    view = wider[::2]
    view[...] = array
    assert not view.flags.c_contiguous and not view.flags.f_contiguous
    return view


def resolve(value, layout):
    if isinstance(value, list):
        return [resolve(item, layout) for item in value]
    if not isinstance(value, dict):
        return value
    if "npy" in value:
        return in_layout(np.load(folder / value["npy"]), layout)
    if "homography" in value:
        source, to, shape, dtype = value["homography"]
        return ornex.homography(source, to, shape, dtype=dtype)
    if "font" in value:
        return {c: (np.load(folder / g[0]["npy"]), g[1], g[2], g[3]) for c, g in value["font"].items()}
    return {key: resolve(item, layout) for key, item in value.items()}


def assert_same(actual, expected):
    if isinstance(expected, np.ndarray):
        assert isinstance(actual, np.ndarray)
        assert actual.dtype == expected.dtype and actual.shape == expected.shape
        # Same bits: NaN where NaN, -0.0 where -0.0.
        assert actual.tobytes(order="F") == expected.tobytes(order="F")
    elif isinstance(expected, (list, tuple)):
        assert len(actual) == len(expected)
        for a, e in zip(actual, expected):
            assert_same(a, e)
    else:
        assert actual == expected


def expected_of(case):
    return resolve(case["result"], "fortran")


@pytest.mark.parametrize("layout", ["fortran", "c_order", "strided"])
@pytest.mark.parametrize("case", CASES, ids=[case["id"] for case in CASES])
def test_same_results_as_the_cpp_layer(case, layout):
    function = getattr(ornex, case["function"])
    args = resolve(case["args"], layout)
    kwargs = resolve(case["kwargs"], "fortran")
    expected = expected_of(case)
    target = case["draws_into"]
    if target < 0:
        result = function(*args, **kwargs)
        if case["function"] == "homography":
            result = np.concatenate([m.ravel(order="F") for m in result.matrices]).astype(expected.dtype)
        assert_same(result, expected)
        return
    image = args[target]
    before = image.copy()
    if layout != "fortran":
        # A copy would lose the drawing: refused, and nothing written.
        with pytest.raises(ValueError, match="Fortran-ordered"):
            function(*args, **kwargs)
        assert_same(image, before)
        return
    returned = function(*args, **kwargs)
    if isinstance(expected, list):
        expected, pen = expected
        assert returned == tuple(pen)
    else:
        assert returned is None
    assert_same(image, expected)


def test_every_function_has_a_case():
    listed = {case["function"] for case in CASES}
    functions = {name for name in dir(ornex) if not name.startswith("_") and callable(getattr(ornex, name))}
    assert functions - {"ProjectiveTransform"} == listed


def numpy_peak_bytes(call):
    """The most memory numpy held at once during call (numpy reports its
    arrays to tracemalloc; the module's C++ results are not counted)."""
    tracemalloc.start()
    try:
        call()
        return tracemalloc.get_traced_memory()[1]
    finally:
        tracemalloc.stop()


def test_fortran_input_is_read_in_place_and_other_orders_copied_once():
    image = np.random.default_rng(1).random((1000, 800))
    size = image.nbytes
    fortran = np.asfortranarray(image)
    assert numpy_peak_bytes(lambda: ornex.canny(fortran)) < size / 10
    assert size <= numpy_peak_bytes(lambda: ornex.canny(image)) < 2 * size


def test_version_is_the_librarys_and_the_packages():
    from importlib.metadata import PackageNotFoundError, version

    assert re.fullmatch(r"\d+\.\d+\.\d+\.\d+", ornex.__version__)
    try:
        assert version("ornex") == ornex.__version__
    except PackageNotFoundError:
        pytest.skip("the module is not installed as a package here")
