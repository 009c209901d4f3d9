#include "constants.h"
#include "localstorage.h"
#include "tabbeddialog.h"
#include "workeraccessview.h"
#include "workercardview.h"
#include "workerjobview.h"
#include "workerpropertyview.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QtTest>

using namespace vorandel;

namespace {
ObjectInfo object(TYPE_ID uid, const QString& type, const QHash<QString, QString>& parameters, TYPE_ID parent = 0)
{
    ObjectInfo info;
    info.uid = uid;
    info.type = type;
    info.parent = parent;
    info.parameters = parameters;
    return info;
}

const ObjectInfo Worker = object(7, QStringLiteral("OT_WORKER"),
                                 {{"PT_SURNAME", "Иванов"}, {"PT_NAME", "Пётр"}, {"PT_PATRONYMIC", "Ильич"},
                                  {"PT_WORKERNUM", "A-17"}, {"PT_JOB", "31"}, {"PT_PINCODE", "1234"}},
                                 20);

OBJECT_HASH only(const ObjectInfo& info)
{
    OBJECT_HASH objects;
    objects.insert(info.uid, info);
    return objects;
}

ObjectInfo card(CARD_ID number, TYPE_ID uid = 0)
{
    return object(uid, QStringLiteral("OT_CARD"), {{"PT_CARD_NUMBER", QString::number(number)}});
}

QStringList numbersOf(const QList<ObjectInfo>& cards)
{
    QStringList numbers;
    for (const ObjectInfo& info : cards)
        numbers << info.parameters.value(QStringLiteral("PT_CARD_NUMBER"));
    return numbers;
}

template <typename T>
T* child(const QWidget& parent, const char* name)
{
    T* found = parent.findChild<T*>(QString::fromLatin1(name));
    if (!found)
        qFatal("no child %s", name);
    return found;
}
}  // namespace

class TestWorkerViews : public QObject
{
    Q_OBJECT

    LocalStorage* store = LocalStorage::instance();

private slots:
    void init()
    {
        store->clear();
        store->setObjects(ORGSTRUCTURE_DATANAME, {object(20, QStringLiteral("OT_DEPARTMENT"), {{"PT_NAME", "Бухгалтерия"}})});
        store->setObjects(POLICY_DATANAME, {object(1, QStringLiteral("OT_ACCESS_POLICY"), {{"PT_NAME", "Вход"}}),
                                            object(2, QStringLiteral("OT_ACCESS_POLICY"), {{"PT_NAME", "Архив"}}),
                                            object(3, QStringLiteral("OT_ACCESS_POLICY"), {{"PT_NAME", "Склад"}})});
    }

    void personalDataReportsOnlyWhatChanged()
    {
        WorkerPropertyView view;
        view.setCurrent(only(Worker));
        auto* surname = child<QLineEdit>(view, "surnameEdit");
        QCOMPARE(surname->text(), QStringLiteral("Иванов"));
        QCOMPARE(child<QLineEdit>(view, "workerNumEdit")->text(), QStringLiteral("A-17"));
        QVERIFY(view.editedProperties().isEmpty());
        QVERIFY(view.changedObjects().isEmpty());

        QSignalSpy edited(&view, &PropertyBaseWidget::dataEdited);
        surname->selectAll();
        QTest::keyClicks(surname, QStringLiteral("Sidorov "));
        QVERIFY(edited.count() > 0);
        const QHash<QString, QString> expected{{QStringLiteral("PT_SURNAME"), QStringLiteral("Sidorov")}};
        QCOMPARE(view.editedProperties(), expected);

        const OBJECT_HASH changed = view.changedObjects();
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed.value(7).type, QStringLiteral("OT_WORKER"));
        QCOMPARE(changed.value(7).parent, 20u);
        QCOMPARE(changed.value(7).parameters, expected);

        view.saved(99);
        QCOMPARE(view.editedProperties(), expected);
        view.saved(7);
        QVERIFY(view.editedProperties().isEmpty());
        QCOMPARE(view.currentObject().parameters.value(QStringLiteral("PT_SURNAME")), QStringLiteral("Sidorov"));

