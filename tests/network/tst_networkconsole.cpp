#include "console.h"
#include "authdata.h"
#include "constants.h"
#include "desk.h"
#include "localstorage.h"
#include "logindialog.h"
#include "mainwindow.h"
#include "serverprocess.h"
#include "testenvironment.h"
#include "vdstackedtoolbars.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>
#include <QtTest>

#include <functional>

using namespace vorandel;

namespace {
const QString PetrovFirst = QStringLiteral("Разовый пропуск посетителя");

ConsoleOptions optionsFor(quint16 port, const QString& login)
{
    ConsoleOptions options;
    options.server = vdserver::Endpoint{QStringLiteral("127.0.0.1"), port};
    options.user = login;
    options.pluginDir = qEnvironmentVariable("VD_PLUGIN_DIR");
    return options;
}

QTableView* table(const Console& console)
{
    return console.window()->tabs()->widget(0)->findChild<QTableView*>(QStringLiteral("tblRequests"));
}

QModelIndex row(const Console& console, TYPE_ID uid)
{
    const QAbstractItemModel* model = table(console)->model();
    for (int r = 0; r < model->rowCount(); ++r) {
        if (model->index(r, 0).data().toUInt() == uid)
            return model->index(r, 0);
    }
    return {};
}

bool toolBarsEnabled(const Console& console)
{
    const QList<VDStackedToolBars*> toolBars = console.window()->tabs()->findChildren<VDStackedToolBars*>();
    return !toolBars.isEmpty()
        && std::all_of(toolBars.cbegin(), toolBars.cend(), [](const VDStackedToolBars* bar) { return bar->isEnabled(); });
}

QString bannerText(const Console& console)
{
    return console.window()->findChild<QLabel*>(QStringLiteral("offlineBanner"))->text();
}

// Plays the operator at the login window whenever it is the modal one; each step runs once.
class LoginWindowDriver : public QObject
{
public:
    using Step = std::function<void(LoginDialog*)>;
    explicit LoginWindowDriver(QList<Step> steps) : m_steps(std::move(steps))
    {
        connect(&m_timer, &QTimer::timeout, this, [this] {
            auto* dialog = qobject_cast<LoginDialog*>(QApplication::activeModalWidget());
            if (!dialog || m_steps.isEmpty() || !dialog->loginButton()->isEnabled())
                return;
            m_steps.takeFirst()(dialog);
        });
        m_timer.start(20);
    }
    bool isDone() const { return m_steps.isEmpty(); }

private:
    QList<Step> m_steps;
    QTimer m_timer;
};

void typeAndSubmit(LoginDialog* dialog, const QString& password)
{
    dialog->findChild<QLineEdit*>(QStringLiteral("lePassword"))->setText(password);
    dialog->loginButton()->click();
}
}  // namespace

// The console as the operator runs it on a standalone server: logged in through the login window
// or with the password of the environment, with the tab of the plug-in folder over the copy of
// the store that the server pushes.
class TestNetworkConsole : public QObject
{
    Q_OBJECT

    TestEnvironment environment;
    std::unique_ptr<ServerProcess> server;

private slots:
    void initTestCase()
    {
        server = std::make_unique<ServerProcess>();
        QVERIFY2(server->start(), qPrintable(server->errorString()));
    }

    void init()
    {
        LocalStorage::instance()->clear();
        qunsetenv(Console::PasswordVariable);
    }

    void cleanup()
    {
        if (QTest::currentTestFailed())
            qInfo().noquote() << server->log();
    }

