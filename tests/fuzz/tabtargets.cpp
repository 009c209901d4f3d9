#include "fuzztarget.h"

#include "requestfixture.h"

#include "authdata.h"
#include "constants.h"
#include "dbquery.h"
#include "messagewidget.h"
#include "requestview.h"
#include "taskinfo.h"
#include "vdserverinterface.h"
#include "vdtableview.h"

#include <QCoreApplication>
#include <QItemSelectionModel>

using namespace vorandel;

namespace {

constexpr TYPE_ID Worker = 11;
constexpr TYPE_ID Request = 21;
constexpr TYPE_ID Policy = 70;

// The tab as the console builds it, over a small store, with a fake exchange behind it: the
// input arrives as the console would hand it over, pushed by the server or as the answer to a
// query the tab sent.
class Tab
{
public:
    static Tab& instance()
    {
        static Tab* const tab = new Tab;  // never destroyed, as the application
        return *tab;
    }

    // The name of a command that the tab registered, for this console, with this prefix.
    QString named(const QString& prefix) const { return prefix + m_clientId; }

    // A command that the server pushes.
    void push(const QString& name, const QByteArray& data)
    {
        Command command;
        command.name = name;
        command.type = 8;
        command.data = data;
        VDServerInterface::instance()->deliver(command);
        settle();
    }

    // Starts a task of the tab and answers the query it sends with status 1 and these bytes.
    void answerTask(TaskInfo task, const QString& query, const QByteArray& data)
    {
        m_fixture.view()->addTask(task);
        answer(query, data);
    }

    // Answers the oldest unanswered query of that name.
    void answer(const QString& query, const QByteArray& data)
    {
        m_fixture.transport().answer(query, Command::StatusOk, [&data](VDDataStream& out) {
            out.writeRawData(data.constData(), data.size());
        });
        settle();
    }