        view.setReadOnly(true);
        QVERIFY(surname->isReadOnly());
    }

    void jobIsChosenAmongTheJobs()
    {
        WorkerJobView view;
        view.setJobList({{31, object(31, QStringLiteral("OT_JOB"), {{"PT_NAME", "Кассир"}})},
                         {32, object(32, QStringLiteral("OT_JOB"), {{"PT_NAME", "Бухгалтер"}})}});
        view.setCurrent(only(Worker));
        auto* jobs = child<QComboBox>(view, "jobCombo");
        QCOMPARE(jobs->currentText(), QStringLiteral("Кассир"));
        QCOMPARE(child<QLabel>(view, "departmentLabel")->text(), QStringLiteral("Бухгалтерия"));
        QVERIFY(view.editedProperties().isEmpty());

        QSignalSpy edited(&view, &PropertyBaseWidget::dataEdited);
        const int accountant = jobs->findText(QStringLiteral("Бухгалтер"));
        jobs->setCurrentIndex(accountant);
        emit jobs->activated(accountant);
        QCOMPARE(edited.count(), 1);
        QCOMPARE(view.editedProperties(), (QHash<QString, QString>{{QStringLiteral("PT_JOB"), QStringLiteral("32")}}));

        view.setReadOnly(true);
        QVERIFY(!jobs->isEnabled());
    }

    void accessGroupsRoundTripAndFollowTheOperator()
    {
        QMultiHash<unsigned int, unsigned int> given;
        given.insert(7, 3);
        given.insert(7, 1);
        given.insert(8, 2);

        WorkerAccessView view;
        view.setCurrent(only(Worker));
        view.setAccesses(given);
        QCOMPARE(view.accesses().values(7), given.values(7));
        QCOMPARE(view.accesses().values(8), given.values(8));

        auto* list = child<QListWidget>(view, "groupList");
        QCOMPARE(list->count(), 3);
        QCOMPARE(list->item(0)->text(), QStringLiteral("Архив"));
        QCOMPARE(list->item(0)->checkState(), Qt::Unchecked);
        QCOMPARE(list->item(1)->checkState(), Qt::Checked);

        QSignalSpy edited(&view, &PropertyBaseWidget::dataEdited);
        list->item(0)->setCheckState(Qt::Checked);   // Архив (2) joins
        list->item(1)->setCheckState(Qt::Unchecked);  // Вход (1) goes
        QCOMPARE(edited.count(), 2);
        QMultiHash<unsigned int, unsigned int> expected;
        expected.insert(7, 3);
        expected.insert(7, 2);
        QCOMPARE(view.accesses().values(7), expected.values(7));
        QCOMPARE(view.accesses().values(8), given.values(8));

        // A renamed group is renamed in the list; a group the store doesn't know stays.
        QMultiHash<unsigned int, unsigned int> withUnknown;
        withUnknown.insert(7, 44);
        view.setAccesses(withUnknown);
        store->setObjects(POLICY_DATANAME, {object(1, QStringLiteral("OT_ACCESS_POLICY"), {{"PT_NAME", "Главный вход"}})});
        QCOMPARE(list->count(), 4);
        QVERIFY(!list->findItems(QStringLiteral("Главный вход"), Qt::MatchExactly).isEmpty());
        QCOMPARE(list->findItems(QStringLiteral("44"), Qt::MatchContains).value(0)->checkState(), Qt::Checked);

        view.setReadOnly(true);
        QVERIFY(!(list->item(0)->flags() & Qt::ItemIsUserCheckable));
    }

    void cardsAreReadAddedRemovedAndHandedOnAsOneTask()
    {
        WorkerCardView view;
        view.setCurrent(only(Worker));
        view.setChangeCardEnabled(true);
        view.addDevice(object(50, QStringLiteral("OT_DEVICE"), {{"PT_NAME", "Проходная"}}));
        view.addDevice(object(51, QStringLiteral("OT_DEVICE"), {{"PT_NAME", "Склад"}}));
        view.addDevice(object(50, QStringLiteral("OT_DEVICE"), {{"PT_NAME", "Проходная 1"}}));
        auto* devices = child<QComboBox>(view, "deviceCombo");
        QCOMPARE(devices->count(), 2);
        QCOMPARE(devices->itemText(0), QStringLiteral("Проходная 1"));
        view.setCards({card(1001, 601), card(1002, 602)});

        QSignalSpy reading(&view, &WorkerCardView::readCard);
        QSignalSpy saveEnabled(&view, &WorkerCardView::setSaveEnabled);
        QSignalSpy critical(&view, &WorkerCardView::showCriticalMessage);
        QSignalSpy edited(&view, &PropertyBaseWidget::dataEdited);
        devices->setCurrentIndex(1);
        child<QPushButton>(view, "readCardButton")->click();
        QCOMPARE(reading.count(), 1);
        QCOMPARE(reading.first().first().value<TYPE_ID>(), 51u);
        QVERIFY(view.isReadingCard());
        QCOMPARE(saveEnabled.last().at(1).toBool(), false);

        view.cardRead(card(2001));
        QVERIFY(!view.isReadingCard());
        QCOMPARE(saveEnabled.last().at(1).toBool(), true);
        QCOMPARE(numbersOf(view.cards()), (QStringList{"1001", "1002", "2001"}));
        QCOMPARE(edited.count(), 1);

        view.cardRead(card(2002));  // nobody asked for it
        QCOMPARE(view.cards().size(), 3);

        child<QPushButton>(view, "readCardButton")->click();
        view.cardRead(card(1002));
        QCOMPARE(critical.count(), 1);
        child<QPushButton>(view, "readCardButton")->click();
        view.cardReadFailed();
        QCOMPARE(critical.count(), 2);
        QCOMPARE(saveEnabled.last().at(1).toBool(), true);

        auto* list = child<QListWidget>(view, "cardList");
        list->setCurrentRow(0);
        child<QPushButton>(view, "removeCardButton")->click();
        QTest::keyClicks(child<QLineEdit>(view, "cardNumberEdit"), QStringLiteral("3003"));
        child<QPushButton>(view, "addCardButton")->click();
        QCOMPARE(numbersOf(view.cards()), (QStringList{"1002", "2001", "3003"}));

        QSignalSpy tasks(&view, &WorkerCardView::appendTask);
        view.applyChanges();
        QCOMPARE(tasks.count(), 1);
        const TaskInfo task = tasks.first().first().value<TaskInfo>();
        QCOMPARE(task.type, QStringLiteral("update_worker_cards"));
        QCOMPARE(task.uid, 7u);
        QList<ObjectInfo> added, removed;
        for (const QVariant& bytes : task.params.values(QStringLiteral("add")))
            added << ObjectInfo(bytes.toByteArray());
        for (const QVariant& bytes : task.params.values(QStringLiteral("delete")))
            removed << ObjectInfo(bytes.toByteArray());
        std::sort(added.begin(), added.end(), [](const ObjectInfo& a, const ObjectInfo& b) { return numbersOf({a}) < numbersOf({b}); });
        QCOMPARE(numbersOf(added), (QStringList{"2001", "3003"}));
        QCOMPARE(added.first().parameters.value(QStringLiteral("PT_SUBJECT_ID")), QStringLiteral("7"));
        QCOMPARE(numbersOf(removed), QStringList{"1001"});
        QCOMPARE(removed.first().uid, 601u);

        view.applyChanges();
        QCOMPARE(tasks.count(), 1);
        QCOMPARE(numbersOf(view.cards()), (QStringList{"1002", "2001", "3003"}));
    }

    void readOnlyCardsCanNotBeTouched()
    {
        WorkerCardView view;
        view.setCurrent(only(Worker));
        view.setChangeCardEnabled(true);
        view.setScanBiometricsEnabled(true);
        view.addDevice(object(50, QStringLiteral("OT_DEVICE"), {{"PT_NAME", "Проходная"}}));
        QVERIFY(child<QPushButton>(view, "readCardButton")->isEnabled());
        view.setReadOnly(true);
        for (const char* name : {"readCardButton", "addCardButton", "removeCardButton", "scanButton", "fingerprintsButton"})
            QVERIFY2(!child<QPushButton>(view, name)->isEnabled(), name);
        QVERIFY(child<QLineEdit>(view, "pinEdit")->isReadOnly());
    }

    void biometricsCountsFollowTheWorker()
    {
        WorkerCardView view;
        view.setCurrent(only(Worker));
        auto* fingers = child<QLabel>(view, "fingersCount");
        auto* palms = child<QLabel>(view, "palmCount");
        auto* airPalms = child<QLabel>(view, "airpalmCount");
        auto* faces = child<QLabel>(view, "faceCount");

        view.setWorkerFingers(8, {{"fingers_count", 9}});
        QCOMPARE(fingers->text(), QStringLiteral("—"));
        view.setWorkerFingers(7, {{"fingers_count", 4}, {"palm_count", 1}, {"airpalm_count", 0}, {"face_count", 2}});
        QCOMPARE(fingers->text(), QStringLiteral("4"));
        QCOMPARE(faces->text(), QStringLiteral("2"));

        const auto scanned = [](qint16 index, int kind) {
            TEMPLATE_DATA data;
            data.index = index;
            data.kind = kind;
            return data;
        };
        view.biometricsScanned(7, {scanned(0, 0), scanned(9, 0), scanned(10, 0), scanned(100, 2), scanned(101, 3),
                                   scanned(101, 3), scanned(200, 0)});
        QCOMPARE(fingers->text(), QStringLiteral("2"));
        QCOMPARE(palms->text(), QStringLiteral("1"));
        QCOMPARE(airPalms->text(), QStringLiteral("2"));
        QCOMPARE(faces->text(), QStringLiteral("1"));

        QSignalSpy fingerprints(&view, &WorkerCardView::getFingerprints);
        QSignalSpy tasks(&view, &WorkerCardView::appendTask);
        view.setScanBiometricsEnabled(true);
        child<QPushButton>(view, "fingerprintsButton")->click();
        child<QPushButton>(view, "scanButton")->click();
        QCOMPARE(fingerprints.first().first().value<TYPE_ID>(), 7u);
        QCOMPARE(tasks.first().first().value<TaskInfo>().type, QStringLiteral("scan_biometrics"));
    }

    void pinIsEditedOnlyWhereAllowed()
    {
        WorkerCardView view;
        view.setCurrent(only(Worker));
        auto* pin = child<QLineEdit>(view, "pinEdit");
        QCOMPARE(pin->text(), QStringLiteral("1234"));
        QCOMPARE(pin->echoMode(), QLineEdit::Password);
        QVERIFY(pin->isReadOnly());
        view.setChangePinCodeEnabled(true);
        QVERIFY(!pin->isReadOnly());
        pin->selectAll();
        QTest::keyClicks(pin, QStringLiteral("98x76"));
        QCOMPARE(view.editedProperties(), (QHash<QString, QString>{{QStringLiteral("PT_PINCODE"), QStringLiteral("9876")}}));
    }

    void subPagesMoveIntoTheDialog()
    {
        TabbedDialog dialog;
        auto* view = new WorkerCardView;
        const int tab = dialog.addTab(view, QStringLiteral("Идентификация"));
        const QList<QWidget*> pages = view->subPages();
        QCOMPARE(pages.size(), 2);
        QCOMPARE(pages.at(0)->windowTitle(), QStringLiteral("Карты"));
        QCOMPARE(pages.at(1)->windowTitle(), QStringLiteral("Биометрия"));
        for (QWidget* page : pages)
            dialog.addSubTab(tab, page, page->windowIcon(), page->windowTitle());

        QTabWidget* inner = dialog.subTabs(tab);
        QCOMPARE(inner->count(), 3);
        QCOMPARE(dialog.tabWidget(tab), view);
        view->showSubPage(1);
        QCOMPARE(inner->currentWidget(), pages.at(1));

        dialog.show();
        inner->setCurrentIndex(0);
        QVERIFY(child<QGroupBox>(*view, "pinBox")->isVisible());
        view->showBlock(WorkerCardView::PinBlock, false);
        QVERIFY(!child<QGroupBox>(*view, "pinBox")->isVisible());
    }

    void standingAloneTheViewShowsOnePageAtATime()
    {
        WorkerCardView view;
        view.showBlock(WorkerCardView::PinBlock, false);
        view.showSubPage(1);
        view.show();
        QVERIFY(view.subPages().at(1)->isVisible());
        QVERIFY(!view.subPages().at(0)->isVisible());
        view.showSubPage(0);
        QVERIFY(view.subPages().at(0)->isVisible());
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("no sub page 5")));
        view.showSubPage(5);
    }
};

QTEST_MAIN(TestWorkerViews)
#include "tst_workerviews.moc"
