#include "constants.h"
#include "localstorage.h"
#include "records.h"
#include "testenvironment.h"
#include "vdobjectselector.h"
#include "workeraccessview.h"
#include "workercardview.h"
#include "workerjobview.h"
#include "workerpropertyview.h"

#include <QComboBox>
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

// The worker's tabs of the stand-in: what a person can change on each, and that each hands on
// only what he changed.
class TestWorkerTabs : public QObject
{
    Q_OBJECT

    TestEnvironment environment;

private slots:
    void initTestCase()
    {
        LocalStorage* store = LocalStorage::instance();
        store->clear();
        store->setObjects(ORGSTRUCTURE_DATANAME,
                          {object(1, db::orgstructure::SUBJECT_ROOT, {{"PT_NAME", "Организация"}}),
                           object(2, db::orgstructure::DEPARTMENT, {{"PT_NAME", "Бухгалтерия"}}, 1),
                           object(3, db::orgstructure::DEPARTMENT, {{"PT_NAME", "Склад"}}, 1)});
        store->setObjects(SUBJECT_DATANAME, {worker(), object(12, db::orgstructure::WORKER,
                                                               {{"PT_SURNAME", "Котов"}, {"PT_NAME", "Иван"}}, 2)});
        store->setObjects(CARD_DATANAME, {object(61, db::misc::CARD, {{db::card::NUMBER, "7002"}, {db::card::OWNER, "12"}})});
    }

    void cleanupTestCase() { LocalStorage::instance()->clear(); }

    void personalData_data()
    {
        QTest::addColumn<QString>("surname");
        QTest::addColumn<Parameters>("edited");
        QTest::newRow("unchanged") << "Орлов" << Parameters();
        QTest::newRow("blanks around") << " Орлов " << Parameters();
        QTest::newRow("changed") << "Орловский" << Parameters{{"PT_SURNAME", "Орловский"}};
    }

    void personalData()
    {
        QFETCH(QString, surname);
        QFETCH(Parameters, edited);
        WorkerPropertyView view;
        view.setCurrent(shown(worker()));
        view.findChild<QLineEdit*>("surnameEdit")->setText(surname);
        QCOMPARE(view.editedProperties(), edited);
        const OBJECT_HASH changed = view.changedObjects();
        QCOMPARE(changed.isEmpty(), edited.isEmpty());
        if (!edited.isEmpty()) {
            QCOMPARE(changed.value(Worker).parent, 2u);
            QCOMPARE(changed.value(Worker).parameters, edited);
        }
        // Saved for another worker, or not at all: still an edit. Saved: the edit is what he is.
        view.saved(0);
        view.saved(12);
        QCOMPARE(view.editedProperties(), edited);
        view.saved(Worker);
        QVERIFY(view.editedProperties().isEmpty());
    }

    void jobAndUnit_data()
    {
        QTest::addColumn<QString>("job");
        QTest::addColumn<TYPE_ID>("unit");
        QTest::addColumn<Parameters>("edited");
        QTest::addColumn<TYPE_ID>("parent");  // 0: nothing changed
        QTest::newRow("unchanged") << "Инженер" << TYPE_ID(2) << Parameters() << TYPE_ID(0);
        QTest::newRow("another job") << "Бухгалтер" << TYPE_ID(2) << Parameters{{"PT_JOB", "91"}} << TYPE_ID(2);
        QTest::newRow("no job") << "не указана" << TYPE_ID(2) << Parameters{{"PT_JOB", ""}} << TYPE_ID(2);
        QTest::newRow("moved") << "Инженер" << TYPE_ID(3) << Parameters() << TYPE_ID(3);
        QTest::newRow("moved with a job") << "Бухгалтер" << TYPE_ID(3) << Parameters{{"PT_JOB", "91"}} << TYPE_ID(3);
    }

    void jobAndUnit()
    {
        QFETCH(QString, job);
        QFETCH(TYPE_ID, unit);
        QFETCH(Parameters, edited);
        QFETCH(TYPE_ID, parent);
        WorkerJobView view;
        view.setJobList({{90, object(90, "OT_JOB", {{"PT_NAME", "Инженер"}})},
                         {91, object(91, "OT_JOB", {{"PT_NAME", "Бухгалтер"}})}});
        view.setCurrent(shown(worker()));
        auto* unitSelector = view.findChild<VDObjectSelector*>("departmentSelector");
        QCOMPARE(unitSelector->currentUid(), 2u);
        QSignalSpy edits(&view, &PropertyBaseWidget::dataEdited);
        auto* jobs = view.findChild<QComboBox*>("jobCombo");
        jobs->setCurrentIndex(jobs->findText(job));
        unitSelector->setCurrentUid(unit);
        QCOMPARE(edits.count(), unit != 2 ? 1 : 0);

        QCOMPARE(view.editedProperties(), edited);
        const OBJECT_HASH changed = view.changedObjects();
        QCOMPARE(changed.isEmpty(), parent == 0);
        if (parent != 0) {
            QCOMPARE(changed.value(Worker).parent, parent);
            QCOMPARE(changed.value(Worker).parameters, edited);
        }
        view.saved(Worker);
        QVERIFY(view.changedObjects().isEmpty());
        QCOMPARE(view.currentObject().parent, unit);
    }

    // The groups come back in the order they were given, those the operator adds after them.
    void accessGroups()
    {
        LocalStorage::instance()->setObjects(POLICY_DATANAME, {object(70, "OT_ACCESS_POLICY", {{"PT_NAME", "Вход"}}),
                                                               object(71, "OT_ACCESS_POLICY", {{"PT_NAME", "Парковка"}})});
        WorkerAccessView view;
        view.setCurrent(shown(worker()));
        QMultiHash<unsigned int, unsigned int> given;
        given.insert(Worker, 71);
        given.insert(Worker, 99);  // not in the store: kept under its number
        view.setAccesses(given);
        QCOMPARE(view.accesses(), given);
        auto* list = view.findChild<QListWidget*>("groupList");
        QCOMPARE(list->count(), 3);
        QSignalSpy edits(&view, &PropertyBaseWidget::dataEdited);
        list->findItems("Вход", Qt::MatchExactly).first()->setCheckState(Qt::Checked);
        QCOMPARE(edits.count(), 1);
        QList<unsigned int> groups = view.accesses().values(Worker);
        std::reverse(groups.begin(), groups.end());
        QCOMPARE(groups, (QList<unsigned int>{71, 99, 70}));
        QVERIFY(view.changedObjects().isEmpty());
        view.setReadOnly(true);
        QVERIFY(!(list->item(0)->flags() & Qt::ItemIsUserCheckable));
    }

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

QTEST_MAIN(TestWorkerTabs)
#include "tst_workertabs.moc"
