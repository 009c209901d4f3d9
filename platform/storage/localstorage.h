#pragma once

#include "objectinfo.h"
#include "servicerecords.h"
#include "vdplatform_export.h"

#include <QHash>
#include <QObject>
#include <QPointer>

#include <map>
#include <memory>

#include <trie>

class ObjectTreeModel;

namespace vorandel {

// The process-wide copy of the server's objects, by dataname. Readers get stable pointers into
// it and follow its changes through dataChanged and dataRemoved.
class VDPLATFORM_EXPORT LocalStorage : public QObject
{
    Q_OBJECT
public:
    static LocalStorage* instance();
    ~LocalStorage() override;

    // All objects of a dataname, or null for one that was never set. The pointer stays valid
    // for the life of the process, and its content follows the server.
    const OBJECT_HASH* constObjects(const QString& dataname) const;
    // The record, or a shared invalid one for an unknown uid or dataname.
    const ObjectInfo& constObject(unsigned int uid, const QString& dataname) const;
    // Any object by uid, whatever its dataname.
    ObjectInfo object(unsigned int uid) const;
    // The card of that number; `withDismissed` also finds cards of dismissed workers.
    ObjectInfo card(unsigned long long number, bool withDismissed) const;

    QByteArray blob(unsigned int uid, const QString& name) const;
    // The sum of the stored blob as hex text; empty when there is no blob.
    QByteArray blobMd5(unsigned int uid, const QString& name) const;
    void setBlob(unsigned int uid, const QString& name, const QByteArray& data);
    // The sum that blobMd5 gives for these bytes; the server compares with it.
    static QByteArray md5Of(const QByteArray& data);

    // An item model of all objects of a dataname, kept up to date; owned by the store.
    ObjectTreeModel* model(const QString& dataname);
    // A search index by name (SUBJECT_WORKERNUM_INDEX, SUBJECT_SURNAME_INDEX), kept up to date;
    // null for an unknown name.
    TrieStatic<unsigned int>* index(const QString& name);

    VDHash<int, SCHEDULE_DATA> schedules() const;
    QHash<QString, QString> dbSettings() const;

public:  // feed API
    // Inserts or replaces objects by uid; creates the table of the dataname if it has none yet
    // (an empty list creates an empty table). Emits dataChanged(dataname, uids) once.
    void setObjects(const QString& dataname, const QList<ObjectInfo>& objects);
    // Drops objects; emits dataRemoved(dataname, uids) once.
    void removeObjects(const QString& dataname, const QList<TYPE_ID>& uids);
    void setDbSettings(const QHash<QString, QString>& settings);
    void setSchedules(const VDHash<int, SCHEDULE_DATA>& schedules);
    // Forgets all tables, blobs and settings, emits nothing. Pointers handed out stay valid
    // and see empty tables.
    void clear();

signals:
    void dataChanged(const QString& dataname, const QList<vorandel::TYPE_ID>& uids);
    void dataRemoved(const QString& dataname, const QList<vorandel::TYPE_ID>& uids);

private:
    LocalStorage();

    struct Table
    {
        OBJECT_HASH objects;
        bool set = false;
        QPointer<ObjectTreeModel> model;
    };
    Table* table(const QString& dataname) const;
    void indexWorkers(const QList<ObjectInfo>& workers);
    void unindexWorkers(const QList<TYPE_ID>& uids);

    std::map<QString, std::unique_ptr<Table>> m_tables;
    std::map<QString, std::unique_ptr<TrieStatic<unsigned int>>> m_indices;
    QHash<QPair<unsigned int, QString>, QByteArray> m_blobs;
    QHash<QString, QString> m_dbSettings;
    VDHash<int, SCHEDULE_DATA> m_schedules;
};

}  // namespace vorandel
