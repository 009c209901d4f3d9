#include "authdata.h"
#include "constants.h"
#include "localdatamanager.h"
#include "localstorage.h"
#include "requestview.h"
#include "server.h"
#include "testenvironment.h"
#include "teststore.h"
#include "vdguiglobals.h"
#include "vdserverinterface.h"

#include <QTableView>
#include <QtTest>

using namespace vorandel;

// Two approvers confirm a request in turn, each from a console of his own, and the row reaches
// "confirmed" through the server and the store, never by the tab writing it; and it stays so when
// the console starts again.
class TestConfirmFlow : public QObject
{
    Q_OBJECT

    TestEnvironment environment;
    TestStore store;
    vdserver::Server server;
    std::unique_ptr<LocalDataManager> manager;
    TYPE_ID confirmedRequest = 0;

    // The console's start: the local store filled from the server.
    void connectConsole()
    {
        LocalStorage::instance()->clear();
        manager = std::make_unique<LocalDataManager>(&server);
        manager->init(VDServerInterface::instance(), QStringLiteral("localdatamanager"));
    }

    // A request waiting for its first of exactly two approvers, both of whom can log in.
    struct Candidate
    {
        TYPE_ID request = 0;
        QString first, second;
    };
    Candidate findCandidate() const
    {
        QHash<TYPE_ID, QString> logins;
        for (const vdserver::Account& account : server.accounts())
            logins.insert(account.uid, account.login);
        for (const ObjectInfo& request : *server.objects(PASS_REQUEST_DATANAME)) {
            QList<INHERIT_DATA> chain = request.inherits.values(INHERIT_CONFIRM_LIST_PASS_REQUEST);
            std::sort(chain.begin(), chain.end(), SortInheritDataByPriority);
            if (request.parameters.value(QStringLiteral("PT_STATE")) != QLatin1String("0") || chain.size() != 2
                || chain.at(0).priority == chain.at(1).priority || request.inherits.contains(INHERIT_CONFIRMED_LIST_PASS_REQUEST)
                || request.inherits.contains(INHERIT_REJECTED_LIST_PASS_REQUEST)
                || !logins.contains(chain.at(0).second) || !logins.contains(chain.at(1).second))
                continue;
            return {request.uid, logins.value(chain.at(0).second), logins.value(chain.at(1).second)};
        }
        return {};
    }

    // A console of this approver: his session, a tab built over the store.
    std::unique_ptr<RequestView> openTab(const QString& login)
    {
        const std::optional<vdserver::Session> session = server.login(login);
        if (!session)
            return nullptr;
        AuthData::setSession(session->userId, session->login, session->roles, session->sessionId);
        auto view = std::make_unique<RequestView>();
        view->init(VDServerInterface::instance(), QStringLiteral("requestview"));
        view->insertedToInterface();
        return view;
    }

    static QString shownState(RequestView* view, TYPE_ID uid)
    {
        const QAbstractItemModel* rows = view->findChild<QTableView*>(QStringLiteral("tblRequests"))->model();
        for (int row = 0; row < rows->rowCount(); ++row) {
            if (rows->index(row, 0).data().toUInt() == uid)
                return rows->index(row, 1).data().toString();
        }
        return QStringLiteral("<not shown>");
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(server.open(store.location()), qPrintable(server.errorString()));
        server.seed();
        server.setPushTarget([](Command& command) { VDServerInterface::instance()->deliver(command); });
        VDServerInterface::instance()->setTransport(&server);
        connectConsole();
        QVERIFY(LocalStorage::instance()->constObjects(PASS_REQUEST_DATANAME));
    }

    void cleanupTestCase()
    {
        VDServerInterface::instance()->setTransport(nullptr);
    }

    void twoApproversInTurn()
    {
        const Candidate candidate = findCandidate();
        QVERIFY2(candidate.request, "the demo set has a request waiting for two approvers");
        const QString waiting = VDGuiGlobals::passRequestStateName(PASS_REQUEST_STATE_NOT_CONFIRMED);
        const QString confirmed = VDGuiGlobals::passRequestStateName(PASS_REQUEST_STATE_CONFIRMED);
        const auto stored = [&] {
            return LocalStorage::instance()->constObject(candidate.request, PASS_REQUEST_DATANAME);
        };

        std::unique_ptr<RequestView> view = openTab(candidate.first);
        QVERIFY(view);
        QCOMPARE(shownState(view.get(), candidate.request), waiting);
        view->confirmRequest(candidate.request);
        QTRY_COMPARE(stored().inherits.count(INHERIT_CONFIRMED_LIST_PASS_REQUEST), 1);
        QCOMPARE(view->popups().last().text, QStringLiteral("Заявки подтверждены успешно"));
        QCOMPARE(shownState(view.get(), candidate.request), waiting);

        view = openTab(candidate.second);
        view->confirmRequest(candidate.request);
        QTRY_COMPARE(stored().parameters.value(QStringLiteral("PT_STATE")), QStringLiteral("2"));
        QTRY_COMPARE(shownState(view.get(), candidate.request), confirmed);
        QCOMPARE(view->popups().last().text, QStringLiteral("Заявки подтверждены успешно"));
        confirmedRequest = candidate.request;
    }

    void theDecisionsOutliveTheConsole()
    {
        QVERIFY(confirmedRequest);
        const ObjectInfo before = LocalStorage::instance()->constObject(confirmedRequest, PASS_REQUEST_DATANAME);
        manager.reset();
        QVERIFY2(server.open(store.location()), qPrintable(server.errorString()));
        connectConsole();
        QVERIFY(LocalStorage::instance()->constObject(confirmedRequest, PASS_REQUEST_DATANAME) == before);
        const std::unique_ptr<RequestView> view = openTab(QStringLiteral("admin"));
        QCOMPARE(shownState(view.get(), confirmedRequest),
                 VDGuiGlobals::passRequestStateName(PASS_REQUEST_STATE_CONFIRMED));
    }
};

VD_STORE_TEST_MAIN(TestConfirmFlow)
#include "tst_confirmflow.moc"
