#include "analysis.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace ornex::tool {

double median(std::vector<double> values)
{
    if (values.empty()) {
        return 0;
    }
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

std::vector<HoughPeak> strongestLines(const HoughTransform<double> &hough, size_t count)
{
    const Image<double> &votes = hough.accumulator;
    std::vector<HoughPeak> peaks;
    for (int32_t t = 0; t < votes.cols(); ++t) {
        for (int32_t r = 0; r < votes.rows(); ++r) {
            const double v = votes(r, t);
            bool largest = v > 0;
            // Ties go to the first cell in storage order.
            for (int32_t dt = -4; dt <= 4 && largest; ++dt) {
                for (int32_t dr = -4; dr <= 4 && largest; ++dr) {
                    const int32_t tt = t + dt, rr = r + dr;
                    if ((dt != 0 || dr != 0) && tt >= 0 && tt < votes.cols() && rr >= 0 && rr < votes.rows()) {
                        const bool later = dt > 0 || (dt == 0 && dr > 0);
                        largest = votes(rr, tt) < v || (votes(rr, tt) == v && later);
                    }
                }
            }
            if (largest) {
                peaks.push_back({hough.theta[t], hough.rho[r], v});
            }
        }
    }
    std::stable_sort(peaks.begin(), peaks.end(), [](const HoughPeak &a, const HoughPeak &b) { return a.votes > b.votes; });
    peaks.resize(std::min(peaks.size(), count));
    return peaks;
}

std::array<double, 2> lineParameters(Point a, Point b)
{
    double theta = std::atan2(-double(b.col - a.col), double(b.row - a.row));
    if (theta >= std::numbers::pi / 2) {
        theta -= std::numbers::pi;
    } else if (theta < -std::numbers::pi / 2) {
        theta += std::numbers::pi;
    }
    return {theta, a.col * std::cos(theta) + a.row * std::sin(theta)};
}

FlowSummary summarizeFlow(const VelocityField<double> &flow)
{
    std::vector<double> u, v;
    const int32_t rows = flow.u.rows(), cols = flow.u.cols(), border = 8;
    for (int32_t c = border; c < cols - border; ++c) {
        for (int32_t r = border; r < rows - border; ++r) {
            if (std::hypot(flow.u(r, c), flow.v(r, c)) > 0.2) {
                u.push_back(flow.u(r, c));
                v.push_back(flow.v(r, c));
            }
        }
    }
    return {median(u), median(v), u.size()};
}

Picture edgePicture(const Image<uint8_t> &edges)
{
    Picture picture(edges.rows(), edges.cols(), 1);
    std::transform(edges.values().begin(), edges.values().end(), picture.values().begin(),
                   [](uint8_t e) { return e != 0 ? 1.0 : 0.0; });
    return picture;
}

} // namespace ornex::tool
