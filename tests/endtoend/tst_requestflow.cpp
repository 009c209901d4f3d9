#include "authdata.h"
#include "constants.h"
#include "deleteobjectwizard.h"
#include "keyboard.h"
#include "localdatamanager.h"
#include "localstorage.h"
#include "newrequestwizard.h"
#include "photowidget.h"
#include "promptmenuedit.h"
#include "requestview.h"
#include "server.h"
#include "styleditemdelegate.h"
#include "testenvironment.h"
#include "vddatetimeedit.h"
#include "vdglobals.h"
#include "vdobjectselector.h"
#include "vdserverinterface.h"

#include <QAbstractButton>
#include <QHeaderView>
#include <QListView>
#include <QStandardItemModel>
#include <QTableView>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

using namespace vorandel;

namespace {
template <typename T>
T* child(const QObject* parent, const char* name)
{
    return parent->findChild<T*>(QLatin1String(name));
}
}  // namespace

// Requests raised and removed by the operator of the pass office, through the console's
// embedded server, the table following the server's copy of the objects.
class TestRequestFlow : public QObject
{
    Q_OBJECT

    TestEnvironment environment;
    vdserver::Server server;
    std::unique_ptr<LocalDataManager> manager;
    std::unique_ptr<RequestView> view;

    QTableView* table() const { return child<QTableView>(view.get(), "tblRequests"); }
    // The cell of that column in the row of the request; null when the table doesn't show it.
    QVariant shown(TYPE_ID uid, int column) const
    {
        const QAbstractItemModel* rows = table()->model();
        for (int row = 0; row < rows->rowCount(); ++row) {
            if (rows->index(row, 0).data().toUInt() == uid)
                return rows->index(row, column).data();
        }
        return {};
    }
    QList<TYPE_ID> selected() const
    {
        QList<TYPE_ID> uids;
        for (const QModelIndex& row : table()->selectionModel()->selectedRows(0))
            uids << row.data().toUInt();
        return uids;
    }
    void select(const QList<TYPE_ID>& uids)
    {
        table()->clearSelection();
        const QAbstractItemModel* rows = table()->model();
        for (int row = 0; row < rows->rowCount(); ++row) {
            if (uids.contains(rows->index(row, 0).data().toUInt()))
                table()->selectionModel()->select(rows->index(row, 0),
                                                  QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
    }
    TYPE_ID uidOf(const QString& dataname, const QString& key, const QString& value) const
    {
        for (const ObjectInfo& object : *server.objects(dataname)) {
            if (object.parameters.value(key) == value)
                return object.uid;
        }
        return 0;
    }

private slots:
    void initTestCase()
    {
        LocalStorage::instance()->clear();
        server.seed();
        server.setAccessNoticeDelay(10);
        server.setPushTarget([](Command& command) { VDServerInterface::instance()->deliver(command); });
        VDServerInterface::instance()->setTransport(&server);
        manager = std::make_unique<LocalDataManager>(&server);
        manager->init(VDServerInterface::instance(), QStringLiteral("localdatamanager"));

        const std::optional<vdserver::Session> session = server.login(QStringLiteral("operator"));
        QVERIFY(session);
        AuthData::setSession(session->userId, session->login, session->roles, session->sessionId);
        view = std::make_unique<RequestView>();
        view->init(VDServerInterface::instance(), QStringLiteral("requestview"));
        view->insertedToInterface();
        view->show();
    }

    void cleanupTestCase()
    {
        view.reset();
        VDServerInterface::instance()->setTransport(nullptr);
    }

    // A visitor never seen before, with a photo from a file, on the visitors' confirm list: the
    // worker is made without his department's access, the request carries its chain, and the
    // new row is selected with its card.
    void raiseARequestForANewVisitor()
    {
        const int before = server.objects(PASS_REQUEST_DATANAME)->size();
        view->addRequest();
        QPointer<NewRequestWizard> wizard = view->findChild<NewRequestWizard*>();
        QVERIFY(wizard);

        QWizardPage* visitor = wizard->page(0);
        const TYPE_ID department = server.dbSettings().value(db::database::DEFAULT_DEPARTMENT).toUInt();
        QCOMPARE(child<VDObjectSelector>(visitor, "cbDepartment")->currentUid(), department);
        QVERIFY(!server.objects(ORGSTRUCTURE_DATANAME)->value(department).inherits.values(7).isEmpty());
        typeText(child<PromptMenuEdit>(visitor, "leSurname"), QStringLiteral("Тестов"));
        typeText(child<QLineEdit>(visitor, "leName"), QStringLiteral("Тест"));
        QTemporaryDir folder;
        QImage portrait(300, 400, QImage::Format_RGB32);
        portrait.fill(QColor(90, 120, 160));
        const QString file = folder.filePath(QStringLiteral("portrait.png"));
        QVERIFY(portrait.save(file));
        QVERIFY(child<PhotoWidget>(visitor, "photoWidget")->loadFromFile(file));
        wizard->button(QWizard::NextButton)->click();

        QWizardPage* parameters = wizard->page(1);
        const QString number = child<QLineEdit>(parameters, "lePassId")->text();
        QVERIFY2(number.startsWith(QStringLiteral("П-%1-").arg(QDate::currentDate().year())), qPrintable(number));
        QCOMPARE(uidOf(PASS_REQUEST_DATANAME, QStringLiteral("PT_PASSID"), number), 0u);
        auto* end = child<VDDateTimeEdit>(parameters, "dateEnd");
        end->setDateTime(end->dateTime().addDays(3));
        auto* groups = child<QListView>(parameters, "listAvailablePolicies");
        groups->selectionModel()->select(groups->model()->index(0, 0), QItemSelectionModel::Select);
        child<QToolButton>(parameters, "tbAddPolicy")->click();
        const TYPE_ID list = uidOf(CONFIRM_LIST_DATANAME, QStringLiteral("PT_NAME"), QStringLiteral("Разовый пропуск посетителя"));
        child<VDObjectSelector>(parameters, "cbConfirmList")->setCurrentUid(list);
        wizard->button(QWizard::CommitButton)->click();

        QTRY_VERIFY_WITH_TIMEOUT(wizard->button(QWizard::FinishButton)->isEnabled(), 10000);
        QCOMPARE(server.objects(PASS_REQUEST_DATANAME)->size(), before + 1);
        const TYPE_ID request = uidOf(PASS_REQUEST_DATANAME, QStringLiteral("PT_PASSID"), number);
        QVERIFY(request);
        QCOMPARE(selected(), QList<TYPE_ID>{request});
        // In sight, though far down the table (and the table as far to the side as it was).
        const QModelIndex row = table()->selectionModel()->selectedRows(0).first();
        QVERIFY(row.row() > 25);
        const int leftColumn = table()->horizontalHeader()->logicalIndexAt(0);
        QVERIFY(table()->viewport()->rect().intersects(table()->visualRect(row.siblingAtColumn(leftColumn))));
        QVERIFY(!child<QWidget>(wizard, "finalMessage")->isHidden());

        const ObjectInfo stored = server.objects(PASS_REQUEST_DATANAME)->value(request);
        const ObjectInfo worker = server.objects(SUBJECT_DATANAME)->value(stored.parameters.value("PT_SUBJECT_ID").toUInt());
        QCOMPARE(worker.parameters.value("PT_SURNAME"), QStringLiteral("Тестов"));
        QCOMPARE(worker.parent, department);
        QVERIFY(worker.inherits.values(7).isEmpty());  // the department's access taken away again
        QCOMPARE(stored.parameters.value("PT_CREATOR"), QString::number(AuthData::userId()));
        QCOMPARE(stored.inherits.count(INHERIT_CONFIRM_LIST_PASS_REQUEST), 2);
        QCOMPARE(shown(request, 10).toString(), QStringLiteral("petrov"));  // whose turn it is
        QCOMPARE(shown(request, 5).toString().simplified(), QStringLiteral("Тестов Тест"));
        // The card asks for the photo that came from the file.
        QTRY_VERIFY_WITH_TIMEOUT(!LocalStorage::instance()->blob(worker.uid, QStringLiteral("PT_PHOTO")).isEmpty(), 5000);

        wizard->button(QWizard::FinishButton)->click();
        QTRY_VERIFY(wizard.isNull());
    }

    // Removing requests, one of which dismisses its worker: the wizard says so, the requests
    // leave the server and the table, and the worker is dismissed.
    void removeARequestWhoseWorkerIsToBeDismissed()
    {
        TYPE_ID linked = 0;
        TYPE_ID other = 0;
        ObjectInfo worker;
        for (const ObjectInfo& request : *server.objects(PASS_REQUEST_DATANAME)) {
            const QString state = request.parameters.value("PT_STATE");
            if (state == QLatin1String("4") || !shown(request.uid, 0).isValid())
                continue;
            const ObjectInfo candidate =
                server.objects(SUBJECT_DATANAME)->value(request.parameters.value("PT_SUBJECT_ID").toUInt());
            if (!linked && request.parameters.value("PT_DISMISS_LINKED") == QLatin1String("true") && candidate.uid
                && candidate.parameters.value("PT_OBJECTSTATE") != QLatin1String("d")) {
                linked = request.uid;
                worker = candidate;
            } else if (!other && request.parameters.value("PT_DISMISS_LINKED") != QLatin1String("true")) {
                other = request.uid;
            }
        }
        QVERIFY2(linked && other, "the demo set has a request that dismisses its worker, and one that doesn't");

        select({linked, other});
        view->removeRequests();
        QPointer<DeleteObjectWizard> wizard = view->findChild<DeleteObjectWizard*>();
        QVERIFY(wizard);
        QStringList names;
        auto* delegate = qobject_cast<StyledItemDelegate*>(wizard->listView()->itemDelegate());
        for (int row = 0; row < wizard->listModel()->rowCount(); ++row)
            names << delegate->name(wizard->listModel()->index(row, 0));
        const QString note = QStringLiteral("Будет уволен сотрудник %1").arg(VDGlobals::objectName(worker));
        QCOMPARE(names.filter(note).size(), 1);

        wizard->button(QWizard::CommitButton)->click();
        QTRY_VERIFY(wizard->button(QWizard::FinishButton)->isEnabled());
        QVERIFY(!server.objects(PASS_REQUEST_DATANAME)->contains(linked));
        QVERIFY(!server.objects(PASS_REQUEST_DATANAME)->contains(other));
        QTRY_VERIFY(!shown(linked, 0).isValid());
        QVERIFY(!shown(other, 0).isValid());
        QTRY_COMPARE(server.objects(SUBJECT_DATANAME)->value(worker.uid).parameters.value("PT_OBJECTSTATE"),
                     QStringLiteral("d"));
        QTRY_COMPARE(LocalStorage::instance()->constObject(worker.uid, SUBJECT_DATANAME).parameters.value("PT_OBJECTSTATE"),
                     QStringLiteral("d"));
        wizard->close();
    }
};

QTEST_MAIN(TestRequestFlow)
#include "tst_requestflow.moc"
