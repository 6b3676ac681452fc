#include <optional>

#include "arrays.hpp"
#include "bindings.hpp"
#include "ornex/motion.hpp"

namespace ornex::python {
namespace {

using namespace pybind11::literals;

// A (rows, cols) pair, or one number for both.
BlockMatchingOptions::Extent extent(const py::object &value, const char *argument)
{
    const py::array array = asArray(value, argument);
    requireValue(array.ndim() == 0 || (array.ndim() == 1 && array.shape(0) == 2), argument,
                 "must be one number or a (rows, cols) pair");
    const py::list items = py::module_::import("numpy").attr("ravel")(array).attr("tolist")();
    const auto rows = elementValue<int32_t>(items[0], argument);
    return {rows, items.size() == 2 ? elementValue<int32_t>(items[1], argument) : rows};
}

template <class T>
InputImage<T> secondFrame(const py::array &frame, const char *argument)
{
    if (!py::isinstance<py::array_t<T>>(frame)) {
        throw py::type_error(std::string(argument) + ": dtype " + dtypeName(frame) + " differs from the first frame's " +
                             dtypeName<T>());
    }
    return inputImage<T>(frame, argument, true);
}

template <class Compute>
py::object flowBetween(const py::object &first, const py::object &second, Compute compute)
{
    const py::array frame1 = asArray(first, "frame1"), frame2 = asArray(second, "frame2");
    return withElementType(Reals{}, frame1, "frame1", [&](auto element) -> py::object {
        using T = decltype(element);
        const InputImage<T> a = inputImage<T>(frame1, "frame1", true), b = secondFrame<T>(frame2, "frame2");
        VelocityField<T> field;
        {
            py::gil_scoped_release unlocked;
            field = compute(a.view, b.view);
        }
        return complexArray(field.u, field.v);
    });
}

py::object blockMatchingCall(const py::object &frame1, const py::object &frame2, const py::object &blockSize,
                             const py::object &overlap, const py::object &maxDisplacement, const std::string &search,
                             const std::string &cost)
{
    BlockMatchingOptions options;
    options.blockSize = extent(blockSize, "block_size");
    options.overlap = extent(overlap, "overlap");
    options.maxDisplacement = extent(maxDisplacement, "max_displacement");
    options.search = choice(search, {"full", "three_step"}, "search") == 0 ? BlockSearch::full : BlockSearch::threeStep;
    options.cost = choice(cost, {"absolute_difference", "squared_difference"}, "cost") == 0
                       ? BlockCost::absoluteDifference
                       : BlockCost::squaredDifference;
    const py::array a = asArray(frame1, "frame1"), b = asArray(frame2, "frame2");
    return withElementType(Reals{}, a, "frame1", [&](auto element) -> py::object {
        using T = decltype(element);
        const InputImage<T> first = inputImage<T>(a, "frame1", true), second = secondFrame<T>(b, "frame2");
        Image<MotionVector<T>> motion;
        {
            py::gil_scoped_release unlocked;
            motion = ornex::blockMatching(first.view, second.view, options);
        }
        Image<T> u(motion.rows(), motion.cols()), v(motion.rows(), motion.cols());
        for (size_t k = 0; k < motion.values().size(); ++k) {
            u.values()[k] = motion.values()[k].u;
            v.values()[k] = motion.values()[k].v;
        }
        return complexArray(u, v);
    });
}

py::object lucasKanadeGderCall(const py::sequence &frames, double threshold, bool normalFlow, double temporalSigma,
                               int32_t temporalLength, double spatialSigma, int32_t spatialLength, double windowSigma,
                               int32_t windowLength, const std::optional<py::dict> &filters)
{
    LucasKanadeGderOptions options{threshold,      normalFlow,   temporalSigma, temporalLength, spatialSigma,
                                   spatialLength,  windowSigma,  windowLength,  std::nullopt};
    if (filters) {
        auto taps = [&](const char *name) {
            requireValue(filters->contains(name), "filters", std::string("needs '") + name + "'");
            return doubles((*filters)[name]);
        };
        options.filters = LucasKanadeFilters{taps("temporal_derivative"), taps("temporal_smoothing"),
                                             taps("spatial_derivative"), taps("spatial_smoothing"), taps("window")};
    }
    requireValue(py::len(frames) > 0, "frames", "must not be empty");
    const py::array first = asArray(frames[0], "frames");
    return withElementType(Reals{}, first, "frames", [&](auto element) -> py::object {
        using T = decltype(element);
        std::vector<InputImage<T>> images;
        std::vector<ImageView<const T>> views;
        for (const py::handle frame : frames) {
            images.push_back(secondFrame<T>(asArray(frame, "frames"), "frames"));
            views.push_back(images.back().view);
        }
        VelocityField<T> field;
        {
            py::gil_scoped_release unlocked;
            field = ornex::lucasKanadeGder(views, options);
        }
        return complexArray(field.u, field.v);
    });
}

} // namespace

void addMotion(py::module_ &module)
{
    module.def("block_matching", &blockMatchingCall, "frame1"_a, "frame2"_a, py::kw_only(), "block_size"_a = 8,
               "overlap"_a = 0, "max_displacement"_a = 7, "search"_a = "full", "cost"_a = "absolute_difference",
               R"(Motion of each block of frame1 into frame2.

Blocks step by block_size - overlap from the top-left corner; blocks that do
not fit whole at the bottom and right are left out.

Parameters:
    frame1, frame2: float32 or float64 arrays of one shape (rows, cols).
    block_size: (rows, cols) of a block, or one number for both.
    overlap: rows and columns neighbouring blocks share, below block_size.
    max_displacement: the largest displacement searched, in pixels, each way.
    search: 'full' tries every displacement; 'three_step' a shrinking 3x3
        pattern.
    cost: 'absolute_difference' (mean absolute) or 'squared_difference'.

Returns:
    complex array of shape (rows // step_rows, cols // step_cols): u + v*1j,
    u across columns and v down rows, in pixels.

Example:
    >>> motion = ornex.block_matching(previous, current, block_size=16,
    ...                               search='three_step')
    >>> motion[0, 0].real, motion[0, 0].imag
)");

    module.def(
        "horn_schunck",
        [](const py::object &frame1, const py::object &frame2, double smoothness, std::optional<int32_t> maxIterations,
           std::optional<double> threshold, int32_t levels) {
            const HornSchunckOptions options{smoothness, maxIterations, threshold, levels};
            return flowBetween(frame1, frame2,
                               [&](auto a, auto b) { return ornex::hornSchunck(a, b, options); });
        },
        "frame1"_a, "frame2"_a, py::kw_only(), "smoothness"_a = 1.0, "max_iterations"_a = 10, "threshold"_a = py::none(),
        "levels"_a = 1,
        R"(Dense optical flow from frame1 to frame2 by Horn-Schunck sweeps from zero.

Parameters:
    frame1, frame2: float32 or float64 arrays of one shape (rows, cols).
    smoothness: added to Ix^2 + Iy^2 in every update; larger values give
        smoother fields. Positive.
    max_iterations: stop after this many sweeps (None: no limit).
    threshold: stop once no velocity changes by this much or more in a sweep
        (None: no such test). At least one of the two must be given.
    levels: coarse to fine over this many pyramid levels (each half the
        size of the one below, none under 8 pixels a side), the sweeps run
        on each; 1 works on the frames alone. Moves of more than a pixel or
        two need several. Positive.

Returns:
    complex array of shape (rows, cols): u + v*1j in pixels per frame, u
    across columns and v down rows, in the direction the content moved
    (content that moves right reads as positive u, down as positive v).

Example:
    >>> flow = ornex.horn_schunck(previous, current, max_iterations=50,
    ...                           threshold=1e-3, levels=4)
)");

    module.def(
        "lucas_kanade",
        [](const py::object &frame1, const py::object &frame2, double threshold, int32_t levels) {
            const LucasKanadeOptions options{threshold, levels};
            return flowBetween(frame1, frame2,
                               [&](auto a, auto b) { return ornex::lucasKanade(a, b, options); });
        },
        "frame1"_a, "frame2"_a, py::kw_only(), "threshold"_a = 0.0039, "levels"_a = 1,
        R"(Dense optical flow by Lucas-Kanade over 5x5 binomially weighted windows.

Parameters:
    frame1, frame2: float32 or float64 arrays of one shape (rows, cols).
    threshold: a pixel whose weighted gradient matrix has both eigenvalues
        at or above it gets the full velocity; only the larger, the flow
        along the dominant gradient; neither, zero. Positive.
    levels: coarse-to-fine pyramid levels, as for horn_schunck. Positive.

Returns:
    complex array of shape (rows, cols): u + v*1j in pixels per frame, in the
    direction the content moved (content that moves right reads as positive
    u, down as positive v).

Example:
    >>> flow = ornex.lucas_kanade(previous, current, threshold=0.01)
)");

    module.def("lucas_kanade_gder", &lucasKanadeGderCall, "frames"_a, py::kw_only(), "threshold"_a = 0.0039,
               "normal_flow"_a = false, "temporal_sigma"_a = 1.0, "temporal_length"_a = 3, "spatial_sigma"_a = 1.0,
               "spatial_length"_a = 5, "window_sigma"_a = 1.5, "window_length"_a = 5, "filters"_a = py::none(),
               R"(Dense optical flow at the middle of a short frame sequence by Lucas-Kanade
with Gaussian-derivative filters.

Parameters:
    frames: a sequence of float32 or float64 arrays of one shape (rows,
        cols), oldest first; the first max(temporal filter lengths) are used.
    threshold: both eigenvalues at or above it with a positive determinant
        give the full velocity; otherwise zero, or with normal_flow the flow
        along the eigenvector of the larger eigenvalue if that passes.
    temporal_sigma, spatial_sigma, window_sigma: widths in frames and pixels
        of the sampled Gaussians.
    temporal_length, spatial_length, window_length: their odd tap counts
        (at least 3).
    filters: a dict of the caller's own taps instead of the Gaussians, with
        keys 'temporal_derivative', 'temporal_smoothing',
        'spatial_derivative', 'spatial_smoothing' and 'window'.

Returns:
    complex array of shape (rows, cols): u + v*1j in pixels per frame, in the
    direction the content moves (content that moves right reads as positive
    u, down as positive v); the first window_length // 2 rows and columns
    are zero.

Example:
    >>> flow = ornex.lucas_kanade_gder([frame0, frame1, frame2],
    ...                                normal_flow=True)
)");
}

} // namespace ornex::python
