#include "requestfixture.h"

#include "constants.h"
#include "localstorage.h"
#include "requestview.h"
#include "tabbeddialog.h"
#include "vddatetimeedit.h"
#include "vdobjectselector.h"

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTextEdit>
#include <QtTest>

using namespace vorandel;

namespace {

using Parameters = QHash<QString, QString>;

const QString UpdateObject = QStringLiteral("data.updateObject");
const QString UpdateCards = QStringLiteral("data.updateWorkerCards");
const QString NotACard = QStringLiteral("не номер карты: номер состоит из цифр и не равен нулю");
constexpr TYPE_ID Request = 500;   // state 0, worker 11
constexpr TYPE_ID Worker = 11;     // in unit 2, one card
constexpr TYPE_ID Colleague = 12;  // holds card 7002

ObjectInfo object(TYPE_ID uid, const QString& type, const Parameters& parameters = {}, TYPE_ID parent = 0)
{
    ObjectInfo info;
    info.uid = uid;
    info.type = type;
    info.parent = parent;
    info.parameters = parameters;
    return info;
}

ObjectInfo card(CARD_ID number, TYPE_ID holder, TYPE_ID uid)
{
    return object(uid, db::misc::CARD, {{db::card::NUMBER, QString::number(number)}, {db::card::OWNER, QString::number(holder)}});
}

// A tab over a store with a worker behind request 500, his colleague, units, groups, cards, jobs.
class DialogFixture : public RequestFixture
{
public:
    DialogFixture(const Parameters& requestChanges = {}, const Parameters& workerChanges = {})
    {
        set(ORGSTRUCTURE_DATANAME, {object(1, db::orgstructure::SUBJECT_ROOT, {{"PT_NAME", "Организация"}}),
                                    object(2, db::orgstructure::DEPARTMENT, {{"PT_NAME", "Бухгалтерия"}}, 1),
                                    object(3, db::orgstructure::DEPARTMENT, {{"PT_NAME", "Склад"}}, 1)});
        set(POLICY_DATANAME, {make::policy(70, "Главный вход"), make::policy(71, "Парковка"), make::policy(72, "Склад")});
        set(JOB_DATANAME, {object(90, "OT_JOB", {{"PT_NAME", "Инженер"}})});
        set(CARD_DATANAME, {card(7001, Worker, 60), card(7002, Colleague, 61)});

        ObjectInfo worker = make::worker(Worker, "Орлов", "Пётр", "Ильич", "000011");
        worker.parent = 2;
        worker.inherits.insert(INHERIT_CARD, INHERIT_DATA(Worker, 60, INHERIT_CARD));
        apply(worker.parameters, workerChanges);
        ObjectInfo colleague = make::worker(Colleague, "Котов", "Иван");
        colleague.inherits.insert(INHERIT_CARD, INHERIT_DATA(Colleague, 61, INHERIT_CARD));
        set(SUBJECT_DATANAME, {worker, colleague});

        ObjectInfo request = make::request(Request, 0, Worker);
        request.parameters.insert("PT_WAY", "70;71");
        request.parameters.insert("PT_TO_DEPARTMENT", "2");
        request.parameters.insert("PT_CAR_NUMBER", "А123ВС77");
        apply(request.parameters, requestChanges);
        set(PASS_REQUEST_DATANAME, {request, make::request(501, 0, Worker)});
        build();
    }

    static void apply(Parameters& parameters, const Parameters& changes)
    {
        for (auto it = changes.cbegin(); it != changes.cend(); ++it) {
            if (it.value().isEmpty())
                parameters.remove(it.key());
            else
                parameters.insert(it.key(), it.value());
        }
    }

