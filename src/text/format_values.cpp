#include "ornex_rt.h"

#include <cstdio>
#include <cstring>

#include "frame/element_traits.hpp"

namespace ornex::text {
namespace {

// Output into a buffer of fixed room with the contract of the formatter the
// library was written against: a piece that does not fit, or that fills the
// room exactly, ends the output with a zero in the room's last byte.
class Output {
public:
    Output(char *destination, int32_t room) : next_(destination), room_(room) {}

    // Formats one piece; false once the output is full.
    template <class... Value>
    bool put(const char *piece, Value... value)
    {
        if (room_ <= 0) {
            return false;
        }
        const int written = formatPiece(piece, value...);
        if (written < 0 || written >= room_) {
            next_[room_ - 1] = '\0';
            room_ = 0;
            return false;
        }
        next_ += written;
        room_ -= written;
        written_ += written;
        return true;
    }

    // Text without conversions, as it stands.
    bool putText(const char *text) { return put("%s", text); }

    int32_t written() const { return room_ > 0 ? written_ : -1; }

private:
    template <class... Value>
    int formatPiece(const char *piece, Value... value)
    {
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
#endif
        return std::snprintf(next_, static_cast<size_t>(room_), piece, value...);
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
    }

    char *next_;
    int32_t room_;
    int32_t written_ = 0;
};

// The conversion letter of a piece that starts with '%': the first byte
// after the flags, width, precision and length modifiers.
char conversionLetter(const char *piece)
{
    const char *p = piece + 1;
    while (*p != '\0' && std::strchr("-+ #0123456789.*hlLqjzt'I", *p) != nullptr) {
        ++p;
    }
    return *p;
}

// Formats one piece with value k of the caller's array, widened the way a
// variadic call takes it.
bool putConversion(Output &out, const char *piece, const void *values, int32_t k, int32_t typeCode)
{
    switch (typeCode) {
    case ORNEX_TYPE_DOUBLE: return out.put(piece, static_cast<const double *>(values)[k]);
    case ORNEX_TYPE_SINGLE: return out.put(piece, double(static_cast<const float *>(values)[k]));
    case ORNEX_TYPE_INT8: return out.put(piece, int32_t(static_cast<const int8_t *>(values)[k]));
    case ORNEX_TYPE_UINT8:
    case ORNEX_TYPE_LOGICAL: return out.put(piece, int32_t(static_cast<const uint8_t *>(values)[k]));
    case ORNEX_TYPE_INT16: return out.put(piece, int32_t(static_cast<const int16_t *>(values)[k]));
    case ORNEX_TYPE_UINT16: return out.put(piece, int32_t(static_cast<const uint16_t *>(values)[k]));
    case ORNEX_TYPE_INT32: return out.put(piece, static_cast<const int32_t *>(values)[k]);
    case ORNEX_TYPE_UINT32: return out.put(piece, static_cast<const uint32_t *>(values)[k]);
    default: return false;
    }
}

// Number mode: the text before the first '%', then each piece from one '%'
// to the next formatted on its own with the next value, until the values
// up to index valueLimit are used. The format is cut by writing a zero at
// the next '%' and mended before anything else happens.
int32_t formatNumbers(char *destination, char *format, const void *values, int32_t valueLimit, int32_t typeCode,
                      int32_t destinationSize)
{
    char *percent = std::strchr(format, '%');
    if (percent == nullptr) {
        std::strcpy(destination, format);
        return static_cast<int32_t>(std::strlen(destination));
    }
    Output out(destination, destinationSize);
    auto putCut = [&](char *from, char *to, auto &&put) {
        const char saved = *to;
        *to = '\0';
        const bool fitted = put(from);
        *to = saved;
        return fitted;
    };
    if (!putCut(format, percent, [&](const char *text) { return out.putText(text); })) {
        return out.written();
    }
    // The walk ends at the end of the format or as soon as the conversion
    // counter passes valueLimit; what is left of the format, a "%%" piece
    // as much as any other, is dropped.
    int32_t k = 0;
    while (percent != nullptr && k <= valueLimit) {
        if (percent[1] == '%') {
            // "%%" writes one '%' and takes no value; the text after it up to
            // the next '%' is written as it stands.
            char *after = percent + 2;
            char *next = std::strchr(after, '%');
            char *end = next != nullptr ? next : after + std::strlen(after);
            if (!out.put("%%") || !putCut(after, end, [&](const char *text) { return out.putText(text); })) {
                return out.written();
            }
            percent = next;
            continue;
        }
        char *next = std::strchr(percent + 1, '%');
        char *end = next != nullptr ? next : percent + std::strlen(percent);
        const bool fitted = putCut(percent, end, [&](const char *piece) {
            // A count conversion writes nothing visible; it is never handed
            // to the C library, so no count lands anywhere.
            if (conversionLetter(piece) == 'n') {
                const char *rest = piece + 1;
                while (*rest != 'n') {
                    ++rest;
                }
                return out.putText(rest + 1);
            }
            return putConversion(out, piece, values, k, typeCode);
        });
        ++k;
        if (!fitted) {
            return out.written();
        }
        percent = next;
    }
    return out.written();
}

int32_t formatValues(char *destination, char *format, void *values, int32_t valueLimit, int32_t typeCode,
                     bool isText, int32_t destinationSize)
{
    if (destination == nullptr || format == nullptr || values == nullptr || typeCode > ORNEX_TYPE_LOGICAL || typeCode < 0) {
        return 0;
    }
    if (isText) {
        if (typeCode != ORNEX_TYPE_UINT8) {
            std::strcpy(destination, format);
            return static_cast<int32_t>(std::strlen(destination));
        }
        // The caller's characters are ended at valueLimit - 1; there is no
        // size limit in text mode.
        char *text = static_cast<char *>(values);
        if (valueLimit > 0) {
            text[valueLimit - 1] = '\0';
        }
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
#endif
        return std::sprintf(destination, format, text);
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
    }
    return formatNumbers(destination, format, values, valueLimit, typeCode, destinationSize);
}

} // namespace
} // namespace ornex::text

extern "C" {
int32_t ORNEX_snprintf(char *destination, char *format, void *values, int32_t valueLimit, int32_t typeCode, uint8_t isText, int32_t destinationSize)
{
    return ornex::text::formatValues(destination, format, values, valueLimit, typeCode, isText != 0, destinationSize);
}
int32_t ORNEX_snprintf_wrapper(char *destination, char *format, void *values, int32_t valueLimit, int32_t typeCode, uint8_t isText, int32_t destinationSize)
{
    return ORNEX_snprintf(destination, format, values, valueLimit, typeCode, isText, destinationSize);
}
int32_t ORNEX_strlen(const char *text) { return static_cast<int32_t>(std::strlen(text)); }
}
