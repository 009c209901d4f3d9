#include "requestfixture.h"

#include "authdata.h"
#include "constants.h"
#include "localstorage.h"
#include "requestview.h"
#include "vdserverinterface.h"

#include <QApplication>
#include <QMessageBox>
#include <QtTest>

using namespace vorandel;

namespace {
// Stands for a wizard page or a card tab waiting for the result of its task.
class Receiver : public QObject
{
    Q_OBJECT
public:
    QList<QVariantList> calls;

public slots:
    void done(vorandel::TYPE_ID uid) { calls.append({uid}); }
    void cardsDone(vorandel::TYPE_ID uid, QString error) { calls.append({uid, error}); }
    void templates(QList<vorandel::TEMPLATE_DATA> list) { calls.append({QVariant::fromValue(list)}); }
};

TaskInfo task(const QString& type, TYPE_ID uid, QObject* receiver = nullptr, const char* slot = "done")
{
    TaskInfo t;
    t.type = type;
    t.uid = uid;
    t.message = QStringLiteral("готово %1").arg(type);
    t.errorMessage = QStringLiteral("ошибка %1").arg(type);
    if (receiver) {
        t.receiver = receiver;
        t.slot = QLatin1String(slot);
    }
    return t;
}

QStringList popupTexts(const RequestView* view, PluginWidget::PopupKind kind)
{
    QStringList texts;
    for (const PluginWidget::Popup& popup : view->popups()) {
        if (popup.kind == kind)
            texts << popup.text;
    }
    return texts;
}

// Closes the message box that the next step opens.
void acceptNextMessageBox(QString* text)
{
    QTimer::singleShot(0, [text] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            *text = box->text();
            box->accept();
        }
    });
}

const QString AddObject = QStringLiteral("data.addObject");
const QString RemoveObject = QStringLiteral("data.removeObject");
const QString ChangeAccess = QStringLiteral("data.changeUserAccess");
const QString UpdateCards = QStringLiteral("data.updateWorkerCards");
const QString GetFingers = QStringLiteral("data.getUserFingers");
}  // namespace