    TabbedDialog* open(TYPE_ID uid = Request)
    {
        select({uid});
        view()->showRequestProperties();
        return dialog();
    }
    TabbedDialog* dialog() const { return view()->findChild<TabbedDialog*>(); }
    template <typename T>
    T* in(const char* name) const
    {
        return dialog()->findChild<T*>(QLatin1String(name));
    }
    QStringList enabledTabs() const
    {
        QStringList titles;
        const QTabWidget* tabs = in<QTabWidget>("tabs");
        for (int tab = 0; tab < tabs->count(); ++tab) {
            if (tabs->isTabEnabled(tab))
                titles << tabs->tabText(tab);
        }
        return titles;
    }
    // The object that the n-th "updateObject" sent.
    ObjectInfo saved(int n)
    {
        QByteArray session;
        ObjectInfo sent;
        readPayload(transport().sent(UpdateObject).value(n), session, sent);
        return sent;
    }
    QStringList cards() const
    {
        QStringList numbers;
        const QListWidget* list = in<QListWidget>("cardList");
        for (int row = 0; row < list->count(); ++row)
            numbers << list->item(row)->text();
        return numbers;
    }
};

const QStringList AllTabs{"Основное", "Сотрудник", "Сведения о работе", "Доступ", "Идентификация"};

const QString StoredBegin = QStringLiteral("2026-11-02T09:30:00");
const QString StoredEnd = QStringLiteral("2026-11-20T18:00:00");

QDateTime at(const QString& text)
{
    return QDateTime::fromString(text, Qt::ISODate);
}

QStringList numbers(const QList<ObjectInfo>& cards)
{
    QStringList list;
    for (const ObjectInfo& card : cards)
        list << card.parameters.value(db::card::NUMBER);
    return list;
}

}  // namespace

