#include "fuzztarget.h"

#include "constants.h"
#include "serverclient.h"
#include "storemirror.h"
#include "wire.h"

#include <QHash>

using namespace vorandel;

namespace {

// The pushes that fill a networked console's copy of the store, by the input's first byte.
const QStringList Pushes{vdserver::wire::StoreBegin,    vdserver::wire::StoreObjects, vdserver::wire::StoreRemoved,
                         vdserver::wire::StoreSettings, vdserver::wire::StoreSchedules};

ObjectInfo sampleObject(TYPE_ID uid, const QString& surname)
{
    ObjectInfo object;
    object.uid = uid;
    object.type = db::orgstructure::WORKER;
    object.parameters = {{QStringLiteral("PT_SURNAME"), surname}};
    return object;
}

// What a copy holds that a push can change.
struct MirrorState
{
    QHash<QString, OBJECT_HASH> tables;
    QHash<QString, QString> settings;

    explicit MirrorState(const vdserver::StoreMirror& mirror)
    {
        for (const QString& dataname : {SUBJECT_DATANAME, PASS_REQUEST_DATANAME}) {
            if (const OBJECT_HASH* objects = mirror.objects(dataname))
                tables.insert(dataname, *objects);
        }
        settings = mirror.settings();
    }
    bool operator==(const MirrorState& o) const { return tables == o.tables && settings == o.settings; }
};

// Whether the payload of a push reads whole as what that push carries.
bool readsWhole(const QString& push, const QByteArray& data)
{
    VDDataStream in(data);
    QString dataname;
    if (push == vdserver::wire::StoreBegin) {
        qint32 total = 0;
        return vdstream::readAll(in, total);
    }
    if (push == vdserver::wire::StoreObjects) {
        QList<ObjectInfo> objects;
        return vdstream::readAll(in, dataname, objects);
    }
    if (push == vdserver::wire::StoreRemoved) {
        QList<TYPE_ID> uids;
        return vdstream::readAll(in, dataname, uids);
    }
    if (push == vdserver::wire::StoreSettings) {
        QHash<QString, QString> settings;
        return vdstream::readAll(in, settings);
    }
    QHash<int, SCHEDULE_DATA> schedules;
    return vdstream::readAll(in, schedules);
}

// A networked console's copy of the store, as the server's pushes fill it: a push that can't be
// read whole is left alone, and leaves the copy as it was.
FuzzTarget mirrorTarget()
{
    const QString name = QStringLiteral("console.mirror");
    const auto run = [name](const QByteArray& input) {
        if (input.isEmpty())
            return;
        static vdserver::ServerClient* const client =  // never destroyed, as the application
            new vdserver::ServerClient(QStringLiteral("127.0.0.1"), 1);
        vdserver::StoreMirror mirror(client);
        Command filled;
        filled.name = vdserver::wire::StoreObjects;
        filled.data = payload(SUBJECT_DATANAME, QList<ObjectInfo>{sampleObject(3, QStringLiteral("Комаров"))});
        emit client->pushed(filled);
        filled.name = vdserver::wire::StoreSettings;
        filled.data = payload(QHash<QString, QString>{{QStringLiteral("PT_PASS_REQUEST_SEQUENCE"), QStringLiteral("П-{N}")}});
        emit client->pushed(filled);

        Command push;
        push.name = Pushes.at(quint8(input.front()) % Pushes.size());
        push.data = input.mid(1);
        const MirrorState before(mirror);
        emit client->pushed(push);
        if (!readsWhole(push.name, push.data) && !(MirrorState(mirror) == before))
            fuzzFailure(name, QStringLiteral("a push that does not read whole changed the copy"));
    };
    const auto seeds = [] {
        const auto pushed = [](int push, const QByteArray& data) { return QByteArray(1, char(push)) + data; };
        return QList<QByteArray>{
            pushed(0, payload(qint32(48))),
            pushed(1, payload(PASS_REQUEST_DATANAME, QList<ObjectInfo>{sampleObject(11, QStringLiteral("Ильина")),
                                                                       sampleObject(12, QStringLiteral("Поляков"))})),
            pushed(2, payload(SUBJECT_DATANAME, QList<TYPE_ID>{3, 4})),
            pushed(3, payload(QHash<QString, QString>{{QStringLiteral("PT_PD_DENY_STORE_USER_PHOTOS"),
                                                       QStringLiteral("true")}})),
            pushed(4, payload(QHash<int, SCHEDULE_DATA>{{1, {1, QStringLiteral("Будни"), QStringLiteral("1-5 08:00-18:00")}}})),
        };
    };
    return {name, run, seeds};
}

}  // namespace

QList<FuzzTarget> consoleTargets()
{
    return {mirrorTarget()};
}