// The task pipeline as the tab runs it: one task at a time, each handler's report, and what a
// failure takes with it.
class TestRequestViewTasks : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qRegisterMetaType<QList<TYPE_ID>>(); }

    void objectsAreBuiltFromTheTaskParameters()
    {
        RequestFixture fixture;
        RequestView* view = fixture.build();
        TaskInfo create = task(QStringLiteral("create_object"), 0);
        create.params.insert(QStringLiteral("object_type"), QStringLiteral("OT_WORKER"));
        create.params.insert(QStringLiteral("parent"), 12u);
        create.params.insert(QStringLiteral("property-PT_SURNAME"), QStringLiteral("Иванов"));
        create.params.insert(QStringLiteral("property-a-property-b"), QStringLiteral("x"));
        create.params.insert(QStringLiteral("Property-PT_NAME"), QStringLiteral("не берётся"));
        create.params.insert(QStringLiteral("subject"), 5u);
        view->addTask(create);
        QCOMPARE(fixture.transport().count(AddObject), 1);
        QByteArray session;
        ObjectInfo sent;
        readPayload(fixture.transport().sent(AddObject).first(), session, sent);
        QCOMPARE(sent.uid, 0u);
        QCOMPARE(sent.type, QStringLiteral("OT_WORKER"));
        QCOMPARE(sent.parent, 12u);
        QCOMPARE(sent.parameters, (QHash<QString, QString>{{QStringLiteral("PT_SURNAME"), QStringLiteral("Иванов")},
                                                           {QStringLiteral("a-b"), QStringLiteral("x")}}));
    }

    // Another plug-in may hand over a task with subtasks: they run first, in order, the task
    // itself last. A failed subtask takes along the waiting tasks of its object and those that
    // depend on it, and its parent only when that is about the same object. Receivers hear of
    // their tasks by a queued call, never from inside the handler.
    void subtasksRunBeforeTheirTask()
    {
        RequestFixture fixture;
        RequestView* view = fixture.build();
        FakeTransport& transport = fixture.transport();
        Receiver receiver;
        const QString create = QStringLiteral("create_object");
        const TaskInfo failing = task(create, 7, &receiver);
        TaskInfo dependant = task(create, 10);
        dependant.depends << failing.id;
        TaskInfo parent = task(QStringLiteral("delete_object"), 5);
        parent.subtasks = {task(create, 6, &receiver), failing};
        TaskInfo sameObject = task(QStringLiteral("delete_object"), 9);
        sameObject.subtasks = {task(create, 9)};
        for (const TaskInfo& t : {parent, task(create, 7), dependant, sameObject, task(create, 8)})
            view->addTask(t);

        transport.answer(AddObject, Command::StatusOk, [](VDDataStream& out) { out << qint32(40); });  // 6
        QCOMPARE(receiver.calls.size(), 0);
        QCOMPARE(transport.count(RemoveObject), 0);
        transport.answer(AddObject, Command::StatusFailed);  // 7: its parent about 5 runs on
        QTRY_COMPARE(receiver.calls, (QList<QVariantList>{{40u}, {0u}}));
        QVERIFY(view->popups().isEmpty());  // the receiver's business
        QCOMPARE(transport.count(RemoveObject), 1);
        QCOMPARE(transport.count(AddObject), 2);
        transport.answer(RemoveObject, Command::StatusOk);
        transport.answer(AddObject, Command::StatusFailed);  // 9, and its parent with it
        QCOMPARE(transport.count(RemoveObject), 1);
        QCOMPARE(transport.count(AddObject), 4);             // 8: 10 went with 7, on which it depends
        transport.answer(AddObject, Command::StatusOk);
        QCOMPARE(transport.count(AddObject), 4);
        QCOMPARE(transport.count(RemoveObject), 1);
    }

    void removalDismissesAndReportsByPopUp()
    {
        RequestFixture fixture;
        ObjectInfo linked = make::request(5, 0, 11);
        linked.parameters.insert(QStringLiteral("PT_DISMISS_LINKED"), QStringLiteral("true"));
        fixture.set(SUBJECT_DATANAME, {make::worker(11, QStringLiteral("Иванов"))});
        fixture.set(PASS_REQUEST_DATANAME, {linked, make::request(6, 0)});
        RequestView* view = fixture.build();
        view->addTask(task(QStringLiteral("delete_object"), 5));
        view->addTask(task(QStringLiteral("create_object"), 5));
        view->addTask(task(QStringLiteral("delete_object"), 6));
        // The worker goes at once, while the request is still in the store to tell who he is.
        QCOMPARE(fixture.transport().count(QStringLiteral("data.dismissWorker")), 1);

        fixture.transport().answer(RemoveObject, Command::StatusFailed);
        QCOMPARE(popupTexts(view, PluginWidget::PopupKind::Critical), QStringList{QStringLiteral("ошибка delete_object")});
        QCOMPARE(fixture.transport().count(AddObject), 0);  // same uid: dropped
        fixture.transport().answer(RemoveObject, Command::StatusOk);
        QCOMPARE(popupTexts(view, PluginWidget::PopupKind::Message), QStringList{QStringLiteral("готово delete_object")});
    }

    void accessChangesWaitForTheServersNotice()
    {
        RequestFixture fixture;
        fixture.set(POLICY_DATANAME, {make::policy(70, QStringLiteral("Главный вход"))});
        RequestView* view = fixture.build();
        Receiver receiver;
        TaskInfo grant = task(QStringLiteral("change_subject_access"), 11, &receiver);
        grant.params.insert(QStringLiteral("object"), 70u);
        grant.params.insert(QStringLiteral("state"), false);
        grant.params.insert(QStringLiteral("set_child"), true);
        TaskInfo other = task(QStringLiteral("change_subject_access"), 11);
        other.params.insert(QStringLiteral("object"), 71u);
        view->addTask(grant);
        view->addTask(other);

        const QString notice = QStringLiteral("change_access_result:") + QString::fromLatin1(AuthData::sessionId().toHex());
        QVERIFY(view->handlesCommand(notice));
        QByteArray session;
        QList<ACCESS_CHANGES> changes;
        readPayload(fixture.transport().sent(ChangeAccess).first(), session, changes);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(changes.first(), (ACCESS_CHANGES{11, 70, false, true, 7}));

        fixture.transport().answer(ChangeAccess, Command::StatusOk);
        QTRY_COMPARE(receiver.calls.size(), 1);  // told at the direct answer
        QCOMPARE(fixture.transport().count(ChangeAccess), 1);  // the next one waits for the notice

        Command finished;
        finished.name = notice;
        VDDataStream out(&finished.data, QIODevice::WriteOnly);
        out << QList<TYPE_ID>{11};
        VDServerInterface::instance()->deliver(finished);
        QCOMPARE(finished.status, 1);
        QCOMPARE(popupTexts(view, PluginWidget::PopupKind::Information),
                 QStringList{QStringLiteral("Список групп доступа изменен")});
        QCOMPARE(fixture.transport().count(ChangeAccess), 2);
        readPayload(fixture.transport().sent(ChangeAccess).last(), session, changes);
        QCOMPARE(changes.first().ref_type, 2);  // 71 is no policy
        QCOMPARE(receiver.calls.size(), 1);     // not told twice

        // A failed direct answer ends the task at once, and the next one starts from here.
        view->addTask(other);
        fixture.transport().answer(ChangeAccess, Command::StatusFailed);
        QCOMPARE(popupTexts(view, PluginWidget::PopupKind::Critical), QStringList{QStringLiteral("ошибка change_subject_access")});
    }

    void accessChangesNeedThePolicyTable()
    {
        RequestFixture fixture;
        RequestView* view = fixture.build();
        view->addTask(task(QStringLiteral("create_object"), 99));
        view->addTask(task(QStringLiteral("change_subject_access"), 11));
        view->addTask(task(QStringLiteral("create_object"), 11));  // same uid: dropped with it
        view->addTask(task(QStringLiteral("create_object"), 12));
        fixture.transport().answer(AddObject, Command::StatusOk, [](VDDataStream& out) { out << qint32(99); });
        QCOMPARE(fixture.transport().count(ChangeAccess), 0);
        QCOMPARE(fixture.transport().count(AddObject), 2);
        fixture.transport().answer(AddObject, Command::StatusOk, [](VDDataStream& out) { out << qint32(12); });
        QCOMPARE(fixture.transport().count(AddObject), 2);
        QVERIFY(view->popups().isEmpty());  // dropped in silence
    }

    void refreshingTheAccessTabTalksToNoServer()
    {
        RequestFixture fixture;
        RequestView* view = fixture.build();
        Receiver receiver;
        view->addTask(task(QStringLiteral("change_access"), 11, &receiver));
        view->addTask(task(QStringLiteral("change_access"), 12));
        QTRY_COMPARE(popupTexts(view, PluginWidget::PopupKind::Message).size(), 1);
        QTRY_COMPARE(receiver.calls.size(), 1);
        QCOMPARE(receiver.calls.first().first().toUInt(), 11u);
        QCOMPARE(fixture.transport().queries().size(), 0);
    }

    void cardTasks()
    {
        RequestFixture fixture;
        RequestView* view = fixture.build();
        Receiver receiver;
        ObjectInfo card;
        card.uid = 0;
        card.type = QStringLiteral("OT_CARD");
        card.parameters.insert(db::card::NUMBER, QStringLiteral("555"));
        TaskInfo cards = task(QStringLiteral("update_worker_cards"), 11, &receiver, "cardsDone");
        cards.params.insert(QStringLiteral("add"), card.toByteArray());
        cards.params.insert(QStringLiteral("delete"), ObjectInfo().toByteArray());
        view->addTask(cards);
        QByteArray session;
        TYPE_ID worker = 0;
        QList<ObjectInfo> toAdd, toRemove;
        bool flag = false;
        readPayload(fixture.transport().sent(UpdateCards).first(), session, worker, toAdd, toRemove, flag);
        QCOMPARE(worker, 11u);
        QCOMPARE(toAdd.size(), 1);
        QCOMPARE(toAdd.first().parameters.value(db::card::NUMBER), QStringLiteral("555"));
        QCOMPARE(toRemove.size(), 1);
        QVERIFY(flag);
        fixture.transport().answer(UpdateCards, Command::StatusFailed,
                                   [](VDDataStream& out) { out << QStringLiteral("Карта 555 уже выдана"); });
        QTRY_COMPARE(receiver.calls.size(), 1);
        QCOMPARE(receiver.calls.first(), (QVariantList{0u, QStringLiteral("ошибка update_worker_cards")}));
        // The receiver was told, and the operator sees it too.
        QCOMPARE(popupTexts(view, PluginWidget::PopupKind::Critical), QStringList{QStringLiteral("ошибка update_worker_cards")});

        view->addTask(task(QStringLiteral("update_worker_cards"), 11));
        fixture.transport().answer(UpdateCards, Command::StatusOk);
        QCOMPARE(popupTexts(view, PluginWidget::PopupKind::Message), QStringList{QStringLiteral("готово update_worker_cards")});
    }

    void biometricTasks()
    {
        RequestFixture fixture;
        RequestView* view = fixture.build();
        Receiver receiver;
        view->addTask(task(QStringLiteral("get_biometrics"), 11, &receiver, "templates"));
        fixture.transport().answer(GetFingers, Command::StatusFailed);
        QTRY_COMPARE(receiver.calls.size(), 1);
        QVERIFY(receiver.calls.last().first().value<QList<TEMPLATE_DATA>>().isEmpty());
        QCOMPARE(popupTexts(view, PluginWidget::PopupKind::Critical), QStringList{QStringLiteral("ошибка get_biometrics")});

        // Scanning: the window of the fingerprint plug-in; a refusal is shown in a box.
        view->addTask(task(QStringLiteral("scan_biometrics"), 11));
        view->addTask(task(QStringLiteral("get_biometrics"), 11));
        view->addTask(task(QStringLiteral("get_biometrics"), 12));
        const QString scan = QStringLiteral("show:fingerprintwidget.scan");
        TYPE_ID worker = 0;
        QString identity;
        readPayload(fixture.transport().sent(scan).first(), worker, identity);
        QCOMPARE(worker, 11u);
        QVERIFY(identity.startsWith(QLatin1String("requestview ")));
        QString shown;
        acceptNextMessageBox(&shown);
        fixture.transport().answer(scan, Command::StatusBiometricsLocked);
        QCOMPARE(shown, QStringLiteral("Запрещено редактирование биометрической информации"));
        // The waiting task of that worker is dropped; the other one runs.
        QCOMPARE(fixture.transport().count(GetFingers), 2);
        QByteArray session;
        QList<unsigned int> asked;
        readPayload(fixture.transport().sent(GetFingers).last(), session, asked);
        QCOMPARE(asked, QList<unsigned int>{12});
    }

    void answersWithoutATaskAreIgnored()
    {
        RequestFixture fixture;
        RequestView* view = fixture.build();
        view->generateCard(ObjectInfo());  // a direct call answered by the task handler
        fixture.transport().answer(UpdateCards, Command::StatusFailed);
        QVERIFY(view->popups().isEmpty());
    }
};

QTEST_MAIN(TestRequestViewTasks)
#include "tst_requestviewtasks.moc"
