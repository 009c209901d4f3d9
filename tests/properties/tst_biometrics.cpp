#include "serverfixture.h"
#include "testenvironment.h"
#include "vd5sdkdata.h"

#include <QtTest>

using namespace vorandel;

namespace {

TEMPLATE_DATA print(qint16 index, int kind = 0, const QByteArray& data = "t")
{
    TEMPLATE_DATA t;
    t.index = index;
    t.kind = kind;
    t.data = data;
    return t;
}

}  // namespace

// The prints that the embedded server keeps: checked whole before they are stored, and locked
// where the database forbids keeping them. The fingerprint window and the card reader in front of
// the server are driven by the whole console's test.
class TestBiometrics : public QObject
{
    Q_OBJECT

    TestEnvironment environment;
    ServerFixture f;
    TYPE_ID worker = 0;

    QList<TEMPLATE_DATA> fingersOf(TYPE_ID uid)
    {
        QMap<unsigned int, TEMPLATE_DATA> map;
        VDDataStream in(f.data(QStringLiteral("getUserFingers"), QList<unsigned int>{uid}).data);
        in >> map;
        return map.values(uid);
    }

private slots:
    void initTestCase() { worker = hire(f); }

    void storedPrintsAreChecked_data()
    {
        QTest::addColumn<QList<TEMPLATE_DATA>>("prints");
        QTest::addColumn<QString>("refusal");
        QTest::newRow("fingers, palms and a face") << QList<TEMPLATE_DATA>{print(0), print(9), print(100, 2), print(100, 3), print(201)}
                                                   << QString();
        QTest::newRow("none at all") << QList<TEMPLATE_DATA>() << QString();
        QTest::newRow("unknown index") << QList<TEMPLATE_DATA>{print(0), print(10)} << "Неизвестный вид шаблона: 10";
        QTest::newRow("no data") << QList<TEMPLATE_DATA>{print(3, 0, QByteArray())} << "Шаблон 3 пуст";
        QTest::newRow("a finger twice") << QList<TEMPLATE_DATA>{print(4), print(4)} << "Шаблон 4 передан дважды";
    }

    // A refused set leaves the prints as they were.
    void storedPrintsAreChecked()
    {
        QFETCH(QList<TEMPLATE_DATA>, prints);
        QFETCH(QString, refusal);
        QCOMPARE(f.data(QStringLiteral("setUserFingers"), worker, QList<TEMPLATE_DATA>{print(5)}).status,
                 int(Command::StatusOk));
        const Command answer = f.data(QStringLiteral("setUserFingers"), worker, prints);
        const QList<TEMPLATE_DATA> now = fingersOf(worker);
        if (!refusal.isEmpty()) {
            QCOMPARE(answer.status, int(Command::StatusFailed));
            QCOMPARE(ServerFixture::first<QString>(answer), refusal);
            QCOMPARE(now.size(), 1);
            return;
        }
        QCOMPARE(answer.status, int(Command::StatusOk));
        QCOMPARE(now.size(), prints.size());
        for (const TEMPLATE_DATA& stored : now)
            QVERIFY(stored.id != 0);
    }

    void printsAreLockedByTheDatabaseSetting()
    {
        f.server.setDbSetting(db::database::PD_DENY_STORE_USER_PHOTOS, QStringLiteral("true"));
        const Command answer = f.data(QStringLiteral("setUserFingers"), worker, QList<TEMPLATE_DATA>{print(1)});
        f.server.setDbSetting(db::database::PD_DENY_STORE_USER_PHOTOS, QString());
        QCOMPARE(answer.status, int(Command::StatusBiometricsLocked));
    }
};

QTEST_MAIN(TestBiometrics)
#include "tst_biometrics.moc"
