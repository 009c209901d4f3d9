#include "constants.h"
#include "faketransport.h"
#include "localstorage.h"
#include "records.h"
#include "requestcardwizardpage.h"
#include "testenvironment.h"
#include "vdserverinterface.h"

#include <QComboBox>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

using namespace vorandel;

namespace {

using records::object;

const QString Bind = QStringLiteral("devices.bind");
const QString Unbind = QStringLiteral("devices.unbind");
const QString ReadCard = QStringLiteral("devices.readCard");

}  // namespace

// The card page talks to a reader under a name of its own, for as long as it lives.
class TestRequestCardWizardPage : public QObject
{
    Q_OBJECT

    TestEnvironment environment;

    static void deliver(const QString& name, unsigned int device, const QString& command,
                        const QHash<QString, QVariant>& parameters)
    {
        Command pushed;
        pushed.name = name;
        pushed.type = 8;
        VDDataStream out(&pushed.data, QIODevice::WriteOnly);
        out << device << command << parameters;
        VDServerInterface::instance()->deliver(pushed);
    }

    static QStringList shownCards(const RequestCardWizardPage& page)
    {
        QStringList numbers;
        const QListWidget* list = page.findChild<QListWidget*>("cardList");
        for (int row = 0; row < list->count(); ++row)
            numbers << list->item(row)->text();
        return numbers;
    }

private slots:
    void initTestCase()
    {
        TestEnvironment::login(1);
        LocalStorage* store = LocalStorage::instance();
        store->clear();
        store->setObjects(SUBJECT_DATANAME, {object(11, db::orgstructure::WORKER, {{"PT_SURNAME", "Орлов"}})});
        store->setObjects(DEVICE_DATANAME, {object(80, "OT_DEVICE", {{"PT_NAME", "Считыватель"}}),
                                            object(81, "OT_DEVICE", {{"PT_NAME", "Списан"}, {"PT_OBJECTSTATE", "D"}})});
    }

    void cleanupTestCase() { LocalStorage::instance()->clear(); }

    void registeredWhileItLives()
    {
        FakeTransport transport;
        CommandType result;
        {
            RequestCardWizardPage page;
            QVERIFY(page.exchangeName().startsWith(QLatin1String("RequestCardWizardPage ")));
            const qint64 made = page.exchangeName().section(QLatin1Char(' '), -1).toLongLong();
            QVERIFY(qAbs(made - QDateTime::currentSecsSinceEpoch()) < 5);
            result = CommandType(8, QStringLiteral("command_result:") + page.exchangeName());
            QVERIFY(VDServerInterface::instance()->localCommandTypes().contains(result));
            QVERIFY(transport.count(QStringLiteral("exchange.local_plugins_info")) >= 1);
            QCOMPARE(page.title(), QStringLiteral("Карты доступа"));
        }
        QVERIFY(!VDServerInterface::instance()->localCommandTypes().contains(result));
    }

    // Bound first, read once the bind is answered, unbound on the result; the card goes to the list.
    void readsACardOnTheWire()
    {
        FakeTransport transport;
        RequestCardWizardPage page;
        page.setSubjectUid(11);
        auto* devices = page.findChild<QComboBox*>("deviceCombo");
        QCOMPARE(devices->count(), 1);
        QSignalSpy failures(&page, &RequestCardWizardPage::showCriticalMessage);

        page.findChild<QPushButton*>("readCardButton")->click();
        QCOMPARE(transport.count(Bind), 1);
        QString identity;
        unsigned int device = 0;
        QStringList commands;
        readPayload(transport.sent(Bind).first(), identity, device, commands);
        QCOMPARE(identity, page.exchangeName());
        QCOMPARE(device, 80u);
        QCOMPARE(commands, QStringList{"read_card"});
        QCOMPARE(transport.count(ReadCard), 0);
        transport.answer(Bind, Command::StatusOk);
        QCOMPARE(transport.count(ReadCard), 1);

        const QString result = QStringLiteral("command_result:") + page.exchangeName();
        deliver(result, 80, QStringLiteral("open_door"), {});
        QCOMPARE(transport.count(Unbind), 0);  // another command: the bind stays
        // The unbind follows the device the result names.
        deliver(result, 82, QStringLiteral("read_card"),
                {{"card", object(0, db::misc::CARD, {{db::card::NUMBER, "7123"}}).toByteArray()}});
        QCOMPARE(transport.count(Unbind), 1);
        readPayload(transport.sent(Unbind).first(), identity, device, commands);
        QCOMPARE(device, 82u);
        QCOMPARE(shownCards(page), QStringList{"7123"});
        QCOMPARE(failures.count(), 0);
    }

    void aFailedReadSaysSo_data()
    {
        QTest::addColumn<bool>("bindRefused");
        QTest::newRow("bind refused") << true;
        QTest::newRow("reader reports an error") << false;
    }

    void aFailedReadSaysSo()
    {
        QFETCH(bool, bindRefused);
        FakeTransport transport;
        RequestCardWizardPage page;
        page.setSubjectUid(11);
        QSignalSpy failures(&page, &RequestCardWizardPage::showCriticalMessage);
        page.findChild<QPushButton*>("readCardButton")->click();
        if (bindRefused) {
            transport.answer(Bind, Command::StatusFailed);
            QCOMPARE(transport.count(ReadCard), 0);
        } else {
            transport.answer(Bind, Command::StatusOk);
            deliver(QStringLiteral("command_result:") + page.exchangeName(), 80, QStringLiteral("read_card"),
                    {{"status", "error"}});
        }
        QCOMPARE(failures.count(), 1);
        QCOMPARE(failures.first().first().toString(), QStringLiteral("Не удалось считать карту"));
        QVERIFY(shownCards(page).isEmpty());
    }
};

QTEST_MAIN(TestRequestCardWizardPage)
#include "tst_requestcardwizardpage.moc"