    // The card of the request is shown: the tab asks for the worker's photo.
    void showCard()
    {
        VDTableView* table = m_fixture.table();
        table->selectionModel()->select(table->model()->index(0, 0),
                                        QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        m_fixture.view()->updateInfoPanel();
    }

private:
    Tab()
    {
        ObjectInfo request = make::request(Request, PASS_REQUEST_STATE_NOT_CONFIRMED, Worker);
        m_fixture.set(SUBJECT_DATANAME, {make::worker(Worker, QStringLiteral("Иванов"), QStringLiteral("Пётр"))});
        m_fixture.set(POLICY_DATANAME, {make::policy(Policy, QStringLiteral("Главный вход"))});
        m_fixture.set(PASS_REQUEST_DATANAME, {request});
        m_fixture.build();
        const QString name = m_fixture.view()->registeredCommandTypes().first().name;
        m_clientId = name.mid(name.indexOf(QLatin1Char(':')) + 1);
    }

    // What the input set going runs its course; the queries it sent and the notes it showed are
    // forgotten.
    void settle()
    {
        QCoreApplication::processEvents();
        m_fixture.view()->clearPopups();
        qDeleteAll(m_fixture.view()->findChildren<MessageWidget*>());
        m_fixture.transport().clear();
    }

    RequestFixture m_fixture;
    QString m_clientId;
};

TaskInfo task(const QString& type)
{
    TaskInfo task;
    task.type = type;
    task.uid = Worker;
    task.params.insert(QStringLiteral("object"), Policy);
    task.params.insert(QStringLiteral("state"), true);
    return task;
}

QString accessNotice()
{
    return QStringLiteral("change_access_result:") + QString::fromLatin1(AuthData::sessionId().toHex());
}

QMap<unsigned int, TEMPLATE_DATA> templates()
{
    TEMPLATE_DATA finger;
    finger.index = 3;
    finger.data = QByteArray(32, '\x11');
    TEMPLATE_DATA palm;
    palm.index = 100;
    palm.kind = 2;
    QMap<unsigned int, TEMPLATE_DATA> templates;
    templates.insertMulti(Worker, finger);
    templates.insertMulti(Worker, palm);
    templates.insertMulti(Worker + 1, finger);
    return templates;
}

QList<QByteArray> fingersAnswers()
{
    DbResult rows;
    rows.rowCount = 2;
    rows.columnCount = 3;
    rows.cells = {QVariant(qlonglong(Worker)), QVariant(qlonglong(4)), QVariant(qlonglong(900)),
                  QVariant(qlonglong(Worker + 1)), QVariant(qlonglong(2)), QVariant()};
    return {payload(QStringLiteral("get_fingers_093000123"), int(Command::StatusOk), QString(), QList<DbResult>{rows}),
            payload(QStringLiteral("get_fingers_093000124"), int(Command::StatusFailed), QStringLiteral("no table")),
            payload(QStringLiteral("other_query"), int(Command::StatusOk), QString())};
}

}  // namespace

QList<FuzzTarget> tabTargets()
{
    return {
        {QStringLiteral("tab.command_result"),
         [](const QByteArray& input) {
             Tab& tab = Tab::instance();
             tab.push(tab.named(QStringLiteral("command_result:")), input);
         },
         [] {
             ObjectInfo card;
             card.type = db::misc::CARD;
             card.parameters.insert(db::card::NUMBER, QStringLiteral("1234567890"));
             const QHash<QString, QVariant> read{{QStringLiteral("status"), QStringLiteral("ok")},
                                                 {QStringLiteral("card"), card.toByteArray()}};
             const QHash<QString, QVariant> failed{{QStringLiteral("status"), QStringLiteral("error")}};
             return QList<QByteArray>{payload(5u, DEVICE_COMMAND_READ_CARD, read),
                                      payload(5u, DEVICE_COMMAND_READ_CARD, failed),
                                      payload(5u, QStringLiteral("open_door"), QHash<QString, QVariant>())};
         }},
        {QStringLiteral("tab.db.async_result"),
         [](const QByteArray& input) {
             Tab& tab = Tab::instance();
             tab.push(tab.named(QStringLiteral("db.async_result:")), input);
         },
         fingersAnswers},
        {QStringLiteral("tab.fingerprint.finished"),
         [](const QByteArray& input) {
             Tab& tab = Tab::instance();
             tab.push(tab.named(QStringLiteral("fingerprint.finished:")), input);
         },
         [] {
             return QList<QByteArray>{payload(qint32(Worker)),
                                      payload(qint32(Worker), templates().values(Worker))};
         }},
        {QStringLiteral("tab.data.getUserFingers"),
         [](const QByteArray& input) {
             Tab::instance().answerTask(task(QStringLiteral("get_biometrics")), QStringLiteral("data.getUserFingers"),
                                        input);
         },
         [] { return QList<QByteArray>{payload(templates()), payload(QMap<unsigned int, TEMPLATE_DATA>())}; }},
        {QStringLiteral("tab.change_access_result"),
         [](const QByteArray& input) {
             Tab& tab = Tab::instance();
             // The notice is awaited only while an access change runs.
             tab.answerTask(task(QStringLiteral("change_subject_access")), QStringLiteral("data.changeUserAccess"), {});
             tab.push(accessNotice(), input);
         },
         [] { return QList<QByteArray>{payload(QList<TYPE_ID>{Worker}), payload(QList<TYPE_ID>())}; }},
        {QStringLiteral("tab.data.getBlobDataChange"),
         [](const QByteArray& input) {
             Tab& tab = Tab::instance();
             tab.showCard();
             tab.answer(QStringLiteral("data.getBlobDataChange"), input);
         },
         [] {
             const QHash<TYPE_ID, QHash<QString, QByteArray>> photo{
                 {Worker, {{QStringLiteral("PT_PHOTO"), QByteArray(48, '\x7f')}}}};
             return QList<QByteArray>{payload(photo), payload(QHash<TYPE_ID, QHash<QString, QByteArray>>())};
         }},
    };
}
