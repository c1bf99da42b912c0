// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QString>

#include <cstddef>
#include <memory>

class QFile;

namespace Morvane {

/// A file's text in memory of its own, backed by huge pages where the system allows. A large
/// project's text is read once and parsed (the XML form in place), and on a virtual machine
/// the page faults of an ordinary buffer of that size cost more than reading it.
class TextBuffer
{
public:
    TextBuffer() = default;
    TextBuffer(const TextBuffer &) = delete;
    TextBuffer &operator=(const TextBuffer &) = delete;
    ~TextBuffer() { clear(); }

    char *data() { return mData; }
    const char *constData() const { return mData; }
    std::size_t size() const { return mSize; }

    /// Room for `size` bytes (and a spare one); false when there is not enough memory.
    bool allocate(std::size_t size);
    /// Reads the rest of the open `file`; on failure `error` says why.
    bool read(QFile &file, QString *error);
    void clear();

private:
    std::unique_ptr<char[]> mSmall;
    void *mMapped = nullptr;
    std::size_t mMappedBytes = 0;
    char *mData = nullptr;
    std::size_t mSize = 0;
};

} // namespace Morvane
