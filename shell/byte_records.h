#pragma once

#include <QByteArray>
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

/// The zero-terminated text at this offset; empty if it does not end within the bytes.
inline QByteArray textAt(const QByteArray& bytes, std::uint64_t offset) {
    if (offset >= static_cast<std::uint64_t>(bytes.size()))
        return {};
    const auto start = static_cast<qsizetype>(offset);
    const qsizetype end = bytes.indexOf('\0', start);
    return end < 0 ? QByteArray() : bytes.mid(start, end - start);
}
