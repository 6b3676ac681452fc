// ORNEX_snprintf in number mode, every type code, into a destination of
// destinationSize bytes.
// Kept in range, as the header asks: a writable, terminated format whose
// conversions all suit the values as the header widens them (floating
// codes: a e f g; the others: c d i o u x), with flags, width and precision
// but no '*' (which would take a second value), plus "%%" and a bare "%n";
// room for the whole format when it holds no '%' (it is then copied whole);
// exactly valueLimit + 1 values, the most any format can take. The format
// must come back unchanged.
#include "fuzz_input.hpp"
#include "ornex_rt.h"

namespace {

size_t elementSize(int32_t typeCode)
{
    static const size_t sizes[] = {8, 4, 1, 1, 2, 2, 4, 4, 1};
    return sizes[typeCode];
}

void appendConversion(FuzzInput &in, std::string &format, bool floating)
{
    switch (in.range(0, 7)) {
    case 0: format += "%%"; return;
    case 1: format += "%n"; return;
    default: break;
    }
    format += '%';
    const char *flags = "-+ #0";
    for (int k = 0; k < 5; ++k)
        if (in.range(0, 3) == 0)
            format += flags[k];
    if (in.flag())
        format += std::to_string(in.range(0, 40));
    if (in.flag())
        format += "." + std::to_string(in.range(0, 40));
    const char *letters = floating ? "aefgAEFG" : "cdiouxX";
    format += letters[in.range(0, floating ? 7 : 6)];
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput in(data, size);
    const int32_t typeCode = in.range(0, 8), valueLimit = in.range(0, 6), destinationSize = in.range(1, 200);
    const bool floating = typeCode <= 1;
    std::string format;
    for (int32_t pieces = in.range(0, 10); pieces > 0; --pieces) {
        if (in.flag())
            appendConversion(in, format, floating);
        for (int32_t n = in.range(0, 4); n > 0; --n) {
            const char c = char(in.range(1, 127));
            format += c == '%' ? '_' : c;
        }
    }
    std::vector<uint8_t> values(size_t(valueLimit + 1) * elementSize(typeCode));
    for (uint8_t &b : values)
        b = in.raw<uint8_t>();
    // A format without '%' is copied whole, whatever destinationSize says.
    const bool copied = format.find('%') == std::string::npos;
    std::vector<char> destination(copied ? format.size() + 1 : size_t(destinationSize));
    std::vector<char> formatCopy(format.begin(), format.end());
    formatCopy.push_back('\0');
    ORNEX_snprintf(destination.data(), formatCopy.data(), values.data(), valueLimit, typeCode, 0, destinationSize);
    if (format != formatCopy.data())
        __builtin_trap();
    return 0;
}
