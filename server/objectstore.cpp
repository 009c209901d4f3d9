#include "objectstore.h"

#include "constants.h"
#include "photos.h"
#include "serverlogging.h"

#include <utility>

namespace vdserver {

using vorandel::ObjectInfo;
using vorandel::TYPE_ID;

ObjectStore::ObjectStore()
{
    for (const QString& dataname : datanames())
        m_tables[dataname];
}

QStringList ObjectStore::datanames()
{
    return {vorandel::ORGSTRUCTURE_DATANAME, vorandel::POLICY_DATANAME,  vorandel::USER_DATANAME,
            vorandel::CONFIRM_LIST_DATANAME, vorandel::JOB_DATANAME,     vorandel::DEVICE_DATANAME,
            vorandel::SUBJECT_DATANAME,      vorandel::CARD_DATANAME,    vorandel::PASS_REQUEST_DATANAME};
}

QString ObjectStore::datanameForType(const QString& type)
{
    static const QHash<QString, QString> datanames = {
        {db::misc::PASS_REQUEST, vorandel::PASS_REQUEST_DATANAME},
        {db::orgstructure::WORKER, vorandel::SUBJECT_DATANAME},
        {db::user::USER, vorandel::USER_DATANAME},
        {db::access::POLICY, vorandel::POLICY_DATANAME},
        {db::orgstructure::SUBJECT_ROOT, vorandel::ORGSTRUCTURE_DATANAME},
        {db::orgstructure::FIRM, vorandel::ORGSTRUCTURE_DATANAME},
        {db::orgstructure::DEPARTMENT, vorandel::ORGSTRUCTURE_DATANAME},
        {db::misc::CARD, vorandel::CARD_DATANAME},
        {DEVICE_TYPE, vorandel::DEVICE_DATANAME},
        {JOB_TYPE, vorandel::JOB_DATANAME},
        {CONFIRM_LIST_TYPE, vorandel::CONFIRM_LIST_DATANAME},
    };
    return datanames.value(type);
}

const vorandel::OBJECT_HASH* ObjectStore::objects(const QString& dataname) const
{
    const auto it = m_tables.find(dataname);
    return it == m_tables.end() ? nullptr : &it->second;
}

const ObjectInfo* ObjectStore::object(TYPE_ID uid) const
{
    for (const auto& [dataname, objects] : m_tables) {
        const auto it = objects.constFind(uid);
        if (it != objects.cend())
            return &it.value();
    }
    return nullptr;
}

const ObjectInfo* ObjectStore::object(TYPE_ID uid, const QString& dataname) const
{
    const vorandel::OBJECT_HASH* table = objects(dataname);
    if (!table)
        return nullptr;
    const auto it = table->constFind(uid);
    return it == table->cend() ? nullptr : &it.value();
}

TYPE_ID ObjectStore::cardByNumber(vorandel::CARD_ID number) const
{
    if (number == 0)
        return 0;
    for (const ObjectInfo& card : *objects(vorandel::CARD_DATANAME)) {
        if (ot_card::number(card) == number)
            return card.uid;
    }
    return 0;
}

void ObjectStore::put(const ObjectInfo& object)
{
    const QString dataname = datanameForType(object.type);
    vorandel::OBJECT_HASH* objects = table(dataname);
    if (!objects || object.uid == 0) {
        qCWarning(lcServer) << "no place for" << object;
        return;
    }
    objects->insert(object.uid, object);
    m_changes.changed[dataname].insert(object.uid);
}

void ObjectStore::remove(TYPE_ID uid)
{
    for (auto& [dataname, objects] : m_tables) {
        if (objects.remove(uid) == 0)
            continue;
        auto changed = m_changes.changed.find(dataname);
        if (changed != m_changes.changed.end())
            changed->remove(uid);
        m_changes.removed[dataname].insert(uid);
        break;
    }
    for (auto it = m_blobs.begin(); it != m_blobs.end();) {
        if (it.key().first == uid)
            it = m_blobs.erase(it);
        else
            ++it;
    }
    m_promisedPortraits.remove(uid);
    m_templates.remove(uid);
}

ObjectChanges ObjectStore::takeChanges()
{
    return std::exchange(m_changes, {});
}

QByteArray ObjectStore::blob(TYPE_ID uid, const QString& name)
{
    if (name == PHOTO_KEY && m_promisedPortraits.remove(uid)) {
        if (const ObjectInfo* worker = object(uid, vorandel::SUBJECT_DATANAME))
            setBlob(uid, name, Photos::photo(*worker));
    }
    return m_blobs.value({uid, name});
}

void ObjectStore::setBlob(TYPE_ID uid, const QString& name, const QByteArray& bytes)
{
    if (name == PHOTO_KEY)
        m_promisedPortraits.remove(uid);
    if (bytes.isEmpty())
        m_blobs.remove({uid, name});
    else
        m_blobs.insert({uid, name}, bytes);
}

void ObjectStore::promisePortrait(TYPE_ID worker)
{
    m_promisedPortraits.insert(worker);
}

QVector<vorandel::TEMPLATE_DATA> ObjectStore::templates(TYPE_ID worker) const
{
    return m_templates.value(worker);
}

void ObjectStore::setTemplates(TYPE_ID worker, const QVector<vorandel::TEMPLATE_DATA>& templates)
{
    if (templates.isEmpty())
        m_templates.remove(worker);
    else
        m_templates.insert(worker, templates);
}

void ObjectStore::setSetting(const QString& key, const QString& value)
{
    m_settings.insert(key, value);
}

void ObjectStore::setSchedules(const VDHash<int, vorandel::SCHEDULE_DATA>& schedules)
{
    m_schedules = schedules;
}

void ObjectStore::clear()
{
    for (auto& [dataname, objects] : m_tables)
        objects.clear();
    m_lastUid = 0;
    m_changes = {};
    m_blobs.clear();
    m_promisedPortraits.clear();
    m_templates.clear();
    m_settings.clear();
    m_schedules.clear();
}

vorandel::OBJECT_HASH* ObjectStore::table(const QString& dataname)
{
    const auto it = m_tables.find(dataname);
    return it == m_tables.end() ? nullptr : &it->second;
}

}  // namespace vdserver
