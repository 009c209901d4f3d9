#include "fuzztarget.h"

#include "command.h"
#include "constants.h"
#include "dbquery.h"
#include "objectinfo.h"
#include "servicerecords.h"

#include <algorithm>
#include <cmath>

using namespace vorandel;

namespace {

const QDateTime Morning(QDate(2026, 11, 23), QTime(9, 30), Qt::LocalTime);
const QDateTime Evening(QDate(2026, 11, 23), QTime(18, 0), Qt::UTC);

template <typename Record>
bool equal(const Record& a, const Record& b)
{
    return a == b;
}

// A record decoded from the wire: whatever its reader accepts, its writer writes back and its
// reader reads again, to the same record and to the last byte. Values that never equal
// themselves (a NaN inside a variant) count as the same when they are written the same.
template <typename Record>
FuzzTarget recordTarget(const QString& name, const QList<Record>& samples,
                        bool (*same)(const Record&, const Record&) = &equal<Record>)
{
    const auto run = [name, same](const QByteArray& input) {
        Record first;
        VDDataStream in(input);
        in >> first;
        if (in.status() != QDataStream::Ok)
            return;
        const QByteArray written = payload(first);
        Record second;
        VDDataStream again(written);
        again >> second;
        if (again.status() != QDataStream::Ok || !again.atEnd())
            fuzzFailure(name, QStringLiteral("what the reader accepted does not read back"));
        if (!same(first, second) && payload(second) != written)
            fuzzFailure(name, QStringLiteral("what the reader accepted reads back as another record"));
    };
    const auto seeds = [samples] {
        QList<QByteArray> bytes;
        for (const Record& sample : samples)
            bytes.append(payload(sample));
        return bytes;
    };
    return {name, run, seeds};
}

ObjectInfo sampleRequest()
{
    ObjectInfo request;
    request.uid = 1204;
    request.type = db::misc::PASS_REQUEST;
    request.parent = 7;
    request.parameters = {{db::pass_request::PASSID, QStringLiteral("П-2026-00017")},
                          {db::pass_request::STATE, QStringLiteral("2")},
                          {db::pass_request::LAST_NAME, QStringLiteral("Иванов")},
                          {QStringLiteral("PT_DATE_BEGIN"), Morning.toString(Qt::ISODate)}};
    request.modified = Morning;
    request.inherits.insert(INHERIT_CONFIRM_LIST_PASS_REQUEST,
                            INHERIT_DATA(1204, 31, INHERIT_CONFIRM_LIST_PASS_REQUEST, 1, Morning, Evening));
    request.inherits.insert(INHERIT_CONFIRM_LIST_PASS_REQUEST,
                            INHERIT_DATA(1204, 32, INHERIT_CONFIRM_LIST_PASS_REQUEST, 2));
    request.inheritedBy.insert(INHERIT_CARD, INHERIT_DATA(55, 1204, INHERIT_CARD));
    return request;
}

ObjectInfo sampleWorker()
{
    ObjectInfo worker;
    worker.uid = 55;
    worker.type = db::orgstructure::WORKER;
    worker.parameters = {{QStringLiteral("PT_SURNAME"), QStringLiteral("Петрова")},
                         {QStringLiteral("PT_WORKERNUM"), QStringLiteral("00412")}};
    return worker;
}

DbQuery sampleQuery()
{
    DbQuery query;
    query.queries = QStringList{QStringLiteral("SELECT user_object_id, count( id ) FROM fingers WHERE user_object_id = :id;"),
                     QStringLiteral("SELECT 1;")};
    query.values.insert(QStringLiteral(":id"), {QVariant(55u), false});
    query.values.insert(QStringLiteral(":out"), {QVariant(QStringLiteral("текст")), true});
    query.values.insert(QStringLiteral(":when"), {QVariant(Evening), false});
    query.timeoutMs = 3000;
    return query;
}

// A value of a query read back: a NaN, which never equals itself, is the same as a NaN.
bool sameValue(const DbPreparedQueryValue& a, const DbPreparedQueryValue& b)
{
    const auto isNan = [](const QVariant& v) { return v.userType() == QMetaType::Double && std::isnan(v.toDouble()); };
    if (isNan(a.value) || isNan(b.value))
        return a.output == b.output && isNan(a.value) && isNan(b.value) && a.value.isNull() == b.value.isNull();
    return a == b;
}

// The same query, whatever the order in which its hash of values comes.
bool sameQuery(const DbQuery& a, const DbQuery& b)
{
    if (a.queries != b.queries || a.transaction != b.transaction || a.timeoutMs != b.timeoutMs
        || a.values.size() != b.values.size())
        return false;
    const QList<QString> keys = a.values.uniqueKeys();
    return std::all_of(keys.cbegin(), keys.cend(), [&](const QString& key) {
        const QList<DbPreparedQueryValue> these = a.values.values(key);
        const QList<DbPreparedQueryValue> those = b.values.values(key);
        return these.size() == those.size()
            && std::is_permutation(these.cbegin(), these.cend(), those.cbegin(), sameValue);
    });
}

DbResult sampleResult()
{
    DbResult result;
    result.affected = 2;
    result.rowCount = 2;
    result.columnCount = 3;
    result.cells = {QVariant(qlonglong(55)), QVariant(qlonglong(4)), QVariant(qlonglong(900)),
                    QVariant(qlonglong(56)), QVariant(1.5),          QVariant()};
    result.columnNames = {QStringLiteral("user_object_id"), QStringLiteral("count"), QStringLiteral("child_id")};
    return result;
}

Command sampleCommand()
{
    Command command;
    command.id = 42;
    command.origin = 3;
    command.status = Command::StatusOk;
    command.type = 8;
    command.name = QStringLiteral("data.getUserFingers");
    command.data = payload(QByteArrayLiteral("\x01\x02\xab\xcd"), QList<unsigned int>{55, 56});
    command.text = QStringLiteral("ok");
    return command;
}

}  // namespace

