// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "textbuffer.h"

#include <QByteArray>
#include <QFile>

#include <cstdint>
#include <cstring>

#include <sys/mman.h>

namespace Morvane {

namespace {
constexpr std::size_t HugePage = std::size_t(2) << 20;
}

bool TextBuffer::allocate(std::size_t size)
{
    clear();
    if (size < HugePage) {
        mSmall = std::make_unique<char[]>(size + 1);
        mData = mSmall.get();
    } else {
        // One page more than needed, so that the text can start on a huge-page boundary.
        mMappedBytes = (size + 1 + 2 * HugePage - 1) / HugePage * HugePage;
        void *mapped = mmap(nullptr, mMappedBytes, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED) {
            mMappedBytes = 0;
            return false;
        }
        mMapped = mapped;
        const auto start = reinterpret_cast<std::uintptr_t>(mapped);
        mData = reinterpret_cast<char *>((start + HugePage - 1) & ~(HugePage - 1));
#ifdef MADV_HUGEPAGE
        madvise(mData, mMappedBytes - HugePage, MADV_HUGEPAGE);
#endif
    }
    mSize = size;
    return true;
}

bool TextBuffer::read(QFile &file, QString *error)
{
    // A file that knows its size is read straight into place; anything else (a pipe, a
    // file in /proc) through a growing copy.
    const qint64 expected = file.size() - file.pos();
    QByteArray unsized;
    if (expected <= 0 || file.isSequential())
        unsized = file.readAll();
    const std::size_t capacity =
        unsized.isEmpty() ? std::size_t(qMax<qint64>(expected, 0)) : std::size_t(unsized.size());
    if (!allocate(capacity)) {
        *error = QStringLiteral("Not enough memory for the file's text");
        return false;
    }
    std::size_t got = 0;
    if (!unsized.isEmpty()) {
        std::memcpy(mData, unsized.constData(), capacity);
        got = capacity;
    } else {
        while (got < capacity) {
            const qint64 read = file.read(mData + got, qint64(capacity - got));
            if (read <= 0)
                break;
            got += std::size_t(read);
        }
    }
    mSize = got;
    if (file.error() != QFileDevice::NoError) {
        *error = file.errorString();
        clear();
        return false;
    }
    return true;
}

void TextBuffer::clear()
{
    if (mMapped)
        munmap(mMapped, mMappedBytes);
    mMapped = nullptr;
    mMappedBytes = 0;
    mSmall.reset();
    mData = nullptr;
    mSize = 0;
}

} // namespace Morvane
