#include "constants.h"
#include "localstorage.h"
#include "records.h"
#include "testenvironment.h"
#include "workercardview.h"

#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

using namespace vorandel;

namespace {

using Parameters = QHash<QString, QString>;

constexpr TYPE_ID Worker = 11;

using records::card;
using records::object;

ObjectInfo worker()
{
    return object(Worker, db::orgstructure::WORKER,
                  {{"PT_SURNAME", "Орлов"}, {"PT_NAME", "Пётр"}, {"PT_WORKERNUM", "000011"}, {"PT_JOB", "90"},
                   {"PT_PINCODE", "1234"}},
                  2);
}

OBJECT_HASH shown(const ObjectInfo& record)
{
    OBJECT_HASH objects;
    objects.insert(record.uid, record);
    return objects;
}

QStringList numbers(const QList<ObjectInfo>& cards)
{
    QStringList list;
    for (const ObjectInfo& card : cards)
        list << card.parameters.value(db::card::NUMBER);
    return list;
}

}  // namespace

// The card tab of the stand-in: numbers refused with a reason, and card changes that are neither
// lost nor sent twice.
class TestWorkerCardView : public QObject
{
    Q_OBJECT

    TestEnvironment environment;

private slots:
    void initTestCase()
    {
        LocalStorage* store = LocalStorage::instance();
        store->clear();
        store->setObjects(SUBJECT_DATANAME, {worker(), object(12, db::orgstructure::WORKER,
                                                               {{"PT_SURNAME", "Котов"}, {"PT_NAME", "Иван"}}, 2)});
        store->setObjects(CARD_DATANAME, {card(7002, 12, 61)});
    }

    void cleanupTestCase() { LocalStorage::instance()->clear(); }

    void typedCardNumbers_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("refusal");  // empty: added
        QTest::newRow("a number") << " 7050 " << QString();
        QTest::newRow("letters") << "70a0" << "«70a0» не номер карты: номер состоит из цифр и не равен нулю";
        QTest::newRow("signed") << "+7050" << "«+7050» не номер карты: номер состоит из цифр и не равен нулю";
        QTest::newRow("zero") << "0" << "«0» не номер карты: номер состоит из цифр и не равен нулю";
        QTest::newRow("too long") << "184467440737095516160"
                                  << "«184467440737095516160» не номер карты: номер состоит из цифр и не равен нулю";
        QTest::newRow("the colleague's") << "7002" << "Карта 7002 уже выдана сотруднику Котов Иван";
        QTest::newRow("already listed") << "7001" << "Карта 7001 уже есть в списке";
    }

    void typedCardNumbers()
    {
        QFETCH(QString, typed);
        QFETCH(QString, refusal);
        WorkerCardView view;
        view.setCurrent(shown(worker()));
        view.setChangeCardEnabled(true);
        view.setCards({card(7001, Worker)});
        QSignalSpy refused(&view, &WorkerCardView::showCriticalMessage);
        QSignalSpy edits(&view, &PropertyBaseWidget::dataEdited);
        auto* number = view.findChild<QLineEdit*>("cardNumberEdit");
        number->setText(typed);
        view.findChild<QPushButton*>("addCardButton")->click();
        if (refusal.isEmpty()) {
            QCOMPARE(refused.count(), 0);
            QCOMPARE(numbers(view.cards()), (QStringList{"7001", "7050"}));
            QCOMPARE(edits.count(), 1);
            QVERIFY(number->text().isEmpty());
        } else {
            QCOMPARE(refused.count(), 1);
            QCOMPARE(refused.first().first().toString(), refusal);
            QCOMPARE(numbers(view.cards()), QStringList{"7001"});
            QCOMPARE(number->text(), typed);  // left to be corrected
        }
    }

    // Card changes go as one task; a failure keeps them to be sent again, a success makes them
    // the worker's cards.
    void cardChangesAreHandedOnOnce()
    {
        WorkerCardView view;
        view.setCurrent(shown(worker()));
        view.setChangeCardEnabled(true);
        view.setCards({card(7001, Worker), card(7003, Worker)});
        QSignalSpy tasks(&view, &WorkerCardView::appendTask);
        view.applyChanges();
        QCOMPARE(tasks.count(), 0);

        auto* number = view.findChild<QLineEdit*>("cardNumberEdit");
        number->setText("7050");
        view.findChild<QPushButton*>("addCardButton")->click();
        view.findChild<QListWidget*>("cardList")->setCurrentRow(0);
        view.findChild<QPushButton*>("removeCardButton")->click();
        QCOMPARE(numbers(view.cards()), (QStringList{"7003", "7050"}));
        QCOMPARE(view.editedProperties(), Parameters());

        view.applyChanges();
        view.applyChanges();  // the answer hasn't come: nothing twice
        QCOMPARE(tasks.count(), 1);
        const TaskInfo task = tasks.first().first().value<TaskInfo>();
        QCOMPARE(task.type, QStringLiteral("update_worker_cards"));
        QCOMPARE(task.uid, Worker);
        QCOMPARE(task.receiver.data(), &view);
        QCOMPARE(numbers({ObjectInfo(task.params.value("add").toByteArray())}), QStringList{"7050"});
        QCOMPARE(numbers({ObjectInfo(task.params.value("delete").toByteArray())}), QStringList{"7001"});
        QCOMPARE(ot_card::uid(ObjectInfo(task.params.value("add").toByteArray())), Worker);

        QSignalSpy refused(&view, &WorkerCardView::showCriticalMessage);
        QVERIFY(QMetaObject::invokeMethod(&view, task.slot.toLatin1(), Q_ARG(vorandel::TYPE_ID, 0),
                                          Q_ARG(QString, task.errorMessage)));
        QCOMPARE(refused.count(), 1);
        view.applyChanges();
        QCOMPARE(tasks.count(), 2);
        QVERIFY(QMetaObject::invokeMethod(&view, task.slot.toLatin1(), Q_ARG(vorandel::TYPE_ID, Worker),
                                          Q_ARG(QString, QString())));
        QCOMPARE(numbers(view.cards()), (QStringList{"7003", "7050"}));
        view.applyChanges();
        QCOMPARE(tasks.count(), 2);

        // Dropped edits: the PIN as it was, and no card pending.
        view.findChild<QLineEdit*>("pinEdit")->setText("9999");
        number->setText("7060");
        view.findChild<QPushButton*>("addCardButton")->click();
        view.rejectChanges();
        QCOMPARE(view.editedProperties(), Parameters());
        QCOMPARE(numbers(view.cards()), (QStringList{"7003", "7050"}));
    }
};

QTEST_MAIN(TestWorkerCardView)
#include "tst_workercardview.moc"