QList<FuzzTarget> recordTargets()
{
    TEMPLATE_DATA finger;
    finger.id = 9;
    finger.device = 4;
    finger.data = QByteArray(64, '\x5a');
    finger.index = 3;
    TEMPLATE_DATA palm = finger;
    palm.kind = 2;
    palm.index = 100;
    palm.extra = QByteArrayLiteral("extra");

    EMAIL_MESSAGE mail{QStringLiteral("pass@example.org"), QStringLiteral("Заявка П-2026-00017"),
                       QStringLiteral("Пропуск готов."), {QStringLiteral("/tmp/card.pdf"), QStringLiteral("photo.png")}};

    QList<FuzzTarget> targets{
        recordTarget<ObjectInfo>(QStringLiteral("record.ObjectInfo"), {ObjectInfo(), sampleRequest(), sampleWorker()}),
        recordTarget<INHERIT_DATA>(QStringLiteral("record.INHERIT_DATA"),
                                   {INHERIT_DATA(), INHERIT_DATA(1204, 31, INHERIT_CONFIRMED_LIST_PASS_REQUEST, 1,
                                                                 Morning, Evening)}),
        recordTarget<ACCESS_CHANGES>(QStringLiteral("record.ACCESS_CHANGES"),
                                     {ACCESS_CHANGES(), ACCESS_CHANGES{55, 70, true, false, 7}}),
        recordTarget<TEMPLATE_DATA>(QStringLiteral("record.TEMPLATE_DATA"), {TEMPLATE_DATA(), finger, palm}),
        recordTarget<BLOB_DATA_RESQUEST>(
            QStringLiteral("record.BLOB_DATA_RESQUEST"),
            {BLOB_DATA_RESQUEST(), BLOB_DATA_RESQUEST{55, QStringLiteral("PT_PHOTO"), QByteArray(32, 'f')}}),
        recordTarget<SYSLOG_DATA>(QStringLiteral("record.SYSLOG_DATA"),
                                  {SYSLOG_DATA(), SYSLOG_DATA{7, QStringLiteral("42"), QStringLiteral("открыт пропуск"),
                                                              Morning}}),
        recordTarget<EMAIL_MESSAGE>(QStringLiteral("record.EMAIL_MESSAGE"), {EMAIL_MESSAGE(), mail}),
        // A NaN among the values never equals itself, and the hash that holds it is written in an
        // order of its own.
        recordTarget<DbQuery>(QStringLiteral("record.DbQuery"), {DbQuery(), sampleQuery()}, &sameQuery),
        recordTarget<DbResult>(QStringLiteral("record.DbResult"), {DbResult(), sampleResult()}),
        // The frame has no equality of its own; nothing in it has an order to lose.
        recordTarget<Command>(QStringLiteral("record.Command"), {Command(), sampleCommand()},
                              [](const Command& a, const Command& b) { return payload(a) == payload(b); }),
    };

    // A record kept as bytes (a card read from a device, a blob): broken bytes give an invalid
    // record, whole ones the record that the stream reader gives.
    targets.append({QStringLiteral("record.ObjectInfo.bytes"),
                    [](const QByteArray& input) {
                        const ObjectInfo fromBytes(input);
                        ObjectInfo streamed;
                        VDDataStream in(input);
                        in >> streamed;
                        const ObjectInfo expected = in.status() == QDataStream::Ok ? streamed : ObjectInfo();
                        if (!(fromBytes == expected))
                            fuzzFailure(QStringLiteral("record.ObjectInfo.bytes"),
                                        QStringLiteral("the bytes give another record than the stream"));
                    },
                    [] {
                        return QList<QByteArray>{QByteArray(), sampleRequest().toByteArray(),
                                                 sampleWorker().toByteArray()};
                    }});
    return targets;
}
