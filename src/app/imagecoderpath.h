// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QString>

namespace Morvane {

// Where the image library should look for coders shipped with the program:
// its "coders" folder when there is one, the program's folder itself when it
// holds coder modules (*.la, or *.so not named lib*), otherwise empty, so the
// system's coders are found.
QString imageCoderPath(const QString &programDirectory);

} // namespace Morvane
