#include "records.h"
#include "requestfixture.h"

#include "constants.h"
#include "dbquery.h"
#include "localstorage.h"
#include "requestview.h"
#include "tabbeddialog.h"
#include "vdobjectselector.h"
#include "vdserverinterface.h"
#include "vdtableview.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QtTest>

using namespace vorandel;

namespace {

using Parameters = QHash<QString, QString>;

const QString UpdateObject = QStringLiteral("data.updateObject");
const QString GetFingers = QStringLiteral("data.getUserFingers");
const QString FingersStatement = QStringLiteral(
    "SELECT user_object_id, count( id ), (SELECT child_id FROM object_inherit WHERE ref_type = 3 AND "
    "parent_id = user_object_id)  FROM fingers WHERE user_object_id = ANY( ARRAY[%1]::bigint[] ) "
    "GROUP BY user_object_id;");

constexpr TYPE_ID Request = 500;   // state 0, worker 11
constexpr TYPE_ID Worker = 11;     // in unit 2, one card
constexpr TYPE_ID Colleague = 12;  // holds card 7002

using records::card;
using records::object;

TEMPLATE_DATA print(qint16 index, int kind = 0)
{
    TEMPLATE_DATA data;
    data.index = index;
    data.kind = kind;
    data.data = "t";
    return data;
}

// A tab over a store with a worker behind request 500, his colleague, units, groups, readers, jobs.
class DialogFixture : public RequestFixture
{
public:
    DialogFixture(const Parameters& requestChanges = {}, const Parameters& workerChanges = {})
    {
        set(ORGSTRUCTURE_DATANAME, {object(1, db::orgstructure::SUBJECT_ROOT, {{"PT_NAME", "Организация"}}),
                                    object(2, db::orgstructure::DEPARTMENT, {{"PT_NAME", "Бухгалтерия"}}, 1),
                                    object(3, db::orgstructure::DEPARTMENT, {{"PT_NAME", "Склад"}}, 1)});
        set(POLICY_DATANAME, {make::policy(70, "Главный вход"), make::policy(71, "Парковка"), make::policy(72, "Склад")});
        set(DEVICE_DATANAME, {object(80, "OT_DEVICE", {{"PT_NAME", "Считыватель бюро пропусков"}}),
                              object(81, "OT_DEVICE", {{"PT_NAME", "Списанный считыватель"}, {"PT_OBJECTSTATE", "D"}})});
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
    QString clientId() const
    {
        for (const CommandType& type : view()->registeredCommandTypes()) {
            if (type.name.startsWith(QLatin1String("fingerprint.finished:")))
                return type.name.section(QLatin1Char(':'), 1);
        }
        return {};
    }
    void push(const QString& name, const std::function<void(VDDataStream&)>& write)
    {
        Command command;
        command.name = name;
        command.type = 8;
        VDDataStream out(&command.data, QIODevice::WriteOnly);
        write(out);
        VDServerInterface::instance()->deliver(command);
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
    QStringList counts() const
    {
        return {in<QLabel>("fingersCount")->text(), in<QLabel>("palmCount")->text(), in<QLabel>("airpalmCount")->text(),
                in<QLabel>("faceCount")->text()};
    }
};

const QStringList AllTabs{"Основное", "Сотрудник", "Сведения о работе", "Доступ", "Идентификация"};

}  // namespace

// The dialog as the tab builds, refreshes and saves it, with the worker behind the request.
class TestPropertiesDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qRegisterMetaType<QHash<TYPE_ID, requestview::UserFingers>>();
        qRegisterMetaType<QList<TYPE_ID>>();
    }

    void opensForExactlyOneRequest()
    {
        DialogFixture f;
        f.select({Request, 501});
        f.view()->showRequestProperties();
        QVERIFY(!f.dialog());

        TabbedDialog* dialog = f.open();
        QVERIFY(dialog);
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Свойства заявки"));
        QCOMPARE(dialog->windowModality(), Qt::ApplicationModal);
        QCOMPARE(f.enabledTabs(), AllTabs);
        // The card tab's pages are its sub tabs.
        QCOMPARE(dialog->subTabs(4)->count(), 3);
        QCOMPARE(f.cards(), QStringList{"7001"});
        QCOMPARE(f.in<QComboBox>("deviceCombo")->count(), 1);  // the written-off reader isn't offered

        // A second "Свойства" brings the same dialog forward, now with the other request.
        f.view()->showRequestProperties(501);
        QCOMPARE(f.view()->findChildren<TabbedDialog*>().size(), 1);
        QCOMPARE(f.dialog(), dialog);
        dialog->close();
        QTRY_VERIFY(!f.dialog());
    }

    void editableOnlyBeforeADecision_data()
    {
        QTest::addColumn<QString>("state");
        QTest::addColumn<bool>("editable");
        QTest::newRow("not confirmed") << "0" << true;
        QTest::newRow("rejected") << "1" << false;
        QTest::newRow("confirmed") << "2" << false;
        QTest::newRow("confirmed by the server") << "3" << false;
        QTest::newRow("active") << "4" << false;
        QTest::newRow("finished") << "5" << false;
        QTest::newRow("unknown above") << "6" << true;
        QTest::newRow("negative") << "-1" << true;
    }

