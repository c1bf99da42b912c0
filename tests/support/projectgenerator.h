// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QByteArray>

namespace Morvane {

class RigxData;

/// The shape of a generated project: one entity whose objects (every fifth a bone, or
/// every third with `variedNumbers`) each have a timeline in every animation, keyed at
/// evenly spaced times, and a folder of images the sprite keys cycle through.
struct ProjectShape
{
    int animations = 1;
    int timelines = 10;
    int keys = 10;
    /// Values that exercise every number form the writers have (negative, fractional,
    /// large, a name that needs escaping) instead of the plainer bench values.
    bool variedNumbers = false;
};

/// Fills `document` (expected empty; its path, when set, is where images are looked for)
/// with a project of `shape`; every timeline key has a mainline key at its time.
void buildProject(RigxData &document, const ProjectShape &shape);

/// The XML text of one animation holding `timelines` timelines of `keysPerTimeline` keys
/// each, 10 ms apart, with nothing in the keys but their time. With `withMainline` the
/// mainline lists a key for every time with one reference per timeline; without, the reader
/// has to make them. With `reversed` every list is written in falling time order. Built as
/// text, so that it can be made faster than a reader that is slow on it would load it.
QByteArray manyKeysXml(int timelines, int keysPerTimeline, bool withMainline, bool reversed = false);

/// The XML bytes a save of `document` with the default options writes.
QByteArray savedXml(RigxData &document);

} // namespace Morvane
