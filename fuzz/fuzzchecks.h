// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QByteArray>

namespace Morvane {

/// The bodies of the fuzz targets, shared with the regression test that replays every
/// input the fuzzers ever found. Each aborts (through `Q_ASSERT`-independent checks) when
/// an invariant breaks; a crash or sanitizer report is the other way to fail.
namespace FuzzChecks {

/// Parses arbitrary text as an XML project, reads it, writes it and reads that again:
/// whatever our writer produces must parse, and a second save must equal the first.
void xmlReader(const QByteArray &input);
/// The same for the JSON form.
void jsonReader(const QByteArray &input);
/// Splits the input into a project-relative image path and checks that merge-path
/// resolution never yields a path outside the project folder.
void mergePath(const QByteArray &input);

} // namespace FuzzChecks

} // namespace Morvane
