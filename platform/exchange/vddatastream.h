#pragma once

#include "vdplatform_export.h"

#include <QDataStream>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QMap>
#include <QSet>
#include <QStringList>
#include <QVariant>
#include <QVector>

// The data stream of the exchange. Both ends of every payload use it, so it pins the stream
// version and byte order once for everybody.
//
// A payload comes from the other side and is read as untrusted: whatever is read from a
// VDDataStream, and every record's reader, goes through vdstream::read, which refuses a count or
// a length larger than the bytes left (a list of two billion entries in a payload of ten bytes
// is malformed, not a reason to allocate sixteen gigabytes), a QVariant of any type that the
// service boundary doesn't use, and a time in a zone that this machine doesn't know. A refused
// payload leaves the stream in ReadCorruptData and the value at its default, as a short payload
// does.
class VDPLATFORM_EXPORT VDDataStream : public QDataStream
{
public:
    // Writes into (or, with a read mode, reads from) the given payload.
    VDDataStream(QByteArray* bytes, QIODevice::OpenMode mode);
    // Reads a payload.
    explicit VDDataStream(const QByteArray& bytes);

    static constexpr int Version = QDataStream::Qt_5_15;
};

namespace vdstream {

// Whether `count` elements may still follow: each takes at least one byte of the payload.
VDPLATFORM_EXPORT bool countFits(QDataStream& in, quint32 count);
// The types that a QVariant may carry on the wire: plain values, text, bytes and dates.
VDPLATFORM_EXPORT bool isWireType(int type);

// Every reader of a value, declared before any is defined, so that they find each other in
// containers of containers.
template <typename T>
void read(QDataStream& in, T& value);
VDPLATFORM_EXPORT void read(QDataStream& in, QString& value);
VDPLATFORM_EXPORT void read(QDataStream& in, QByteArray& value);
VDPLATFORM_EXPORT void read(QDataStream& in, QDateTime& value);
VDPLATFORM_EXPORT void read(QDataStream& in, QVariant& value);
VDPLATFORM_EXPORT void read(QDataStream& in, QStringList& list);
template <typename T>
void read(QDataStream& in, QList<T>& list);
template <typename T>
void read(QDataStream& in, QVector<T>& vector);
template <typename T>
void read(QDataStream& in, QSet<T>& set);
template <typename K, typename V>
void read(QDataStream& in, QHash<K, V>& hash);
template <typename K, typename V>
void read(QDataStream& in, QMultiHash<K, V>& hash);
template <typename K, typename V>
void read(QDataStream& in, QMap<K, V>& map);
template <typename K, typename V>
void read(QDataStream& in, QMultiMap<K, V>& map);

// Reads several values in order, stopping at the first failure.
template <typename... Values>
bool readAll(QDataStream& in, Values&... values)
{
    ((in.status() == QDataStream::Ok ? read(in, values) : void()), ...);
    return in.status() == QDataStream::Ok;
}

namespace detail {
inline bool readCount(QDataStream& in, quint32& count)
{
    in >> count;
    if (in.status() != QDataStream::Ok)
        return false;
    if (!countFits(in, count)) {
        in.setStatus(QDataStream::ReadCorruptData);
        return false;
    }
    return true;
}

template <typename Container>
void readSequence(QDataStream& in, Container& container)
{
    container.clear();
    quint32 count = 0;
    if (!detail::readCount(in, count))
        return;
    container.reserve(int(count));
    for (quint32 i = 0; i < count; ++i) {
        typename Container::value_type element{};
        read(in, element);
        if (in.status() != QDataStream::Ok) {
            container.clear();
            return;
        }
        container.append(element);
    }
}

// Associative containers are written from the last entry to the first, so that several values
// of one key come back in their order when inserted one by one.
template <typename Container, typename Insert>
void readPairs(QDataStream& in, Container& container, Insert insert)
{
    container.clear();
    quint32 count = 0;
    if (!detail::readCount(in, count))
        return;
    for (quint32 i = 0; i < count; ++i) {
        typename Container::key_type key{};
        typename Container::mapped_type value{};
        read(in, key);
        read(in, value);
        if (in.status() != QDataStream::Ok) {
            container.clear();
            return;
        }
        insert(key, value);
    }
}
}  // namespace detail

template <typename T>
void read(QDataStream& in, T& value)
{
    in >> value;
}

template <typename T>
void read(QDataStream& in, QList<T>& list)
{
    detail::readSequence(in, list);
}

template <typename T>
void read(QDataStream& in, QVector<T>& vector)
{
    detail::readSequence(in, vector);
}

template <typename T>
void read(QDataStream& in, QSet<T>& set)
{
    set.clear();
    quint32 count = 0;
    if (!detail::readCount(in, count))
        return;
    for (quint32 i = 0; i < count; ++i) {
        T element{};
        read(in, element);
        if (in.status() != QDataStream::Ok) {
            set.clear();
            return;
        }
        set.insert(element);
    }
}

template <typename K, typename V>
void read(QDataStream& in, QHash<K, V>& hash)
{
    detail::readPairs(in, hash, [&hash](const K& key, const V& value) { hash.insertMulti(key, value); });
}

template <typename K, typename V>
void read(QDataStream& in, QMultiHash<K, V>& hash)
{
    detail::readPairs(in, hash, [&hash](const K& key, const V& value) { hash.insert(key, value); });
}

template <typename K, typename V>
void read(QDataStream& in, QMap<K, V>& map)
{
    detail::readPairs(in, map, [&map](const K& key, const V& value) { map.insertMulti(key, value); });
}

template <typename K, typename V>
void read(QDataStream& in, QMultiMap<K, V>& map)
{
    detail::readPairs(in, map, [&map](const K& key, const V& value) { map.insert(key, value); });
}

}  // namespace vdstream

// What is read from a VDDataStream goes through the checked readers.
template <typename T>
VDDataStream& operator>>(VDDataStream& in, T& value)
{
    vdstream::read(in, value);
    return in;
}
