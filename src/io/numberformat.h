// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace Morvane {

/// How the project files hold a model value, which the readers undo: y grows upwards
/// (`Negated`), pivot y is measured from the bottom (`FromOne`: 1 - p), and angles turn
/// counter-clockwise (`FromFullTurn`: 360 - a for a model angle a in 0..360).
enum class NumberMapping { Same, Negated, FromOne, FromFullTurn };

/// The number texts of the project files, locale-independent and fast (std::to_chars).
///
/// The `write*` forms append to a caller buffer of at least `BufferSize` bytes and return
/// the number of bytes written; no terminating zero is added.
class NumberFormat
{
public:
    /// Enough for any double in fixed notation with six decimals (the largest double has
    /// 309 integer digits) and for every other form here.
    static constexpr int BufferSize = 400;

    /// Decimal, a "-" only for negative values.
    static int writeInteger(char *buffer, std::int64_t value);
    /// Fixed notation with six decimals, then trailing zeros and a final "." removed
    /// (1.5, 2, -0.25). A value that rounds to zero is "0", never "-0", so that the text
    /// does not depend on the side from which a value approached zero. Non-finite values
    /// are written as "0".
    static int writeReal6(char *buffer, double value);
    /// General notation with six significant digits, like printf "%g"; zero is "0" (never
    /// "-0"). Non-finite values are written as "0".
    static int writeG6(char *buffer, double value);
    /// The shortest text that reads back as the same double, as a script engine prints
    /// numbers: integral values without fraction or exponent, exponent notation only
    /// below 1e-7 or from 1e21 on ("1e-8", "1e+21"), -0 as "0". Non-finite values have
    /// no JSON form; they are written as "0" and callers are expected to leave them out.
    static int writeShortest(char *buffer, double value);

    /// The shortest text that reads back, through the file's number (`toModel`), as the
    /// model value `value` exactly, in the form of `writeShortest`: an angle read from a
    /// file as 0.1 is written as 0.1 again, not as 360 minus 359.9. When no number reads
    /// back exactly (a model value finer than the mapping can carry), the shortest text
    /// of `toFile(value)`.
    static int writeShortestFor(char *buffer, double value, NumberMapping mapping);

    /// The number the file holds for model value `value`; angles are normalised first.
    static double toFile(double value, NumberMapping mapping);
    /// The model value a file number reads back as (the inverse of `toFile`).
    static double toModel(double fileValue, NumberMapping mapping);
    /// `angle` (degrees) brought into 0..360: 360 added while negative, subtracted while
    /// above 360 (so 360 stays 360). Non-finite angles become 0.
    static double normalizedAngle(double angle);

    static QByteArray integer(std::int64_t value);
    static QByteArray real6(double value);
    static QByteArray g6(double value);
    static QByteArray shortest(double value);
    static QByteArray shortestFor(double value, NumberMapping mapping);

    /// Parses a whole text as a double: optional sign, digits, fraction, exponent, and
    /// nothing else (blanks around it are allowed). Fails for empty or malformed text and
    /// for results that are not finite ("nan", "inf", 1e999).
    static bool parseDouble(const char *begin, const char *end, double *value);
    static bool parseDouble(const QString &text, double *value);
    /// Parses a whole text as a 32-bit signed integer. A text with a fraction or exponent
    /// ("2.0", "1e3") is accepted when its value is integral and in range.
    static bool parseInt(const char *begin, const char *end, int *value);
    static bool parseInt(const QString &text, int *value);
};

} // namespace Morvane
