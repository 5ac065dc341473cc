#pragma once

#include <QByteArray>
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

/// The record of a file's format at this offset, or null if it is not wholly within the bytes. For untrusted
/// files: any offset is allowed.
template <typename Record>
std::optional<Record> recordAt(const QByteArray& bytes, std::uint64_t offset) {
    const auto size = static_cast<std::uint64_t>(bytes.size());
    if (offset > size || size - offset < sizeof(Record))
        return std::nullopt;
    Record record;
    std::memcpy(&record, bytes.constData() + offset, sizeof record);
    return record;
}

/// The zero-terminated text at this offset; empty if it is longer or does not end within the bytes.
inline QByteArray textAt(const QByteArray& bytes, std::uint64_t offset, std::size_t longest) {
    const auto size = static_cast<std::uint64_t>(bytes.size());
    if (offset >= size)
        return {};
    const char* const start = bytes.constData() + offset;
    const void* const end = std::memchr(start, 0, std::min<std::size_t>(size - offset, longest + 1));
    return end == nullptr ? QByteArray() : QByteArray(start, static_cast<const char*>(end) - start);
}
