// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "numberformat.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace Morvane {

namespace {

QByteArray toByteArray(int (*writer)(char *, double), double value)
{
    char buffer[NumberFormat::BufferSize];
    const int length = writer(buffer, value);
    return QByteArray(buffer, length);
}

int writeZero(char *buffer)
{
    buffer[0] = '0';
    return 1;
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

} // namespace

int NumberFormat::writeInteger(char *buffer, std::int64_t value)
{
    const auto result = std::to_chars(buffer, buffer + BufferSize, value);
    return int(result.ptr - buffer);
}

int NumberFormat::writeReal6(char *buffer, double value)
{
    if (!std::isfinite(value))
        return writeZero(buffer);
    // Most values in a project are small: scale to millionths and round in integers, which
    // is several times faster than the general conversion. Below 1e7 the scaled product is
    // within 0.001 of the exact one, so unless it lies near a tie (.5) it rounds the same
    // way as the exact decimal value would; near a tie the general conversion decides.
    const double magnitude = std::fabs(value);
    if (magnitude < 1e7) {
        const double scaled = magnitude * 1e6;
        // Truncation is the floor here (not negative), and needs no library call.
        const auto whole = std::uint64_t(scaled);
        const double fraction = scaled - double(whole);
        if (std::fabs(fraction - 0.5) > 0.01) {
            const std::uint64_t millionths = fraction > 0.5 ? whole + 1 : whole;
            char *out = buffer;
            // The sign stays on a value that rounds to zero ("-0"), as the fixed form has it.
            if (std::signbit(value))
                *out++ = '-';
            out = std::to_chars(out, buffer + BufferSize, millionths / 1000000).ptr;
            auto decimals = std::uint32_t(millionths % 1000000);
            if (decimals != 0) {
                int digits = 6;
                while (decimals % 10 == 0) {
                    decimals /= 10;
                    --digits;
                }
                *out++ = '.';
                for (int i = digits - 1; i >= 0; --i) {
                    out[i] = char('0' + decimals % 10);
                    decimals /= 10;
                }
                out += digits;
            }
            return int(out - buffer);
        }
    }
    const auto result = std::to_chars(buffer, buffer + BufferSize, value,
                                      std::chars_format::fixed, 6);
    int length = int(result.ptr - buffer);
    // Six decimals are always present, so there is always a "." to stop at.
    while (length > 0 && buffer[length - 1] == '0')
        --length;
    if (length > 0 && buffer[length - 1] == '.')
        --length;
    return length;
}

int NumberFormat::writeG6(char *buffer, double value)
{
    if (!std::isfinite(value) || value == 0.0)
        return writeZero(buffer);
    const auto result = std::to_chars(buffer, buffer + BufferSize, value,
                                      std::chars_format::general, 6);
    return int(result.ptr - buffer);
}

int NumberFormat::writeShortest(char *buffer, double value)
{
    if (!std::isfinite(value) || value == 0.0)
        return writeZero(buffer);
    const double magnitude = std::fabs(value);
    // Integral values up to 2^53 are exact as integers; print them without exponent
    // even where the exponent form would be shorter (100000, not 1e+05).
    if (magnitude < 9007199254740992.0 && std::trunc(value) == value)
        return writeInteger(buffer, std::int64_t(value));
    if (magnitude >= 1e-7 && magnitude < 1e21) {
        const auto result = std::to_chars(buffer, buffer + BufferSize, value,
                                          std::chars_format::fixed);
        return int(result.ptr - buffer);
    }
    const auto result = std::to_chars(buffer, buffer + BufferSize, value,
                                      std::chars_format::scientific);
    int length = int(result.ptr - buffer);
    // to_chars pads the exponent to two digits ("1e-08"); drop the padding.
    char *e = static_cast<char *>(std::memchr(buffer, 'e', size_t(length)));
    if (e && e + 2 < buffer + length && e[2] == '0' && e + 3 < buffer + length) {
        std::memmove(e + 2, e + 3, size_t(buffer + length - (e + 3)));
        --length;
    }
    return length;
}

double NumberFormat::normalizedAngle(double angle)
{
    if (!std::isfinite(angle))
        return 0.0;
    // fmod first, so that a huge value does not loop for ages.
    if (std::fabs(angle) > 3600.0)
        angle = std::fmod(angle, 360.0);
    while (angle < 0.0)
        angle += 360.0;
    while (angle > 360.0)
        angle -= 360.0;
    return angle;
}

double NumberFormat::toFile(double value, NumberMapping mapping)
{
    switch (mapping) {
    case NumberMapping::Same:
        break;
    case NumberMapping::Negated:
        return -value;
    case NumberMapping::FromOne:
        return 1.0 - value;
    case NumberMapping::FromFullTurn:
        return 360.0 - normalizedAngle(value);
    }
    return value;
}

double NumberFormat::toModel(double fileValue, NumberMapping mapping)
{
    switch (mapping) {
    case NumberMapping::Same:
        break;
    case NumberMapping::Negated:
        return -fileValue;
    case NumberMapping::FromOne:
        return 1.0 - fileValue;
    case NumberMapping::FromFullTurn:
        return normalizedAngle(360.0 - fileValue);
    }
    return fileValue;
}

int NumberFormat::writeShortestFor(char *buffer, double value, NumberMapping mapping)
{
    const double file = toFile(value, mapping);
    // Negation is exact both ways: the shortest text of the file number is the answer.
    if (!std::isfinite(value) || mapping == NumberMapping::Same
        || mapping == NumberMapping::Negated)
        return writeShortest(buffer, file);
    // A subtraction rounds: the file number computed from the model need not read back as
    // the model, and many file numbers may read back as it. Find one that does (the
    // computed one or a neighbour), then the fewest significant digits near it that still
    // do.
    const auto readsBack = [value, mapping](double candidate) {
        return toModel(candidate, mapping) == value;
    };
    double anchor = file;
    if (!readsBack(anchor)) {
        const double below = std::nextafter(file, -std::numeric_limits<double>::infinity());
        const double above = std::nextafter(file, std::numeric_limits<double>::infinity());
        if (readsBack(below))
            anchor = below;
        else if (readsBack(above))
            anchor = above;
        else
            return writeShortest(buffer, file);
    }
    // Most numbers were read from a file with at most six decimals. The numbers that read
    // back lie within far less than a millionth of each other there, so when the nearest
    // six-decimal number reads back, no shorter text does: it is the answer.
    int low = 1;
    if (std::fabs(anchor) < 1e9) {
        const double millionths = std::nearbyint(anchor * 1e6);
        const double sixDecimals = millionths / 1e6;
        if (readsBack(sixDecimals))
            return writeShortest(buffer, sixDecimals);
        // So the text needs a seventh decimal, and as many digits before it.
        if (anchor != 0.0)
            low = std::clamp(int(std::floor(std::log10(std::fabs(anchor)))) + 8, 1, 17);
    }
    // Rounded to 17 significant digits every double reads back as itself, so the search
    // always ends; fewer digits read back for all counts from some count on, except in
    // rare cases near a limit of the range, where a few digits more are written.
    const auto rounded = [anchor](int digits, double *out) {
        char text[64];
        const auto result = std::to_chars(text, text + sizeof text, anchor,
                                          std::chars_format::scientific, digits - 1);
        return std::from_chars(text, result.ptr, *out).ec == std::errc();
    };
    double best = anchor;
    int high = 17;
    while (low < high) {
        const int middle = (low + high) / 2;
        double candidate = 0.0;
        if (rounded(middle, &candidate) && readsBack(candidate)) {
            best = candidate;
            high = middle;
        } else {
            low = middle + 1;
        }
    }
    if (low == 17)
        best = anchor;
    return writeShortest(buffer, best);
}

QByteArray NumberFormat::integer(std::int64_t value)
{
    char buffer[BufferSize];
    return QByteArray(buffer, writeInteger(buffer, value));
}

QByteArray NumberFormat::real6(double value)
{
    return toByteArray(&NumberFormat::writeReal6, value);
}

QByteArray NumberFormat::g6(double value)
{
    return toByteArray(&NumberFormat::writeG6, value);
}

QByteArray NumberFormat::shortest(double value)
{
    return toByteArray(&NumberFormat::writeShortest, value);
}

QByteArray NumberFormat::shortestFor(double value, NumberMapping mapping)
{
    char buffer[BufferSize];
    return QByteArray(buffer, writeShortestFor(buffer, value, mapping));
}

bool NumberFormat::parseDouble(const char *begin, const char *end, double *value)
{
    while (begin < end && isBlank(*begin))
        ++begin;
    while (end > begin && isBlank(end[-1]))
        --end;
    if (begin < end && *begin == '+')
        ++begin;
    if (begin == end)
        return false;
    // from_chars would accept "inf", "nan" and hex forms; a file never holds them.
    const char first = (*begin == '-' && begin + 1 < end) ? begin[1] : *begin;
    if (!(first >= '0' && first <= '9') && first != '.')
        return false;
    double parsed = 0.0;
    const auto result = std::from_chars(begin, end, parsed, std::chars_format::general);
    if (result.ec != std::errc() || result.ptr != end || !std::isfinite(parsed))
        return false;
    *value = parsed;
    return true;
}

bool NumberFormat::parseDouble(const QString &text, double *value)
{
    const QByteArray latin = text.toLatin1();
    return parseDouble(latin.constData(), latin.constData() + latin.size(), value);
}

bool NumberFormat::parseInt(const char *begin, const char *end, int *value)
{
    while (begin < end && isBlank(*begin))
        ++begin;
    while (end > begin && isBlank(end[-1]))
        --end;
    if (begin < end && *begin == '+')
        ++begin;
    int parsed = 0;
    const auto result = std::from_chars(begin, end, parsed);
    if (result.ec == std::errc() && result.ptr == end && begin != end) {
        *value = parsed;
        return true;
    }
    double real = 0.0;
    if (!parseDouble(begin, end, &real) || std::trunc(real) != real
        || real < double(std::numeric_limits<int>::min())
        || real > double(std::numeric_limits<int>::max()))
        return false;
    *value = int(real);
    return true;
}

bool NumberFormat::parseInt(const QString &text, int *value)
{
    const QByteArray latin = text.toLatin1();
    return parseInt(latin.constData(), latin.constData() + latin.size(), value);
}

} // namespace Morvane
