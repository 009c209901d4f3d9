#pragma once

#include "vdhash.h"
#include "vdplatform_export.h"

#include <QDataStream>
#include <QDateTime>
#include <QHash>
#include <QMetaType>
#include <QMultiMap>
#include <QString>

namespace vorandel {

using TYPE_ID = quint32;  // object uid; 0 means none
using CARD_ID = quint64;  // card number

// One link between two objects; the key of the link table is `type`.
struct VDPLATFORM_EXPORT INHERIT_DATA
{
    TYPE_ID first = 0;   // the owning object
    TYPE_ID second = 0;  // the linked object
    unsigned int type = 0;
    unsigned int priority = 0;  // order within a chain, lower first
    QDateTime dateFrom;
    QDateTime dateTo;

    INHERIT_DATA() = default;
    INHERIT_DATA(TYPE_ID first, TYPE_ID second, unsigned int type, unsigned int priority = 0,
                 const QDateTime& dateFrom = {}, const QDateTime& dateTo = {});

    bool operator==(const INHERIT_DATA& other) const;
    bool operator!=(const INHERIT_DATA& other) const { return !(*this == other); }
};

// Orders links by priority, lower first; equal priorities keep no defined order.
VDPLATFORM_EXPORT bool SortInheritDataByPriority(const INHERIT_DATA& a, const INHERIT_DATA& b);

using INHERIT_MAP = QMultiMap<unsigned int, INHERIT_DATA>;

// The generic record of the object store.
class VDPLATFORM_EXPORT ObjectInfo
{
public:
    ObjectInfo() = default;  // an invalid record
    // Reads a record from the form that operator<< writes; empty or broken bytes give an
    // invalid record.
    explicit ObjectInfo(const QByteArray& serialized);

    // A record is valid once it names an object: by uid, or by type for one not yet created.
    bool isValid() const { return uid != 0 || !type.isEmpty(); }
    QByteArray toByteArray() const;

    bool operator==(const ObjectInfo& other) const;
    bool operator!=(const ObjectInfo& other) const { return !(*this == other); }

    TYPE_ID uid = 0;
    QString type;
    TYPE_ID parent = 0;
    QHash<QString, QString> parameters;
    QDateTime modified;
    INHERIT_MAP inherits;     // links of this object, by type
    INHERIT_MAP inheritedBy;  // links that point at this object
};

using OBJECT_HASH = VDHash<unsigned int, ObjectInfo>;

VDPLATFORM_EXPORT QDataStream& operator<<(QDataStream& out, const INHERIT_DATA& data);
VDPLATFORM_EXPORT QDataStream& operator>>(QDataStream& in, INHERIT_DATA& data);
VDPLATFORM_EXPORT QDataStream& operator<<(QDataStream& out, const ObjectInfo& info);
VDPLATFORM_EXPORT QDataStream& operator>>(QDataStream& in, ObjectInfo& info);
VDPLATFORM_EXPORT QDebug operator<<(QDebug debug, const INHERIT_DATA& data);
VDPLATFORM_EXPORT QDebug operator<<(QDebug debug, const ObjectInfo& info);

}  // namespace vorandel

// Both hold only implicitly shared members: containers may move them as bytes.
Q_DECLARE_TYPEINFO(vorandel::INHERIT_DATA, Q_MOVABLE_TYPE);
Q_DECLARE_TYPEINFO(vorandel::ObjectInfo, Q_MOVABLE_TYPE);

Q_DECLARE_METATYPE(vorandel::INHERIT_DATA)
Q_DECLARE_METATYPE(vorandel::ObjectInfo)
Q_DECLARE_METATYPE(vorandel::OBJECT_HASH)
