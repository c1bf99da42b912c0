// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <cstddef>

namespace Morvane {

/// UTF-16 to UTF-8 for the project writers, which write QString text straight into their
/// byte buffers instead of converting each string to a QByteArray first.
class Utf8Encoder
{
public:
    /// The most bytes `encode` writes for one code point.
    static constexpr int MaxBytes = 4;
    /// The most UTF-8 bytes one UTF-16 unit turns into (a surrogate pair is 2 units, 4
    /// bytes; anything else is 1 unit, at most 3 bytes).
    static constexpr int MaxBytesPerUnit = 3;

    /// The code point starting at `p`, which must be before `end`, and moves `p` past it.
    /// A surrogate that is not part of a pair comes back as itself (0xD800..0xDFFF), for
    /// the caller to drop or escape: it has no UTF-8 form.
    static char32_t next(const char16_t *&p, const char16_t *end)
    {
        const char32_t unit = *p++;
        if (unit >= 0xD800 && unit <= 0xDBFF && p < end && *p >= 0xDC00 && *p <= 0xDFFF)
            return 0x10000 + ((unit - 0xD800) << 10) + (char32_t(*p++) - 0xDC00);
        return unit;
    }

    static bool isSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

    /// Writes the UTF-8 form of `c` (not a surrogate, at most 0x10FFFF) to `out`, which has
    /// room for `MaxBytes`, and returns the number of bytes written.
    static int encode(char *out, char32_t c)
    {
        if (c < 0x80) {
            out[0] = char(c);
            return 1;
        }
        if (c < 0x800) {
            out[0] = char(0xC0 | (c >> 6));
            out[1] = char(0x80 | (c & 0x3F));
            return 2;
        }
        if (c < 0x10000) {
            out[0] = char(0xE0 | (c >> 12));
            out[1] = char(0x80 | ((c >> 6) & 0x3F));
            out[2] = char(0x80 | (c & 0x3F));
            return 3;
        }
        out[0] = char(0xF0 | (c >> 18));
        out[1] = char(0x80 | ((c >> 12) & 0x3F));
        out[2] = char(0x80 | ((c >> 6) & 0x3F));
        out[3] = char(0x80 | (c & 0x3F));
        return 4;
    }

    /// Appends the UTF-8 form of `c` to any container with `append(const char *, size)`.
    template<typename Bytes>
    static void append(Bytes &out, char32_t c)
    {
        char bytes[MaxBytes];
        out.append(bytes, std::size_t(encode(bytes, c)));
    }
};

} // namespace Morvane
