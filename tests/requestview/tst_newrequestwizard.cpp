#include "requestfixture.h"

#include "authdata.h"
#include "constants.h"
#include "keyboard.h"
#include "localstorage.h"
#include "newrequestwizard.h"
#include "promptmenuedit.h"
#include "requestview.h"
#include "requestworkerwizardpage.h"
#include "vddatetimeedit.h"
#include "vdobjectselector.h"
#include "vdserverinterface.h"
#include "vdtableview.h"

#include <QAbstractButton>
#include <QLabel>
#include <QListView>
#include <QProgressBar>
#include <QToolButton>
#include <QtTest>

using namespace vorandel;

namespace {

const QString AddObject = QStringLiteral("data.addObject");
const QString ChangeAccess = QStringLiteral("data.changeUserAccess");

constexpr TYPE_ID Staff = 3;     // a department whose workers get groups 20 and 21
constexpr TYPE_ID Visitors = 4;  // a department without groups
constexpr TYPE_ID Known = 10;    // a worker of the directory, in Visitors
constexpr TYPE_ID NewWorker = 900;
constexpr TYPE_ID NewRequest = 950;

ObjectInfo unit(TYPE_ID uid, const QString& type, TYPE_ID parent, const QString& name)
{
    ObjectInfo info;
    info.uid = uid;
    info.type = type;
    info.parent = parent;
    info.parameters.insert(QStringLiteral("PT_NAME"), name);
    return info;
}

// The tab over a store of one firm with two departments, a known worker, two groups and a request,
// with a wizard of its own open.
class WizardFixture : public RequestFixture
{
public:
    WizardFixture()
    {
        ObjectInfo staff = unit(Staff, db::orgstructure::DEPARTMENT, 2, QStringLiteral("Бухгалтерия"));
        staff.inherits.insert(7, INHERIT_DATA(Staff, 20, 7));
        staff.inherits.insert(7, INHERIT_DATA(Staff, 21, 7));
        set(ORGSTRUCTURE_DATANAME, {unit(1, db::orgstructure::SUBJECT_ROOT, 0, QStringLiteral("Группа")),
                                    unit(2, db::orgstructure::FIRM, 1, QStringLiteral("Завод")), staff,
                                    unit(Visitors, db::orgstructure::DEPARTMENT, 2, QStringLiteral("Посетители"))});
        ObjectInfo known = make::worker(Known, QStringLiteral("Иванов"), QStringLiteral("Иван"), QString(),
                                        QStringLiteral("000010"));
        known.parent = Visitors;
        set(SUBJECT_DATANAME, {known});
        set(POLICY_DATANAME, {make::policy(20, QStringLiteral("Центральная проходная")),
                              make::policy(21, QStringLiteral("Склад"))});
        set(CONFIRM_LIST_DATANAME, {});
        set(PASS_REQUEST_DATANAME, {make::request(40, 0, Known)});
        LocalStorage::instance()->setDbSettings({{db::database::PASS_REQUEST_SEQUENCE, QStringLiteral("П-${num}")}});
        build();
        view()->addRequest();
        wizard = view()->findChild<NewRequestWizard*>();
    }

    RequestWorkerWizardPage* visitor() const { return qobject_cast<RequestWorkerWizardPage*>(wizard->page(0)); }
    QProgressBar* bar() const { return wizard->findChild<QProgressBar*>(QStringLiteral("progressBar")); }
    QString message() const { return wizard->findChild<QLabel*>(QStringLiteral("lbMessage"))->text(); }
    bool finalShown() const { return !wizard->findChild<QLabel*>(QStringLiteral("finalMessage"))->isHidden(); }
    bool canFinish() const { return wizard->button(QWizard::FinishButton)->isEnabled(); }

    void pickKnown() { emit visitor()->findChild<PromptMenuEdit*>(QStringLiteral("leSurname"))->found(Known); }
    void typeNewVisitor(TYPE_ID department)
    {
        typeText(visitor()->findChild<PromptMenuEdit*>(QStringLiteral("leSurname")), QStringLiteral("Сидоров"));
        visitor()->findChild<VDObjectSelector*>(QStringLiteral("cbDepartment"))->setCurrentUid(department);
    }
    // Walks to the parameters, gives the visitor a day and a group, and saves.
    void save()
    {
        toParameters();
        commit();
    }
    void toParameters()
    {
        wizard->button(QWizard::NextButton)->click();
        QCOMPARE(wizard->currentId(), 1);
    }
    void commit()
    {
        QWizardPage* page = wizard->page(1);
        auto* end = page->findChild<VDDateTimeEdit*>(QStringLiteral("dateEnd"));
        end->setDateTime(end->dateTime().addDays(1));
        auto* groups = page->findChild<QListView*>(QStringLiteral("listAvailablePolicies"));
        groups->selectionModel()->select(groups->model()->index(0, 0),
                                         QItemSelectionModel::Select | QItemSelectionModel::Rows);
        page->findChild<QToolButton*>(QStringLiteral("tbAddPolicy"))->click();
        wizard->button(QWizard::CommitButton)->click();
        QCOMPARE(wizard->currentId(), 2);
    }

