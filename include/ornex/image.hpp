#pragma once

// Images for the C++ layer: column-major like the library itself. Element
// (r, c) of plane p lies at data[p * rows * cols + c * rows + r].

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace ornex {

// A view of pixels that somebody else owns.
template <class T>
struct ImageView {
    T *data = nullptr;
    int32_t rows = 0;
    int32_t cols = 0;
    int32_t planes = 1;

    ptrdiff_t planeSize() const { return static_cast<ptrdiff_t>(rows) * cols; }
    size_t size() const { return static_cast<size_t>(planeSize()) * static_cast<size_t>(planes); }
    bool empty() const { return data == nullptr || rows <= 0 || cols <= 0 || planes <= 0; }
    T &operator()(int32_t r, int32_t c, int32_t p = 0) const
    {
        return data[p * planeSize() + static_cast<ptrdiff_t>(c) * rows + r];
    }
    // One plane as an image of its own.
    ImageView plane(int32_t p) const { return {data + p * planeSize(), rows, cols, 1}; }
    template <class U>
    bool sameShape(const ImageView<U> &other) const
    {
        return rows == other.rows && cols == other.cols && planes == other.planes;
    }
    operator ImageView<const T>() const
        requires(!std::is_const_v<T>)
    {
        return {data, rows, cols, planes};
    }
};

// An image that owns its pixels.
template <class T>
class Image {
public:
    Image() = default;
    Image(int32_t rows, int32_t cols, int32_t planes = 1, T fill = T{})
        : rows_(rows), cols_(cols), planes_(planes), values_(checkedSize(rows, cols, planes), fill)
    {
    }

    int32_t rows() const { return rows_; }
    int32_t cols() const { return cols_; }
    int32_t planes() const { return planes_; }
    T *data() { return values_.data(); }
    const T *data() const { return values_.data(); }
    std::vector<T> &values() { return values_; }
    const std::vector<T> &values() const { return values_; }

    ImageView<T> view() { return {values_.data(), rows_, cols_, planes_}; }
    ImageView<const T> view() const { return {values_.data(), rows_, cols_, planes_}; }
    operator ImageView<T>() { return view(); }
    operator ImageView<const T>() const { return view(); }

    T &operator()(int32_t r, int32_t c, int32_t p = 0) { return view()(r, c, p); }
    const T &operator()(int32_t r, int32_t c, int32_t p = 0) const { return view()(r, c, p); }

private:
    static size_t checkedSize(int32_t rows, int32_t cols, int32_t planes)
    {
        if (rows < 0 || cols < 0 || planes < 0) {
            throw std::invalid_argument("Image: rows, cols and planes must not be negative");
        }
        return static_cast<size_t>(rows) * static_cast<size_t>(cols) * static_cast<size_t>(planes);
    }

    int32_t rows_ = 0, cols_ = 0, planes_ = 0;
    std::vector<T> values_;
};

// Three separate planes of one shape.
template <class T>
struct RgbView {
    ImageView<T> red, green, blue;

    int32_t rows() const { return red.rows; }
    int32_t cols() const { return red.cols; }
};

// Copies a row-major image (a cv::Mat's data and step, a C-ordered numpy
// array's buffer and strides[0]) into a column-major Image: rows lie
// rowStride bytes apart (0: packed), and within a row each pixel's planes
// follow each other (plane k is channel k; OpenCV's colour images are BGR).
//   cv::Mat frame = cv::imread("frame.png", cv::IMREAD_GRAYSCALE);
//   frame.convertTo(frame, CV_32F, 1.0 / 255);
//   auto image = ornex::fromRowMajor(frame.ptr<float>(), frame.rows, frame.cols, 1, frame.step);
template <class T>
Image<T> fromRowMajor(const T *data, int32_t rows, int32_t cols, int32_t planes = 1, size_t rowStride = 0)
{
    Image<T> image(rows, cols, planes);
    const size_t pixelsBytes = static_cast<size_t>(cols) * static_cast<size_t>(planes) * sizeof(T);
    const size_t stride = rowStride == 0 ? pixelsBytes : rowStride;
    if (rows > 0 && stride < pixelsBytes) {
        throw std::invalid_argument("rowStride: shorter than a row");
    }
    const auto *bytes = reinterpret_cast<const unsigned char *>(data);
    for (int32_t r = 0; r < rows; ++r) {
        const T *row = reinterpret_cast<const T *>(bytes + static_cast<size_t>(r) * stride);
        for (int32_t c = 0; c < cols; ++c) {
            for (int32_t p = 0; p < planes; ++p) {
                image(r, c, p) = row[static_cast<size_t>(c) * static_cast<size_t>(planes) + static_cast<size_t>(p)];
            }
        }
    }
    return image;
}

// The other way: writes the image into a row-major buffer laid out as
// above, which must hold rows rows of rowStride bytes (0: packed).
//   cv::Mat out(image.rows(), image.cols(), CV_32FC1);
//   ornex::toRowMajor(image.view(), out.ptr<float>(), out.step);
template <class T>
void toRowMajor(std::type_identity_t<ImageView<const T>> image, T *data, size_t rowStride = 0)
{
    const size_t pixelsBytes = static_cast<size_t>(image.cols) * static_cast<size_t>(image.planes) * sizeof(T);
    const size_t stride = rowStride == 0 ? pixelsBytes : rowStride;
    if (image.rows > 0 && stride < pixelsBytes) {
        throw std::invalid_argument("rowStride: shorter than a row");
    }
    auto *bytes = reinterpret_cast<unsigned char *>(data);
    for (int32_t r = 0; r < image.rows; ++r) {
        T *row = reinterpret_cast<T *>(bytes + static_cast<size_t>(r) * stride);
        for (int32_t c = 0; c < image.cols; ++c) {
            for (int32_t p = 0; p < image.planes; ++p) {
                row[static_cast<size_t>(c) * static_cast<size_t>(image.planes) + static_cast<size_t>(p)] =
                    image(r, c, p);
            }
        }
    }
}

// A (row, column) position.
struct Point {
    int32_t row = 0;
    int32_t col = 0;
    bool operator==(const Point &) const = default;
};

namespace detail {

[[noreturn]] inline void fail(const std::string &argument, const std::string &constraint)
{
    throw std::invalid_argument(argument + ": " + constraint);
}

inline void require(bool holds, const char *argument, const char *constraint)
{
    if (!holds) {
        fail(argument, constraint);
    }
}

template <class T>
void requireImage(const ImageView<T> &image, const char *argument)
{
    require(!image.empty(), argument, "must be a non-empty image");
}

template <class T>
void requireRgb(const RgbView<T> &image, const char *argument)
{
    requireImage(image.red, argument);
    require(image.red.planes == 1 && image.green.sameShape(image.red) && image.blue.sameShape(image.red) &&
                image.green.data != nullptr && image.blue.data != nullptr,
            argument, "needs three one-plane images of the same size");
}

} // namespace detail
} // namespace ornex
