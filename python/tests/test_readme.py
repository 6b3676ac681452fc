"""The README's Python example runs as it stands and finds what it draws."""

import contextlib
import io
import math
import re
from pathlib import Path

readme = Path(__file__).resolve().parents[2] / "README.md"


def side_line(first, second):
    """(rho, theta in degrees) of the line through two (row, col) points,
    with rho = col cos(theta) + row sin(theta) and theta in [-90, 90)."""
    (r1, c1), (r2, c2) = first, second
    theta = math.atan2(-(c2 - c1), r2 - r1)
    rho = c1 * math.cos(theta) + r1 * math.sin(theta)
    degrees = math.degrees(theta)
    while degrees >= 90:
        degrees, rho = degrees - 180, -rho
    while degrees < -90:
        degrees, rho = degrees + 180, -rho
    return rho, degrees


def test_the_readme_example_finds_the_triangle_sides():
    blocks = re.findall(r"```python\n(.*?)```", readme.read_text(), re.S)
    assert len(blocks) == 1
    printed = io.StringIO()
    namespace = {}
    with contextlib.redirect_stdout(printed):
        exec(blocks[0], namespace)
    assert "edge pixels" in printed.getvalue()
    corners = [(30, 40), (200, 60), (120, 290)]
    sides = sorted(side_line(corners[k], corners[(k + 1) % 3]) for k in range(3))
    found = sorted((float(rho), math.degrees(theta)) for rho, theta in namespace["peaks"])
    for (rho, degrees), (want_rho, want_degrees) in zip(found, sides):
        assert abs(degrees - want_degrees) <= 1.0 and abs(rho - want_rho) <= 1.5
    assert (namespace["picture"][..., 0] != namespace["image"]).any()
