#include "flow_files.hpp"

#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "tool_error.hpp"

namespace ornex::tool {
namespace {

bool endsWith(const std::string &path, const std::string &extension)
{
    if (path.size() <= extension.size()) {
        return false;
    }
    std::string tail = path.substr(path.size() - extension.size());
    for (char &c : tail) {
        c = char(std::tolower(static_cast<unsigned char>(c)));
    }
    return tail == extension;
}

void putLittleEndian(std::string &bytes, uint32_t value)
{
    for (int k = 0; k < 4; ++k) {
        bytes += char((value >> (8 * k)) & 0xff);
    }
}

void putFloat(std::string &bytes, double value)
{
    const float single = static_cast<float>(value);
    uint32_t bits = 0;
    std::memcpy(&bits, &single, sizeof bits);
    putLittleEndian(bytes, bits);
}

// u and v of every pixel, row by row.
void putFieldRowMajor(std::string &bytes, const VelocityField<double> &flow)
{
    for (int32_t r = 0; r < flow.u.rows(); ++r) {
        for (int32_t c = 0; c < flow.u.cols(); ++c) {
            putFloat(bytes, flow.u(r, c));
            putFloat(bytes, flow.v(r, c));
        }
    }
}

// Through a temporary file in the same folder, renamed at the end.
void writeWhole(const std::string &path, const std::string &bytes)
{
    const std::string temporary = path + ".partial";
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), std::streamsize(bytes.size()));
        out.close();
        if (!out) {
            const std::string why = std::strerror(errno);
            std::remove(temporary.c_str());
            throw ToolError("cannot write '" + path + "': " + why);
        }
    }
    std::error_code error;
    std::filesystem::rename(temporary, path, error);
    if (error) {
        std::remove(temporary.c_str());
        throw ToolError("cannot write '" + path + "': " + error.message());
    }
}

std::string floBytes(const VelocityField<double> &flow)
{
    std::string bytes;
    putFloat(bytes, 202021.25);
    putLittleEndian(bytes, uint32_t(flow.u.cols()));
    putLittleEndian(bytes, uint32_t(flow.u.rows()));
    putFieldRowMajor(bytes, flow);
    return bytes;
}

std::string npyBytes(const VelocityField<double> &flow)
{
    std::string header = "{'descr': '<f4', 'fortran_order': False, 'shape': (" + std::to_string(flow.u.rows()) + ", " +
                         std::to_string(flow.u.cols()) + ", 2), }";
    // Magic, version and length take 10 bytes; the header is padded with
    // spaces and ends in a newline so that the data starts 64-byte aligned.
    const size_t total = (10 + header.size() + 1 + 63) / 64 * 64;
    header.append(total - 10 - header.size() - 1, ' ');
    header += '\n';
    std::string bytes = "\x93NUMPY\x01";
    bytes += '\0';
    bytes += char(header.size() & 0xff);
    bytes += char(header.size() >> 8);
    bytes += header;
    putFieldRowMajor(bytes, flow);
    return bytes;
}

} // namespace

FlowFile flowFileFormat(const std::string &path)
{
    if (endsWith(path, ".flo")) {
        return FlowFile::flo;
    }
    if (endsWith(path, ".npy")) {
        return FlowFile::npy;
    }
    throw ToolError("--save-flow: expects a file name ending in .flo or .npy, got '" + path + "'");
}

void writeFlow(const std::string &path, const VelocityField<double> &flow)
{
    writeWhole(path, flowFileFormat(path) == FlowFile::flo ? floBytes(flow) : npyBytes(flow));
}

void requireCsvName(const std::string &path)
{
    if (!endsWith(path, ".csv")) {
        throw ToolError("--save-vectors: expects a file name ending in .csv, got '" + path + "'");
    }
}

void writeBlockVectors(const std::string &path, const Image<MotionVector<double>> &vectors,
                       BlockMatchingOptions::Extent blockSize, BlockMatchingOptions::Extent step)
{
    requireCsvName(path);
    std::string text = "row,col,u,v\n";
    char line[128];
    for (int32_t br = 0; br < vectors.rows(); ++br) {
        for (int32_t bc = 0; bc < vectors.cols(); ++bc) {
            const double row = br * step.rows + (blockSize.rows - 1) / 2.0;
            const double col = bc * step.cols + (blockSize.cols - 1) / 2.0;
            std::snprintf(line, sizeof line, "%g,%g,%g,%g\n", row, col, vectors(br, bc).u, vectors(br, bc).v);
            text += line;
        }
    }
    writeWhole(path, text);
}

} // namespace ornex::tool
