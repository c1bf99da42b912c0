// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "fuzzchecks.h"

#include "io/jsonprojectreader.h"
#include "io/jsonprojectwriter.h"
#include "io/projectfile.h"
#include "io/projectwriter.h"
#include "io/xmlprojectreader.h"
#include "io/xmlprojectwriter.h"
#include "model/rigxdata.h"

#include <QBuffer>
#include <QDir>

#include <cstdio>
#include <cstdlib>

namespace Morvane {

namespace {

[[noreturn]] void failCheck(const char *what, const QByteArray &detail = QByteArray())
{
    std::fprintf(stderr, "fuzz check failed: %s\n%s\n", what, detail.left(4000).constData());
    std::abort();
}

// Images are looked up below a folder that does not exist, so hostile names never make
// the reader touch real files.
const QString sProjectPath = QStringLiteral("/nonexistent-morvane-fuzz/project.rigx");

template <typename Reader, typename Writer>
QByteArray readAndWrite(Reader &reader)
{
    RigxData document;
    document.setFilePath(sProjectPath);
    reader.read(&document);
    QByteArray out;
    QBuffer buffer(&out);
    buffer.open(QIODevice::WriteOnly);
    ProjectSaveOptions options;
    if (!Writer::write(document, &buffer, options))
        failCheck("writing to memory failed");
    return out;
}

template <typename Reader, typename Writer>
void roundTrip(const QByteArray &input)
{
    QString error;
    Reader first;
    if (!first.parse(input, &error))
        return;
    const QByteArray once = readAndWrite<Reader, Writer>(first);
    Reader second;
    if (!second.parse(once, &error))
        failCheck("our own output does not parse", error.toUtf8() + '\n' + once);
    const QByteArray twice = readAndWrite<Reader, Writer>(second);
    Reader third;
    if (!third.parse(twice, &error))
        failCheck("our own output does not parse", error.toUtf8() + '\n' + twice);
    // The first save may normalise what a foreign file held; after that, saving what was
    // opened must give the same bytes.
    const QByteArray thrice = readAndWrite<Reader, Writer>(third);
    if (thrice != twice)
        failCheck("save, open and save again changed the file", twice + "\n----\n" + thrice);
}

} // namespace

void FuzzChecks::xmlReader(const QByteArray &input)
{
    roundTrip<XmlProjectReader, XmlProjectWriter>(input);
}

void FuzzChecks::jsonReader(const QByteArray &input)
{
    roundTrip<JsonProjectReader, JsonProjectWriter>(input);
}

void FuzzChecks::mergePath(const QByteArray &input)
{
    const QString base = QStringLiteral("/nonexistent-morvane-fuzz/project/merged");
    const QString relative = QString::fromUtf8(input);
    const QString resolved = ProjectFile::resolveInside(base, relative);
    if (resolved.isEmpty())
        return;
    if (!resolved.startsWith(base + QLatin1Char('/')))
        failCheck("resolved path leaves the folder", resolved.toUtf8());
    if (QDir::cleanPath(resolved) != resolved)
        failCheck("resolved path is not clean", resolved.toUtf8());
    const QString inside = resolved.mid(base.size() + 1);
    if (inside.isEmpty() || inside == QLatin1String("..") || inside.startsWith(QLatin1String("../"))
        || inside.contains(QLatin1String("/../")) || inside.contains(QLatin1Char('\\')))
        failCheck("resolved path climbs out", resolved.toUtf8());
    const QString free = ProjectFile::freeName(resolved, {resolved});
    if (free == resolved || !free.startsWith(base + QLatin1Char('/')))
        failCheck("a taken name was handed out again", free.toUtf8());
}

} // namespace Morvane