    void editableOnlyBeforeADecision()
    {
        QFETCH(QString, state);
        QFETCH(bool, editable);
        DialogFixture f({{"PT_STATE", state}});
        f.open();
        QCOMPARE(f.in<QLineEdit>("leCarNumber")->isEnabled(), editable);
        QCOMPARE(f.in<QWidget>("dtEnd")->isEnabled(), editable);
        QCOMPARE(f.in<QLineEdit>("surnameEdit")->isReadOnly(), !editable);
        QCOMPARE(f.in<QComboBox>("jobCombo")->isEnabled(), editable);
        QCOMPARE(f.in<QWidget>("departmentSelector")->isEnabled(), editable);
        QCOMPARE(f.in<QLineEdit>("cardNumberEdit")->isEnabled(), editable);
        const QListWidgetItem* group = f.in<QListWidget>("groupList")->item(0);
        QCOMPARE(bool(group->flags() & Qt::ItemIsUserCheckable), editable);
        // Read-only tabs stay open to be read.
        QCOMPARE(f.enabledTabs(), AllTabs);
    }

    void theWorkerDecidesWhatCanBeReached_data()
    {
        QTest::addColumn<Parameters>("request");
        QTest::addColumn<Parameters>("worker");
        QTest::addColumn<QStringList>("enabled");
        QTest::newRow("in service") << Parameters() << Parameters() << AllTabs;
        QTest::newRow("dismissed") << Parameters() << Parameters{{"PT_OBJECTSTATE", "d"}} << QStringList{"Основное"};
        // Only the exact mark dismisses here.
        QTest::newRow("marked D") << Parameters() << Parameters{{"PT_OBJECTSTATE", "D"}} << AllTabs;
        QTest::newRow("no worker") << Parameters{{"PT_SUBJECT_ID", ""}} << Parameters() << QStringList();
        QTest::newRow("worker not in the store") << Parameters{{"PT_SUBJECT_ID", "999"}} << Parameters() << QStringList();
    }

    void theWorkerDecidesWhatCanBeReached()
    {
        QFETCH(Parameters, request);
        QFETCH(Parameters, worker);
        QFETCH(QStringList, enabled);
        DialogFixture f(request, worker);
        f.open();
        QCOMPARE(f.enabledTabs(), enabled);
        QVERIFY(f.dialog()->isVisible());
        if (enabled.isEmpty())
            QVERIFY(f.cards().isEmpty());
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
        LocalStorage::instance()->removeObjects(SUBJECT_DATANAME, {Worker});
        QCOMPARE(dialog->lastMessage(), QStringLiteral("Сотрудник удалён: его данные сохранить нельзя"));
        QCOMPARE(f.enabledTabs(), QStringList{"Основное"});
        QCOMPARE(f.in<QLineEdit>("surnameEdit")->text(), QStringLiteral("Орлов"));

        f.in<QLineEdit>("leCarNumber")->setText("Х999ХХ99");
        LocalStorage::instance()->removeObjects(PASS_REQUEST_DATANAME, {Request});
        QCOMPARE(dialog->lastMessage(), QStringLiteral("Заявка удалена: сохранить изменения нельзя"));
        QVERIFY(!dialog->isSaveEnabled());
        QCOMPARE(f.in<QLineEdit>("leCarNumber")->text(), QStringLiteral("Х999ХХ99"));
        QVERIFY(dialog->isVisible());
    }

    void savingTheRequest_data()
    {
        QTest::addColumn<QString>("car");        // empty: left alone
        QTest::addColumn<QList<int>>("toggled");  // rows of the group list clicked, in order
        QTest::addColumn<Parameters>("sent");     // empty: no task, the dialog told of success at once

        QTest::newRow("nothing changed") << QString() << QList<int>() << Parameters();
        QTest::newRow("car number") << "В777ОР99" << QList<int>() << Parameters{{"PT_CAR_NUMBER", "В777ОР99"}};
        // Groups sort by name: Главный вход 70, Парковка 71, Склад 72.
        QTest::newRow("a group added") << QString() << QList<int>{2} << Parameters{{"PT_WAY", "70;71;72"}};
        QTest::newRow("the same groups, reordered") << QString() << QList<int>{0, 0} << Parameters{{"PT_WAY", "71;70"}};
        QTest::newRow("a group added and taken away") << QString() << QList<int>{2, 2} << Parameters();
    }