    ObjectInfo sentObject(int index)
    {
        QByteArray session;
        ObjectInfo object;
        readPayload(transport().sent(AddObject).at(index), session, object);
        return object;
    }
    void answerCreation(TYPE_ID uid)
    {
        transport().answer(AddObject, uid ? Command::StatusOk : Command::StatusFailed,
                           [uid](VDDataStream& out) { out << qint32(uid); });
        QCoreApplication::processEvents();
    }
    // The direct answer to an access change, then, on success, the server's notice that it is done.
    void answerAccess(bool ok)
    {
        transport().answer(ChangeAccess, ok ? Command::StatusOk : Command::StatusFailed);
        QCoreApplication::processEvents();
        if (!ok)
            return;
        Command notice;
        notice.name = QStringLiteral("change_access_result:") + QString::fromLatin1(AuthData::sessionId().toHex());
        VDDataStream out(&notice.data, QIODevice::WriteOnly);
        out << QList<TYPE_ID>{NewWorker};
        VDServerInterface::instance()->deliver(notice);
        QCoreApplication::processEvents();
    }
    // The server's copy of the new request reaches the local store.
    void arrive(TYPE_ID uid = NewRequest)
    {
        set(PASS_REQUEST_DATANAME, {make::request(uid, 0, NewWorker)});
    }
    QList<TYPE_ID> selectedUids() const
    {
        QList<TYPE_ID> uids;
        for (const QModelIndex& row : table()->selectionModel()->selectedRows(0))
            uids << row.data().toUInt();
        return uids;
    }

    QPointer<NewRequestWizard> wizard;
};

}  // namespace

