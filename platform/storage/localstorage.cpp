#include "localstorage.h"

#include "constants.h"
#include "objecttreemodel.h"
#include "platformlogging.h"
#include "processwide.h"

#include <QCryptographicHash>

#include <algorithm>

namespace vorandel {

namespace {
// One worker's entries in the index of that name.
void indexWorker(const QString& name, TrieStatic<unsigned int>& trie, const ObjectInfo& worker)
{
    if (name == SUBJECT_WORKERNUM_INDEX)
        trie.add(worker.parameters.value(QStringLiteral("PT_WORKERNUM")).toLower(), worker.uid);
    else
        trie.addByWords(worker.parameters.value(QStringLiteral("PT_SURNAME")).toLower(), worker.uid);
}
}  // namespace

LocalStorage* LocalStorage::instance()
{
    return ProcessWide<LocalStorage>::get(true, [] { return new LocalStorage; });
}

LocalStorage::LocalStorage()
{
    // The signals may cross queued connections.
    qRegisterMetaType<QList<TYPE_ID>>("QList<vorandel::TYPE_ID>");
}

LocalStorage::~LocalStorage() = default;

LocalStorage::Table* LocalStorage::table(const QString& dataname) const
{
    const auto it = m_tables.find(dataname);
    return it == m_tables.end() ? nullptr : it->second.get();
}

const OBJECT_HASH* LocalStorage::constObjects(const QString& dataname) const
{
    const Table* t = table(dataname);
    return t && t->set ? &t->objects : nullptr;
}

const ObjectInfo& LocalStorage::constObject(unsigned int uid, const QString& dataname) const
{
    static const ObjectInfo invalid;
    const Table* t = table(dataname);
    if (!t)
        return invalid;
    const auto it = t->objects.constFind(uid);
    return it == t->objects.cend() ? invalid : it.value();
}

ObjectInfo LocalStorage::object(unsigned int uid) const
{
    for (const auto& entry : m_tables) {
        const auto it = entry.second->objects.constFind(uid);
        if (it != entry.second->objects.cend())
            return it.value();
    }
    return {};
}

ObjectInfo LocalStorage::card(unsigned long long number, bool withDismissed) const
{
    const Table* cards = table(CARD_DATANAME);
    if (!cards || number == 0)
        return {};
    for (const ObjectInfo& card : cards->objects) {
        if (ot_card::number(card) != number)
            continue;
        if (!withDismissed && isDismissed(constObject(ot_card::uid(card), SUBJECT_DATANAME)))
            continue;
        return card;
    }
    return {};
}

QByteArray LocalStorage::blob(unsigned int uid, const QString& name) const
{
    return m_blobs.value({uid, name});
}

QByteArray LocalStorage::blobMd5(unsigned int uid, const QString& name) const
{
    return md5Of(blob(uid, name));
}

void LocalStorage::setBlob(unsigned int uid, const QString& name, const QByteArray& data)
{
    if (data.isEmpty())
        m_blobs.remove({uid, name});
    else
        m_blobs.insert({uid, name}, data);
}

QByteArray LocalStorage::md5Of(const QByteArray& data)
{
    if (data.isEmpty())
        return {};
    return QCryptographicHash::hash(data, QCryptographicHash::Md5).toHex();
}

ObjectTreeModel* LocalStorage::model(const QString& dataname)
{
    auto& slot = m_tables[dataname];
    if (!slot)
        slot = std::make_unique<Table>();
    if (!slot->model) {
        // The organisation structure is shown as what it is, departments under firms under the
        // root; every other table is a list.
        const auto shape = dataname == ORGSTRUCTURE_DATANAME ? ObjectTreeModel::Tree : ObjectTreeModel::List;
        slot->model = new ObjectTreeModel(shape, this);
        slot->model->setObjectName(dataname);
        // By uid, the order in which the server made them: the same rows in the same order in
        // every run, whatever the order of the hash.
        QList<TYPE_ID> uids = slot->objects.keys();
        std::sort(uids.begin(), uids.end());
        for (const TYPE_ID uid : qAsConst(uids))
            slot->model->add(slot->objects.value(uid));
    }
    return slot->model;
}

TrieStatic<unsigned int>* LocalStorage::index(const QString& name)
{
    if (name != SUBJECT_WORKERNUM_INDEX && name != SUBJECT_SURNAME_INDEX)
        return nullptr;
    auto& slot = m_indices[name];
    if (!slot) {
        slot = std::make_unique<TrieStatic<unsigned int>>();
        if (const OBJECT_HASH* workers = constObjects(SUBJECT_DATANAME)) {
            for (const ObjectInfo& worker : *workers)
                indexWorker(name, *slot, worker);
        }
    }
    return slot.get();
}

VDHash<int, SCHEDULE_DATA> LocalStorage::schedules() const
{
    return m_schedules;
}

QHash<QString, QString> LocalStorage::dbSettings() const
{
    return m_dbSettings;
}

void LocalStorage::setObjects(const QString& dataname, const QList<ObjectInfo>& objects)
{
    auto& slot = m_tables[dataname];
    if (!slot)
        slot = std::make_unique<Table>();
    slot->set = true;
    QList<TYPE_ID> uids;
    uids.reserve(objects.size());
    slot->objects.reserve(slot->objects.size() + objects.size());
    for (const ObjectInfo& info : objects) {
        slot->objects.insert(info.uid, info);
        uids.append(info.uid);
        if (slot->model)
            slot->model->add(info);
    }
    if (dataname == SUBJECT_DATANAME)
        indexWorkers(objects);
    qCDebug(lcStorage) << "set" << objects.size() << "objects of" << dataname;
    emit dataChanged(dataname, uids);
}

void LocalStorage::removeObjects(const QString& dataname, const QList<TYPE_ID>& uids)
{
    if (Table* t = table(dataname)) {
        for (TYPE_ID uid : uids) {
            t->objects.remove(uid);
            if (t->model)
                t->model->remove(uid);
        }
    }
    if (dataname == SUBJECT_DATANAME)
        unindexWorkers(uids);
    qCDebug(lcStorage) << "removed" << uids.size() << "objects of" << dataname;
    emit dataRemoved(dataname, uids);
}

void LocalStorage::setDbSettings(const QHash<QString, QString>& settings)
{
    m_dbSettings = settings;
}

void LocalStorage::setSchedules(const VDHash<int, SCHEDULE_DATA>& schedules)
{
    m_schedules = schedules;
}

void LocalStorage::clear()
{
    for (auto& entry : m_tables) {
        entry.second->objects.clear();
        entry.second->set = false;
        if (entry.second->model)
            entry.second->model->clear();
    }
    for (auto& entry : m_indices)
        *entry.second = TrieStatic<unsigned int>();
    m_blobs.clear();
    m_dbSettings.clear();
    m_schedules.clear();
}

void LocalStorage::indexWorkers(const QList<ObjectInfo>& workers)
{
    for (auto& entry : m_indices) {
        TrieStatic<unsigned int>& trie = *entry.second;
        for (const ObjectInfo& worker : workers) {
            trie.remove(worker.uid);
            indexWorker(entry.first, trie, worker);
        }
    }
}

void LocalStorage::unindexWorkers(const QList<TYPE_ID>& uids)
{
    for (auto& entry : m_indices) {
        for (TYPE_ID uid : uids)
            entry.second->remove(uid);
    }
}

}  // namespace vorandel