    void savingTheRequest()
    {
        QFETCH(QString, car);
        QFETCH(QList<int>, toggled);
        QFETCH(Parameters, sent);
        DialogFixture f;
        TabbedDialog* dialog = f.open();
        QSignalSpy told(f.view(), &RequestView::requestSaved);
        if (!car.isEmpty()) {
            // As typed: the text, and the edit announced.
            QLineEdit* number = f.in<QLineEdit>("leCarNumber");
            number->setText(car);
            emit number->textEdited(car);
        }
        QListWidget* groups = f.in<QListWidget>("groupList");
        for (const int row : toggled) {
            QListWidgetItem* item = groups->item(row);
            item->setCheckState(item->checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
        }
        QVERIFY(dialog->isSaveButtonShown() || sent.isEmpty());
        emit dialog->save();
        if (sent.isEmpty()) {
            QCOMPARE(f.transport().count(UpdateObject), 0);
            QCOMPARE(told.count(), 1);
            QVERIFY(!dialog->isSaveButtonShown());
            return;
        }
        QTRY_COMPARE(f.transport().count(UpdateObject), 1);
        QCOMPARE(f.saved(0).uid, Request);
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

    // The count of prints by the database: the statement as it stands, and its rows.
    void fingersByTheDatabase()
    {
        DialogFixture f;
        QSignalSpy received(f.view(), &RequestView::fingersReceived);
        f.view()->sendGetWorkerFingers({5, 7});
        f.view()->sendGetWorkerFingers({});
        const QList<Command> sent = f.transport().sent(QStringLiteral("db.async"));
        QCOMPARE(sent.size(), 2);
        QString client, queryId;
        DbQuery query;
        readPayload(sent.at(0), client, queryId, query);
        QCOMPARE(client, f.clientId());
        QVERIFY(queryId.startsWith(QLatin1String("get_fingers_")));
        QCOMPARE(query.queries, QStringList{FingersStatement.arg("5,7")});
        readPayload(sent.at(1), client, queryId, query);
        QCOMPARE(query.queries, QStringList{FingersStatement.arg(QString())});

        const QString result = QStringLiteral("db.async_result:") + f.clientId();
        DbResult rows;
        rows.columnCount = 3;
        rows.rowCount = 3;
        rows.cells = {5, 2, 60, 7, 4, QVariant(), 5, 3, 61};  // the second row of 5 replaces the first
        f.push(result, [&](VDDataStream& out) { out << queryId << int(Command::StatusOk) << QString() << QList<DbResult>{rows}; });
        f.push(result, [&](VDDataStream& out) { out << QStringLiteral("other") << int(Command::StatusOk) << QString() << QList<DbResult>{rows}; });
        f.push(result, [&](VDDataStream& out) { out << queryId << int(Command::StatusFailed) << QStringLiteral("more than one row"); });
        QCOMPARE(received.count(), 1);
        const auto fingers = received.first().first().value<QHash<TYPE_ID, requestview::UserFingers>>();
        QCOMPARE(fingers.size(), 2);
        QCOMPARE(fingers.value(5).count, 3);
        QCOMPARE(fingers.value(5).card, 61u);
        QCOMPARE(fingers.value(7).count, 4);
        QCOMPARE(fingers.value(7).card, 0u);
    }

    // The counts the card tab shows: from the templates the server keeps, and from the window.
    void fingersInTheCardTab()
    {
        DialogFixture f;
        f.open();
        QCOMPARE(f.counts(), (QStringList{"—", "—", "—", "—"}));
        QMultiMap<unsigned int, TEMPLATE_DATA> templates;
        templates.insert(Worker, print(0));
        templates.insert(Worker, print(10));      // no finger
        templates.insert(Worker, print(100, 2));
        templates.insert(Worker, print(101, 3));
        templates.insert(Worker, print(100, 0));  // a palm of no known kind
        templates.insert(Worker, print(201));
        templates.insert(Colleague, print(3));
        QVERIFY(f.transport().answer(GetFingers, Command::StatusOk, [&](VDDataStream& out) { out << templates; }));
        QCOMPARE(f.counts(), (QStringList{"1", "1", "1", "1"}));

        // The window closes: its templates, then the server's again for the worker of the dialog.
        const QString finished = QStringLiteral("fingerprint.finished:") + f.clientId();
        f.push(finished, [](VDDataStream& out) { out << qint32(Worker) << QList<TEMPLATE_DATA>{print(1), print(2), print(200)}; });
        QCOMPARE(f.counts(), (QStringList{"2", "0", "0", "1"}));
        QCOMPARE(f.transport().count(GetFingers), 2);
        QList<unsigned int> asked;
        QByteArray session;
        readPayload(f.transport().sent(GetFingers).last(), session, asked);
        QCOMPARE(asked, QList<unsigned int>{Worker});
        // Nothing made: the counts stay, and are asked for again all the same.
        QSignalSpy scanned(f.view(), &RequestView::workerFingersScanned);
        f.push(finished, [](VDDataStream& out) { out << qint32(Colleague); });
        QCOMPARE(scanned.count(), 0);
        QCOMPARE(f.transport().count(GetFingers), 3);
        QCOMPARE(f.counts(), (QStringList{"2", "0", "0", "1"}));
    }

};

QTEST_MAIN(TestPropertiesDialog)
#include "tst_propertiesdialog.moc"
