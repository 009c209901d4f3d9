#include "constants.h"
#include "dbquery.h"
#include "objectinfo.h"
#include "vddatastream.h"

#include <QPolygon>
#include <QTimeZone>
#include <QtTest>

#include <functional>

using namespace vorandel;

// The records' readers take payloads from the other side: what can't be trusted is refused, cut
// short or not, and what the exchange does carry still reads back. Each record's own round trip
// is held by its fuzz target (tests/fuzz), whose seeds are written by these writers.
class TestRecords : public QObject
{
    Q_OBJECT

    template <typename T>
    static T roundTrip(const T& value)
    {
        QByteArray bytes;
        VDDataStream out(&bytes, QIODevice::WriteOnly);
        out << value;
        T read{};
        VDDataStream in(bytes);
        in >> read;
        return read;
    }

private slots:
    // What the other side may send: a count that claims more than the payload holds, and values
    // of types that no record of the exchange carries. Each must end the reading with an error
    // and defaults, without allocating what the count claims and without reaching the readers
    // of arbitrary types.
    void malformedPayloadsAreRefused_data()
    {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QString>("reader");

        const auto bytes = [](const std::function<void(QDataStream&)>& write) {
            QByteArray payload;
            VDDataStream out(&payload, QIODevice::WriteOnly);
            write(out);
            return payload;
        };
        const quint32 twoBillion = 0x7fffffff;
        QTest::newRow("list of two billion links")
            << bytes([&](QDataStream& out) { out << twoBillion; }) << "links";
        QTest::newRow("object with a vast parameter count")
            << bytes([&](QDataStream& out) { out << 1u << QStringLiteral("OT_WORKER") << 0u << twoBillion; })
            << "object";
        QTest::newRow("object cut short")
            << bytes([&](QDataStream& out) { out << 42u << QStringLiteral("OT_PASS_REQUEST") << 7u; }) << "object";
        QTest::newRow("polygon in a result cell")
            << bytes([&](QDataStream& out) { out << 0 << 1 << 1 << QVector<QVariant>{QVariant(QPolygon(3))}; })
            << "result";
        QTest::newRow("user type in a result cell")
            << bytes([&](QDataStream& out) {
                   out << 0 << 1 << 1 << quint32(1) << quint32(QMetaType::User) << qint8(0) << QByteArray("Rocket");
               })
            << "result";
        QTest::newRow("list inside a variant")
            << bytes([&](QDataStream& out) {
                   out << QHash<QString, QVariant>{{QStringLiteral("status"), QVariantList{1, 2}}};
               })
            << "hash";
        // Qt reads such a time with no zone at all, and crashes when it is written again.
        const auto unknownZone = [](QDataStream& out) {
            out << QDate(2026, 11, 23) << QTime(9, 30) << qint8(Qt::TimeZone) << QStringLiteral("Nowhere/Atlantis");
        };
        QTest::newRow("link dated in an unknown zone")
            << bytes([&](QDataStream& out) {
                   out << 1u << 1u << 2u << 24u << 0u;
                   unknownZone(out);
               })
            << "links";
        QTest::newRow("time of an unknown zone in a variant")
            << bytes([&](QDataStream& out) {
                   out << 1u << QStringLiteral("when") << quint32(QMetaType::QDateTime) << qint8(0);
                   unknownZone(out);
               })
            << "hash";
    }

    void malformedPayloadsAreRefused()
    {
        QFETCH(QByteArray, payload);
        QFETCH(QString, reader);
        VDDataStream in(payload);
        bool empty = false;
        if (reader == QLatin1String("links")) {
            QList<INHERIT_DATA> links;
            in >> links;
            empty = links.isEmpty();
        } else if (reader == QLatin1String("object")) {
            ObjectInfo object;
            in >> object;
            empty = object.parameters.isEmpty();
            QVERIFY(!ObjectInfo(payload).isValid());
        } else if (reader == QLatin1String("result")) {
            QList<DbResult> results;
            VDDataStream list(QByteArray("\0\0\0\1", 4) + payload);
            list >> results;
            QVERIFY(list.status() != QDataStream::Ok);
            DbResult result;
            in >> result;
            empty = results.isEmpty() && result.cells.isEmpty();
        } else {
            QHash<QString, QVariant> values;
            in >> values;
            empty = values.isEmpty();
        }
        QVERIFY(in.status() != QDataStream::Ok);
        QVERIFY(empty);
    }

    void wireValuesStillRoundTrip()
    {
        const QHash<QString, QVariant> values{{QStringLiteral("status"), QStringLiteral("ok")},
                                              {QStringLiteral("card"), QByteArray("\x01\x02")},
                                              {QStringLiteral("when"), QDateTime(QDate(2026, 1, 2), QTime(3, 4))},
                                              {QStringLiteral("zoned"), QDateTime(QDate(2026, 1, 2), QTime(3, 4),
                                                                                  QTimeZone(3 * 3600))},
                                              {QStringLiteral("count"), 7ull},
                                              {QStringLiteral("none"), QVariant()}};
        QCOMPARE(roundTrip(values), values);
    }

    void dbResultCellsBeyondTheDataAreInvalid()
    {
        DbResult result;
        result.rowCount = 2;
        result.columnCount = 3;
        result.cells = {QVariant(1u), QVariant(2), QVariant(3u)};  // one row only
        QCOMPARE(result.cell(0, 2).toUInt(), 3u);
        QVERIFY(!result.cell(1, 0).isValid());
        QVERIFY(!result.cell(0, 3).isValid());
    }

    // A request may be edited only before a decision, and removed unless it is active. States
    // outside the known ones, below as above, count as undecided.
    void requestRules_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<bool>("editable");
        QTest::addColumn<bool>("removable");
        QTest::newRow("negative") << -1 << true << true;
        QTest::newRow("not confirmed") << 0 << true << true;
        QTest::newRow("rejected") << 1 << false << true;
        QTest::newRow("active") << 4 << false << false;
        QTest::newRow("finished") << 5 << false << true;
        QTest::newRow("unknown") << 6 << true << true;
    }

    void requestRules()
    {
        QFETCH(int, state);
        QFETCH(bool, editable);
        QFETCH(bool, removable);
        QCOMPARE(vorandel::editable(state), editable);
        QCOMPARE(vorandel::removable(state), removable);
    }
};

QTEST_GUILESS_MAIN(TestRecords)
#include "tst_records.moc"