// The dialog as the tab builds, refreshes and saves it, with the worker behind the request.
class TestPropertiesDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qRegisterMetaType<QList<TYPE_ID>>(); }

    void opensForExactlyOneRequest()
    {
        DialogFixture f;
        f.select({Request, 501});
        f.view()->showRequestProperties();
        QVERIFY(!f.dialog());

        TabbedDialog* dialog = f.open();
        QVERIFY(dialog);
        QCOMPARE(f.cards(), QStringList{"7001"});

        // A second "Свойства" brings the same dialog forward, now with the other request.
        f.view()->showRequestProperties(501);
        QCOMPARE(f.view()->findChildren<TabbedDialog*>().size(), 1);
        QCOMPARE(f.dialog(), dialog);
        dialog->close();
        QTRY_VERIFY(!f.dialog());
    }

    // A decided request is read-only; the worker behind it decides which tabs can be reached.
    void whatTheOperatorMayChange_data()
    {
        QTest::addColumn<Parameters>("request");
        QTest::addColumn<Parameters>("worker");
        QTest::addColumn<bool>("editable");
        QTest::addColumn<QStringList>("enabled");
        QTest::newRow("not confirmed") << Parameters() << Parameters() << true << AllTabs;
        // Read-only tabs stay open to be read.
        QTest::newRow("confirmed") << Parameters{{"PT_STATE", "2"}} << Parameters() << false << AllTabs;
        QTest::newRow("finished") << Parameters{{"PT_STATE", "5"}} << Parameters() << false << AllTabs;
        QTest::newRow("unknown state") << Parameters{{"PT_STATE", "6"}} << Parameters() << true << AllTabs;
        QTest::newRow("dismissed") << Parameters() << Parameters{{"PT_OBJECTSTATE", "d"}} << true
                                   << QStringList{"Основное"};
        // Only the exact mark dismisses here.
        QTest::newRow("marked D") << Parameters() << Parameters{{"PT_OBJECTSTATE", "D"}} << true << AllTabs;
        QTest::newRow("no worker") << Parameters{{"PT_SUBJECT_ID", ""}} << Parameters() << true << QStringList();
        QTest::newRow("worker not in the store") << Parameters{{"PT_SUBJECT_ID", "999"}} << Parameters() << true
                                                 << QStringList();
    }

    void whatTheOperatorMayChange()
    {
        QFETCH(Parameters, request);
        QFETCH(Parameters, worker);
        QFETCH(bool, editable);
        QFETCH(QStringList, enabled);
        DialogFixture f(request, worker);
        f.open();
        QVERIFY(f.dialog()->isVisible());
        QCOMPARE(f.enabledTabs(), enabled);
        if (enabled.isEmpty())
            QVERIFY(f.cards().isEmpty());
        if (enabled != AllTabs)
            return;
        QCOMPARE(f.in<QLineEdit>("leCarNumber")->isEnabled(), editable);
        QCOMPARE(f.in<QWidget>("dtEnd")->isEnabled(), editable);
        QCOMPARE(f.in<QLineEdit>("surnameEdit")->isReadOnly(), !editable);
        QCOMPARE(f.in<QComboBox>("jobCombo")->isEnabled(), editable);
        QCOMPARE(f.in<QWidget>("departmentSelector")->isEnabled(), editable);
        QCOMPARE(f.in<QLineEdit>("cardNumberEdit")->isEnabled(), editable);
        const QListWidgetItem* group = f.in<QListWidget>("groupList")->item(0);
        QCOMPARE(bool(group->flags() & Qt::ItemIsUserCheckable), editable);
    }

    // The store changes what the dialog shows; the cards the operator sees stay his.
    void followsTheStore()
    {
        DialogFixture f;
        f.open();
        f.in<QLineEdit>("cardNumberEdit")->setText("7050");
        f.in<QPushButton>("addCardButton")->click();
        QCOMPARE(f.cards(), (QStringList{"7001", "7050"}));

        ObjectInfo request = LocalStorage::instance()->constObject(Request, PASS_REQUEST_DATANAME);
        request.parameters.insert("PT_CAR_NUMBER", "Е001КХ77");
        f.set(PASS_REQUEST_DATANAME, {request});
        QCOMPARE(f.in<QLineEdit>("leCarNumber")->text(), QStringLiteral("Е001КХ77"));
        QCOMPARE(f.cards(), (QStringList{"7001", "7050"}));

        // Dismissed while the dialog is open.
        ObjectInfo worker = LocalStorage::instance()->constObject(Worker, SUBJECT_DATANAME);
        worker.parameters.insert("PT_OBJECTSTATE", "d");
        f.set(SUBJECT_DATANAME, {worker});
        QCOMPARE(f.enabledTabs(), QStringList{"Основное"});
    }

    void saysSoWhenItsObjectsVanish()
    {
        DialogFixture f;
        TabbedDialog* dialog = f.open();
        f.in<QLineEdit>("surnameEdit")->setText("Орловский");
        f.in<QLineEdit>("cardNumberEdit")->setText("7050");
        f.in<QPushButton>("addCardButton")->click();
        LocalStorage::instance()->removeObjects(SUBJECT_DATANAME, {Worker});
        QCOMPARE(dialog->lastMessage(), QStringLiteral("Сотрудник удалён: его данные сохранить нельзя"));
        QCOMPARE(f.enabledTabs(), QStringList{"Основное"});
        // His edits are dropped, the cards pending among them.
        QCOMPARE(f.in<QLineEdit>("surnameEdit")->text(), QStringLiteral("Орлов"));
        QCOMPARE(f.cards(), QStringList{"7001"});

        f.in<QLineEdit>("leCarNumber")->setText("Х999ХХ99");
        LocalStorage::instance()->removeObjects(PASS_REQUEST_DATANAME, {Request});
        QCOMPARE(dialog->lastMessage(), QStringLiteral("Заявка удалена: сохранить изменения нельзя"));
        QVERIFY(!dialog->isSaveEnabled());
        QCOMPARE(f.in<QLineEdit>("leCarNumber")->text(), QStringLiteral("Х999ХХ99"));
        QVERIFY(dialog->isVisible());
    }

    // Only what really changed goes out, compared with the text the store keeps.
    void savingTheRequest_data()
    {
        QTest::addColumn<Parameters>("stored");   // changes to the store's request before the dialog opens
        QTest::addColumn<QString>("edit");        // "field=text" as the operator types it; empty: none
        QTest::addColumn<QList<int>>("toggled");  // rows of the group list clicked, in order
        QTest::addColumn<Parameters>("sent");     // empty: no task, the dialog told of success at once

        // Keys the store never had and the form leaves empty are no change either.
        QTest::newRow("nothing changed") << Parameters() << QString() << QList<int>() << Parameters();
        QTest::newRow("car number") << Parameters() << "leCarNumber=В777ОР99" << QList<int>()
                                    << Parameters{{"PT_CAR_NUMBER", "В777ОР99"}};
        QTest::newRow("changed and changed back") << Parameters() << "leCarNumber=А123ВС77" << QList<int>() << Parameters();
        QTest::newRow("text cleared") << Parameters{{"PT_DOC_SERIES", "4510"}} << "leDocSeries=" << QList<int>()
                                      << Parameters{{"PT_DOC_SERIES", ""}};
        QTest::newRow("remarks") << Parameters() << "teAdditions=Без сопровождения" << QList<int>()
                                 << Parameters{{"PT_EXTRA_INFO", "Без сопровождения"}};
        QTest::newRow("department") << Parameters() << "cbDepTo=3" << QList<int>() << Parameters{{"PT_TO_DEPARTMENT", "3"}};
        // The same moment in another text counts, as the stored text is the yardstick.
        QTest::newRow("date with milliseconds") << Parameters{{"PT_DATE_BEGIN", "2026-11-02T09:30:00.000"}} << QString()
                                                << QList<int>() << Parameters{{"PT_DATE_BEGIN", "2026-11-02T09:30:00"}};
        QTest::newRow("no department key") << Parameters{{"PT_TO_DEPARTMENT", ""}} << QString() << QList<int>()
                                           << Parameters{{"PT_TO_DEPARTMENT", "0"}};
        // Groups sort by name: Главный вход 70, Парковка 71, Склад 72.
        QTest::newRow("a group added") << Parameters() << QString() << QList<int>{2} << Parameters{{"PT_WAY", "70;71;72"}};
        QTest::newRow("the same groups, reordered") << Parameters() << QString() << QList<int>{0, 0}
                                                    << Parameters{{"PT_WAY", "71;70"}};
        QTest::newRow("a group added and taken away") << Parameters() << QString() << QList<int>{2, 2} << Parameters();
    }

    void savingTheRequest()
    {
        QFETCH(Parameters, stored);
        QFETCH(QString, edit);
        QFETCH(QList<int>, toggled);
        QFETCH(Parameters, sent);
        DialogFixture f(stored);
        TabbedDialog* dialog = f.open();
        QSignalSpy told(f.view(), &RequestView::requestSaved);
        if (!edit.isEmpty()) {
            const QString name = edit.section(QLatin1Char('='), 0, 0);
            const QString text = edit.section(QLatin1Char('='), 1);
            if (auto* line = dialog->findChild<QLineEdit*>(name)) {
                // As typed: the text, and the edit announced.
                line->setText(text);
                emit line->textEdited(text);
            } else if (auto* remarks = dialog->findChild<QTextEdit*>(name)) {
                remarks->setPlainText(text);
            } else {
                dialog->findChild<VDObjectSelector*>(name)->setCurrentUid(text.toUInt());
            }
        }
        QListWidget* groups = f.in<QListWidget>("groupList");
        for (const int row : toggled) {
            QListWidgetItem* item = groups->item(row);
            item->setCheckState(item->checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
        }
        QVERIFY(dialog->isSaveButtonShown() || sent.isEmpty() || (edit.isEmpty() && toggled.isEmpty()));
        emit dialog->save();
        if (sent.isEmpty()) {
            QCOMPARE(f.transport().count(UpdateObject), 0);
            QCOMPARE(told.count(), 1);
            QVERIFY(!dialog->isSaveButtonShown());
            return;
        }
        QTRY_COMPARE(f.transport().count(UpdateObject), 1);
        QCOMPARE(f.saved(0).uid, Request);
        QCOMPARE(f.saved(0).type, db::misc::PASS_REQUEST);
        QCOMPARE(f.saved(0).parameters, sent);
        f.transport().answer(UpdateObject, Command::StatusOk);
        QCOMPARE(told.count(), 1);
        QVERIFY(!dialog->isSaveButtonShown());
        // Saved fields are the yardstick now; the groups are compared with the store, which this
        // test's server never changes.
        emit dialog->save();
        QTest::qWait(10);
        QCOMPARE(f.transport().count(UpdateObject), sent.contains("PT_WAY") ? 2 : 1);
    }

    // The end keeps at least a minute after the beginning, whichever of the two is moved.
    void datesAreTied_data()
    {
        QTest::addColumn<int>("beginShift");  // seconds from the stored beginning
        QTest::addColumn<int>("endShift");    // how far the end follows, from the stored end

        const int toEnd = int(at(StoredBegin).secsTo(at(StoredEnd)));
        QTest::newRow("a minute before the end") << toEnd - 60 << 0;
        QTest::newRow("at the end") << toEnd << 60;
        QTest::newRow("past the end") << toEnd + 3600 << 3660;
    }

    void datesAreTied()
    {
        QFETCH(int, beginShift);
        QFETCH(int, endShift);
        DialogFixture f({{"PT_DATE_BEGIN", StoredBegin}, {"PT_DATE_END", StoredEnd}});
        TabbedDialog* dialog = f.open();
        auto* begin = f.in<VDDateTimeEdit>("dtBegin");
        auto* end = f.in<VDDateTimeEdit>("dtEnd");
        begin->setDateTime(at(StoredBegin).addSecs(beginShift));
        QCOMPARE(end->dateTime(), at(StoredEnd).addSecs(endShift));
        QVERIFY(dialog->isSaveButtonShown());
        // Whatever is typed, the request lasts at least a minute.
        end->setDateTime(begin->dateTime().addDays(-1));
        QCOMPARE(end->dateTime(), begin->dateTime().addSecs(60));
    }

    // The four worker tabs make one save of the worker, ahead of the request's.
    void theWorkerIsSavedOnceAndFirst()
    {
        DialogFixture f;
        TabbedDialog* dialog = f.open();
        f.in<QLineEdit>("surnameEdit")->setText("Орловский");
        QComboBox* jobs = f.in<QComboBox>("jobCombo");
        jobs->setCurrentIndex(jobs->findText("Инженер"));
        f.in<VDObjectSelector>("departmentSelector")->setCurrentUid(3);
        f.in<QLineEdit>("pinEdit")->setText("4321");
        f.in<QLineEdit>("leCarNumber")->setText("В777ОР99");
        emit dialog->save();

        QTRY_COMPARE(f.transport().count(UpdateObject), 1);
        ObjectInfo worker = f.saved(0);
        QCOMPARE(worker.uid, Worker);
        QCOMPARE(worker.type, db::orgstructure::WORKER);
        QCOMPARE(worker.parent, 3u);
        QCOMPARE(worker.parameters, (Parameters{{"PT_SURNAME", "Орловский"}, {"PT_JOB", "90"}, {"PT_PINCODE", "4321"}}));
        f.transport().answer(UpdateObject, Command::StatusOk);
        QTRY_COMPARE(f.transport().count(UpdateObject), 2);
        QCOMPARE(f.saved(1).uid, Request);
        QCOMPARE(f.saved(1).parameters, (Parameters{{"PT_CAR_NUMBER", "В777ОР99"}}));
    }

    // A refused save leaves the dialog open with the edits in place.
    void aRefusedSaveKeepsTheEdits()
    {
        DialogFixture f;
        TabbedDialog* dialog = f.open();
        f.in<QLineEdit>("leCarNumber")->setText("В777ОР99");
        dialog->showSaveButton();
        emit dialog->save();
        QTRY_COMPARE(f.transport().count(UpdateObject), 1);
        f.transport().answer(UpdateObject, Command::StatusFailed,
                             [](VDDataStream& out) { out << QStringLiteral("Недопустимое состояние заявки"); });
        QVERIFY(dialog->isVisible());
        QVERIFY(dialog->isSaveButtonShown());
        QCOMPARE(f.in<QLineEdit>("leCarNumber")->text(), QStringLiteral("В777ОР99"));
        emit dialog->save();
        QTRY_COMPARE(f.transport().count(UpdateObject), 2);
    }

    // A typed card number is refused with a reason, and left in the field to be corrected.
    void typedCardNumbers_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("refusal");  // empty: added
        QTest::newRow("a number") << " 7050 " << QString();
        QTest::newRow("letters") << "70a0" << "«70a0» " + NotACard;
        QTest::newRow("zero") << "0" << "«0» " + NotACard;
        QTest::newRow("too long") << "184467440737095516160" << "«184467440737095516160» " + NotACard;
        QTest::newRow("the colleague's") << "7002" << "Карта 7002 уже выдана сотруднику Котов Иван";
        QTest::newRow("already listed") << "7001" << "Карта 7001 уже есть в списке";
    }

    void typedCardNumbers()
    {
        QFETCH(QString, typed);
        QFETCH(QString, refusal);
        DialogFixture f;
        TabbedDialog* dialog = f.open();
        auto* number = f.in<QLineEdit>("cardNumberEdit");
        number->setText(typed);
        f.in<QPushButton>("addCardButton")->click();
        QCOMPARE(dialog->lastMessage(), refusal);
        if (refusal.isEmpty()) {
            QCOMPARE(f.cards(), (QStringList{"7001", "7050"}));
            QVERIFY(dialog->isSaveButtonShown());
            QVERIFY(number->text().isEmpty());
        } else {
            QCOMPARE(f.cards(), QStringList{"7001"});
            QCOMPARE(number->text(), typed);
        }
    }

    // Card changes go as one task, never twice while it runs; a success makes them the worker's
    // cards, a failure keeps them to be sent again.
    void cardChangesAreHandedOnOnce()
    {
        DialogFixture f;
        TabbedDialog* dialog = f.open();
        f.in<QLineEdit>("cardNumberEdit")->setText("7050");
        f.in<QPushButton>("addCardButton")->click();
        f.in<QListWidget>("cardList")->setCurrentRow(0);
        f.in<QPushButton>("removeCardButton")->click();
        QCOMPARE(f.cards(), QStringList{"7050"});
        emit dialog->save();
        emit dialog->save();  // the answer hasn't come: nothing twice
        QTRY_COMPARE(f.transport().count(UpdateCards), 1);
        QByteArray session;
        TYPE_ID worker = 0;
        QList<ObjectInfo> added, removed;
        readPayload(f.transport().sent(UpdateCards).first(), session, worker, added, removed);
        QCOMPARE(worker, Worker);
        QCOMPARE(numbers(added), QStringList{"7050"});
        QCOMPARE(ot_card::uid(added.first()), Worker);
        QCOMPARE(numbers(removed), QStringList{"7001"});
        QVERIFY(f.transport().answer(UpdateCards, Command::StatusOk));
        emit dialog->save();
        QTest::qWait(10);
        QCOMPARE(f.transport().count(UpdateCards), 1);
        QCOMPARE(f.cards(), QStringList{"7050"});

        f.in<QLineEdit>("cardNumberEdit")->setText("7060");
        f.in<QPushButton>("addCardButton")->click();
        emit dialog->save();
        QTRY_COMPARE(f.transport().count(UpdateCards), 2);
        QVERIFY(f.transport().answer(UpdateCards, Command::StatusFailed));
        QTRY_VERIFY(dialog->lastMessage().startsWith(QStringLiteral("Ошибка сохранения карт")));
        emit dialog->save();
        QTRY_COMPARE(f.transport().count(UpdateCards), 3);
        readPayload(f.transport().sent(UpdateCards).last(), session, worker, added, removed);
        QCOMPARE(numbers(added), QStringList{"7060"});
        QVERIFY(removed.isEmpty());
    }
};

QTEST_MAIN(TestPropertiesDialog)
#include "tst_propertiesdialog.moc"