    // The office raises a request with petrov first on its chain; petrov's console shows it and
    // confirms it from the tab, and the office sees the decision. When the server dies petrov's
    // console says so and keeps its table; when it returns the console is back at work.
    void anApproverAtHisConsole()
    {
        qputenv(Console::PasswordVariable, "demo-petrov");
        Console console(optionsFor(server->port(), QStringLiteral("petrov")));
        QVERIFY2(console.logIn(), qPrintable(console.errorString()));
        console.client()->setRetryDelays(100, 400);
        console.start();
        QVERIFY(console.window()->windowTitle().contains(QStringLiteral("Петров Игорь Сергеевич")));
        QCOMPARE(console.window()->tabs()->count(), 1);
        QVERIFY(!console.window()->isOffline());

        Desk office(server->port());
        QVERIFY(office.open(QStringLiteral("operator")));
        const ObjectInfo list = office.find(CONFIRM_LIST_DATANAME, QStringLiteral("PT_NAME"), PetrovFirst);
        ObjectInfo request;
        request.type = db::misc::PASS_REQUEST;
        request.parameters = {{db::pass_request::STATE, QStringLiteral("0")},
                              {db::pass_request::PASSID, QStringLiteral("П-СТОЛ-1")},
                              {db::pass_request::CONFIRM_LIST, QString::number(list.uid)}};
        const Command raised = office.data(QStringLiteral("addObject"), request);
        QVERIFY2(raised.ok(), qPrintable(Desk::text(raised)));
        const TYPE_ID uid = Desk::uid(raised);

        QTRY_VERIFY_WITH_TIMEOUT(row(console, uid).isValid(), 10000);
        table(console)->selectionModel()->setCurrentIndex(row(console, uid),
                                                          QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        console.window()->tabs()->widget(0)->findChild<QAction*>(QStringLiteral("actionConfirmRequest"))->trigger();
        QTRY_COMPARE(office.object(PASS_REQUEST_DATANAME, uid).inherits.count(INHERIT_CONFIRMED_LIST_PASS_REQUEST), 1);
        QTRY_VERIFY(LocalStorage::instance()->constObject(uid, PASS_REQUEST_DATANAME)
                    == office.object(PASS_REQUEST_DATANAME, uid));

        const int rows = table(console)->model()->rowCount();
        server->kill();
        QTRY_VERIFY(console.window()->isOffline());
        QVERIFY2(bannerText(console).contains(QStringLiteral("Нет связи с сервером")), qPrintable(bannerText(console)));
        QVERIFY(!toolBarsEnabled(console));
        QCOMPARE(table(console)->model()->rowCount(), rows);

        QVERIFY2(server->start(), qPrintable(server->errorString()));
        QTRY_VERIFY_WITH_TIMEOUT(!console.window()->isOffline(), 15000);
        QVERIFY(toolBarsEnabled(console));
        QVERIFY(row(console, uid).isValid());
    }

    void theLoginWindow_data()
    {
        QTest::addColumn<bool>("cancelled");
        QTest::newRow("a wrong password, then the right one") << false;
        QTest::newRow("a wrong password, then given up") << true;
    }

    // A refusal is said in the window, which clears the password and lets the operator try again;
    // closing it ends the console without a word.
    void theLoginWindow()
    {
        QFETCH(bool, cancelled);
        Console console(optionsFor(server->port(), QStringLiteral("operator")));
        QString refusal;
        LoginWindowDriver driver({
            [](LoginDialog* dialog) {
                QCOMPARE(dialog->login(), QStringLiteral("operator"));
                typeAndSubmit(dialog, QStringLiteral("operator"));
            },
            [&](LoginDialog* dialog) {
                refusal = dialog->findChild<QLabel*>(QStringLiteral("messageLabel"))->text();
                QVERIFY(dialog->password().isEmpty());
                if (cancelled)
                    dialog->reject();
                else
                    typeAndSubmit(dialog, QStringLiteral("demo-operator"));
            },
        });
        const bool loggedIn = console.logIn();
        QVERIFY(driver.isDone());
        QCOMPARE(refusal, QStringLiteral("Неверное имя пользователя или пароль"));
        QCOMPARE(loggedIn, !cancelled);
        if (cancelled) {
            QVERIFY(console.errorString().isEmpty());
            return;
        }
        QCOMPARE(AuthData::user(), QStringLiteral("operator"));
        console.start();
        QVERIFY(console.window()->windowTitle().contains(QStringLiteral("Волкова Елена Николаевна")));
        QVERIFY(LocalStorage::instance()->constObjects(PASS_REQUEST_DATANAME));
    }

    // Without a server to reach, the console says which and why, and starts nothing.
    void noServerThere()
    {
        qputenv(Console::PasswordVariable, "demo-admin");
        ServerProcess gone;
        QVERIFY(gone.start());
        const quint16 port = gone.port();
        gone.kill();
        Console console(optionsFor(port, QStringLiteral("admin")));
        QVERIFY(!console.logIn());
        QVERIFY2(console.errorString().contains(QStringLiteral("127.0.0.1:%1").arg(port)),
                 qPrintable(console.errorString()));
        QVERIFY2(console.errorString().contains(QStringLiteral("Нет связи с сервером")),
                 qPrintable(console.errorString()));
    }
};

QTEST_MAIN(TestNetworkConsole)
#include "tst_networkconsole.moc"
