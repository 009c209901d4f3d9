#pragma once

#include "objectinfo.h"
#include "servicerecords.h"
#include "vdhash.h"

#include <QByteArray>
#include <QHash>
#include <QMap>
#include <QPair>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

#include <map>

namespace vdserver {

// Object types of the datanames that the platform's constants leave without one.
inline const QString CONFIRM_LIST_TYPE = QStringLiteral("OT_CONFIRM_LIST");
inline const QString DEVICE_TYPE = QStringLiteral("OT_DEVICE");
inline const QString JOB_TYPE = QStringLiteral("OT_JOB");

// What the changes since the last look did, by dataname.
struct ObjectChanges
{
    QMap<QString, QSet<vorandel::TYPE_ID>> changed;
    QMap<QString, QSet<vorandel::TYPE_ID>> removed;
};

// The server's objects, by dataname, with their blobs and biometric templates, the database
// settings and the schedules. Uids are unique across all datanames. Every put and removal is
// noted until takeChanges(), so that what a query changed can be announced after its answer.
class ObjectStore
{
public:
    // Every dataname has a table from the start, empty until filled.
    ObjectStore();

    // The datanames in the order in which a reader best takes them: what others refer to first.
    static QStringList datanames();
    // The dataname that holds objects of this type; empty for a type the server doesn't keep.
    static QString datanameForType(const QString& type);

    // The table of a dataname; null for an unknown one. The pointer stays valid.
    const vorandel::OBJECT_HASH* objects(const QString& dataname) const;
    // An object by uid, whatever its dataname; null when there is none.
    const vorandel::ObjectInfo* object(vorandel::TYPE_ID uid) const;
    // An object of that dataname; null when it has no such uid.
    const vorandel::ObjectInfo* object(vorandel::TYPE_ID uid, const QString& dataname) const;
    // The card that carries this number; 0 for none.
    vorandel::TYPE_ID cardByNumber(vorandel::CARD_ID number) const;

    vorandel::TYPE_ID newUid() { return ++m_lastUid; }
    // Inserts or replaces an object by uid, in the table of its type, which must be one that
    // the server keeps.
    void put(const vorandel::ObjectInfo& object);
    // Removes an object with its blobs and templates.
    void remove(vorandel::TYPE_ID uid);
    ObjectChanges takeChanges();

    // A blob of an object. A worker's portrait that was promised is drawn on first request.
    QByteArray blob(vorandel::TYPE_ID uid, const QString& name);
    // An empty blob is no blob.
    void setBlob(vorandel::TYPE_ID uid, const QString& name, const QByteArray& bytes);
    // The worker gets a drawn portrait as "PT_PHOTO", made when it is first asked for: drawing
    // every photo of a big set up front would cost seconds for pictures nobody looks at.
    void promisePortrait(vorandel::TYPE_ID worker);

    QVector<vorandel::TEMPLATE_DATA> templates(vorandel::TYPE_ID worker) const;
    void setTemplates(vorandel::TYPE_ID worker, const QVector<vorandel::TEMPLATE_DATA>& templates);

    QHash<QString, QString> settings() const { return m_settings; }
    void setSetting(const QString& key, const QString& value);
    VDHash<int, vorandel::SCHEDULE_DATA> schedules() const { return m_schedules; }
    void setSchedules(const VDHash<int, vorandel::SCHEDULE_DATA>& schedules);

    // Forgets everything, the noted changes included; the tables stay, empty.
    void clear();

private:
    vorandel::OBJECT_HASH* table(const QString& dataname);

    std::map<QString, vorandel::OBJECT_HASH> m_tables;
    vorandel::TYPE_ID m_lastUid = 0;
    ObjectChanges m_changes;
    QHash<QPair<vorandel::TYPE_ID, QString>, QByteArray> m_blobs;
    QSet<vorandel::TYPE_ID> m_promisedPortraits;
    QHash<vorandel::TYPE_ID, QVector<vorandel::TEMPLATE_DATA>> m_templates;
    QHash<QString, QString> m_settings;
    VDHash<int, vorandel::SCHEDULE_DATA> m_schedules;
};

}  // namespace vdserver