// The chain of saves that the wizard runs through the tab's queue: a worker if he is new, the
// access he took from his department, the request; each failure on the way; the wait for the
// local store.
class TestNewRequestWizard : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qRegisterMetaType<QList<TYPE_ID>>(); }

    // A worker of the directory: the request alone, in two stages, and the wait for the store.
    void knownWorker()
    {
        WizardFixture f;
        f.pickKnown();
        f.save();
        QCOMPARE(f.bar()->maximum(), 2);
        QCOMPARE(f.message(), QStringLiteral("Сохранение заявки"));
        QCOMPARE(f.transport().count(AddObject), 1);
        const ObjectInfo request = f.sentObject(0);
        QCOMPARE(request.parameters.value("PT_SUBJECT_ID"), QString::number(Known));
        QCOMPARE(request.parameters.value("PT_SURNAME"), QStringLiteral("Иванов"));  // the card shows it
        QCOMPARE(request.parameters.value("PT_PASSID"), QStringLiteral("П-41"));  // the next after П-0040

        f.answerCreation(NewRequest);
        QCOMPARE(f.message(), QStringLiteral("Обновление информации о заявке"));
        QCOMPARE(f.bar()->value(), 2);
        QVERIFY(!f.canFinish());  // the bar is full, but only the end says so

        // Other news changes nothing.
        f.set(SUBJECT_DATANAME, {make::worker(NewRequest, QStringLiteral("Однофамилец"))});
        f.arrive(NewRequest + 1);
        QCOMPARE(f.message(), QStringLiteral("Обновление информации о заявке"));
        QVERIFY(!f.canFinish());
        QVERIFY(!f.selectedUids().contains(NewRequest));

        f.arrive();
        QCOMPARE(f.message(), QStringLiteral("Заявка создана"));
        QVERIFY(f.canFinish());
        QVERIFY(f.finalShown());
        QCOMPARE(f.selectedUids(), QList<TYPE_ID>{NewRequest});
        QCOMPARE(f.transport().count(ChangeAccess), 0);
    }

    // A new worker in a department with groups: worker, one removal per group, request.
    void newWorkerLosesHisDepartmentsAccess()
    {
        WizardFixture f;
        f.typeNewVisitor(Staff);
        f.save();
        QCOMPARE(f.bar()->maximum(), 5);
        QCOMPARE(f.message(), QStringLiteral("Сохранение сотрудника"));
        QCOMPARE(f.sentObject(0).parent, Staff);

        f.answerCreation(NewWorker);
        QCOMPARE(f.transport().count(ChangeAccess), 1);  // one at a time
        f.answerAccess(true);
        QCOMPARE(f.transport().count(AddObject), 1);  // not before the last group
        QCOMPARE(f.transport().count(ChangeAccess), 2);
        f.answerAccess(true);
        QCOMPARE(f.message(), QStringLiteral("Сохранение заявки"));
        QCOMPARE(f.transport().count(AddObject), 2);
        QCOMPARE(f.sentObject(1).parameters.value("PT_SUBJECT_ID"), QString::number(NewWorker));

        // The store was quicker than the answer: no waiting.
        f.arrive();
        f.answerCreation(NewRequest);
        QCOMPARE(f.message(), QStringLiteral("Заявка успешно сохранена"));
        QCOMPARE(f.bar()->value(), 5);
        QVERIFY(f.canFinish());
        QCOMPARE(f.selectedUids(), QList<TYPE_ID>{NewRequest});
    }

    // A department without groups: nothing to take away, straight on to the request, and the
    // stages still add up to the end.
    void newWorkerWithoutDepartmentAccess()
    {
        WizardFixture f;
        f.typeNewVisitor(Visitors);
        f.save();
        f.answerCreation(NewWorker);
        QCOMPARE(f.transport().count(AddObject), 2);
        f.answerCreation(NewRequest);
        f.arrive();
        QVERIFY(f.canFinish());
        QCOMPARE(f.bar()->value(), f.bar()->maximum());
        QCOMPARE(f.transport().count(ChangeAccess), 0);
    }

    // A picked worker who has left the store meanwhile: three stages, and the request is his.
    void pickedWorkerGoneFromTheStore()
    {
        WizardFixture f;
        f.pickKnown();
        f.toParameters();
        LocalStorage::instance()->removeObjects(SUBJECT_DATANAME, {Known});
        f.commit();
        QCOMPARE(f.bar()->maximum(), 3);
        QCOMPARE(f.transport().count(AddObject), 1);
        QCOMPARE(f.sentObject(0).parameters.value("PT_SUBJECT_ID"), QString::number(Known));
    }

    // Each failure ends the chain with its message on the page, and nothing more is attempted.
    void failures_data()
    {
        QTest::addColumn<QString>("failing");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("creations");  // addObject queries sent in all
        QTest::newRow("worker") << "worker" << "Ошибка сохранения сотрудника" << 1;
        QTest::newRow("access") << "access" << "Ошибка сохранения сотрудника" << 1;
        QTest::newRow("request") << "request" << "Ошибка сохранения заявки" << 2;
    }

    void failures()
    {
        QFETCH(QString, failing);
        QFETCH(QString, text);
        QFETCH(int, creations);

        WizardFixture f;
        f.typeNewVisitor(Staff);
        f.save();
        f.answerCreation(failing == "worker" ? 0 : NewWorker);
        if (failing != "worker") {
            f.answerAccess(failing != "access");
            if (failing != "access")
                f.answerAccess(true);
        }
        if (failing == "request")
            f.answerCreation(0);
        QCOMPARE(f.message(), text);
        QCOMPARE(f.bar()->value(), f.bar()->maximum());
        QVERIFY(f.canFinish());
        QVERIFY(!f.finalShown());
        QCOMPARE(f.transport().count(AddObject), creations);
        QCOMPARE(f.transport().count(ChangeAccess), failing == "worker" ? 0 : failing == "access" ? 1 : 2);
        QCOMPARE(f.transport().count(QStringLiteral("data.removeObject")), 0);  // a worker made stays
        for (const PluginWidget::Popup& popup : f.view()->popups())
            QVERIFY(popup.kind != PluginWidget::PopupKind::Critical);  // the page says it
    }

    // Closed while its tasks run: nobody is told, what is queued runs on, the chain stops, and
    // the queue is free for the next task.
    void closedWhileItsTasksRun()
    {
        WizardFixture f;
        f.typeNewVisitor(Staff);
        f.save();
        f.answerCreation(NewWorker);
        QCOMPARE(f.transport().count(ChangeAccess), 1);
        f.wizard->close();
        QTRY_VERIFY(f.wizard.isNull());

        f.answerAccess(true);
        f.answerAccess(true);
        QCOMPARE(f.transport().count(ChangeAccess), 2);
        QCOMPARE(f.transport().count(AddObject), 1);  // no request
        // Without a receiver the operator hears of the access changes in pop-ups.
        QVERIFY(!f.view()->popups().isEmpty());

        TaskInfo next;
        next.type = QStringLiteral("create_object");
        f.view()->addTask(next);
        QCOMPARE(f.transport().count(AddObject), 2);
    }
};

QTEST_MAIN(TestNewRequestWizard)
#include "tst_newrequestwizard.moc"
