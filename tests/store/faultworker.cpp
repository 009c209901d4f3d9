// The child of tst_storefaults: a server on the store given that performs the stream of
// faultplan.h from the operation given on, and writes "ack SEQ UID" to standard output for each
// operation that it has had answered, so after its changes were kept. It runs until it is killed.

#include "constants.h"
#include "faultplan.h"
#include "server.h"
#include "servicerecords.h"
#include "vddatastream.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QStringList>

#include <cstdio>

using namespace vorandel;

namespace {
void say(const QString& line)
{
    std::fputs(qPrintable(line + QLatin1Char('\n')), stdout);
    std::fflush(stdout);
}

class Client
{
public:
    explicit Client(vdserver::Server& server) : m_server(server) {}

    template <typename... Values>
    Command data(const vdserver::Session& as, const QString& operation, const Values&... values)
    {
        Command query;
        query.name = QStringLiteral("data.") + operation;
        query.type = 8;
        VDDataStream out(&query.data, QIODevice::WriteOnly);
        ((out << as.sessionId) << ... << values);
        Command answer;
        m_server.send(query, [&](Command& reply) { answer = reply; });
        while (answer.status == Command::StatusNone)
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        return answer;
    }

private:
    vdserver::Server& m_server;
};

ObjectInfo record(TYPE_ID uid, const QString& type, const QHash<QString, QString>& parameters = {})
{
    ObjectInfo info;
    info.uid = uid;
    info.type = type;
    info.parameters = parameters;
    return info;
}

const ObjectInfo* findBy(const vdserver::Server& server, const QString& dataname, const QString& key,
                         const QString& value)
{
    for (const ObjectInfo& object : *server.objects(dataname)) {
        if (object.parameters.value(key) == value)
            return &object;
    }
    return nullptr;
}

int firstValue(const Command& answer)
{
    int value = 0;
    VDDataStream in(answer.data);
    in >> value;
    return value;
}
}  // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        say(QStringLiteral("usage: storefaultworker STORE FIRST-OPERATION"));
        return 2;
    }
    QString error;
    const std::optional<vdserver::StoreLocation> location = vdserver::StoreLocation::parse(arguments.at(1), &error);
    vdserver::Server server;
    if (!location || !server.open(*location)) {
        say(QStringLiteral("error ") + (location ? server.errorString() : error));
        return 2;
    }
    const std::optional<vdserver::Session> admin = server.login(QStringLiteral("admin"));
    const std::optional<vdserver::Session> petrov = server.login(QStringLiteral("petrov"));
    const std::optional<vdserver::Session> sidorova = server.login(QStringLiteral("sidorova"));
    const ObjectInfo* list = findBy(server, CONFIRM_LIST_DATANAME, QStringLiteral("PT_NAME"),
                                    QStringLiteral("Разовый пропуск посетителя"));
    const TYPE_ID department = server.dbSettings().value(db::database::DEFAULT_DEPARTMENT).toUInt();
    const QList<TYPE_ID> groups = faultplan::grantedGroups(server.objects(POLICY_DATANAME)->keys(),
                                                           server.objects(ORGSTRUCTURE_DATANAME)->value(department));
    if (!admin || !petrov || !sidorova || !list || groups.size() < faultplan::GroupsGranted || department == 0
        || !server.objects(ORGSTRUCTURE_DATANAME)->value(department).inherits.contains(7)) {
        say(QStringLiteral("error the store lacks the demo set"));
        return 2;
    }
    const QString listUid = QString::number(list->uid);
    Client client(server);
    say(QStringLiteral("ready"));

    TYPE_ID worker = 0;
    TYPE_ID request = 0;
    const auto decide = [&](const vdserver::Session& who, unsigned int priority) {
        return client.data(who, QStringLiteral("addObjectInherits"),
                           QList<INHERIT_DATA>{INHERIT_DATA(request, who.userId, INHERIT_CONFIRMED_LIST_PASS_REQUEST,
                                                            priority)});
    };
    for (int seq = arguments.at(2).toInt();; ++seq) {
        const int family = faultplan::family(seq);
        Command answer;
        TYPE_ID made = 0;
        switch (faultplan::kind(seq)) {
        case faultplan::Hire: {
            // Into the visitors' department, whose access groups come with him in the same step.
            ObjectInfo hired = record(0, db::orgstructure::WORKER,
                                      {{QStringLiteral("PT_SURNAME"), QStringLiteral("Сбоев")},
                                       {QStringLiteral("PT_WORKERNUM"), faultplan::tag(family)}});
            hired.parent = department;
            answer = client.data(*admin, QStringLiteral("addObject"), hired);
            made = worker = TYPE_ID(firstValue(answer));
            break;
        }
        case faultplan::Grant: {
            QList<ACCESS_CHANGES> changes;
            for (TYPE_ID group : groups)
                changes << ACCESS_CHANGES{worker, group, true, false, 7};
            answer = client.data(*admin, QStringLiteral("changeUserAccess"), changes);
            break;
        }
        case faultplan::Issue: {
            QList<ObjectInfo> cards;
            for (int i = 0; i < faultplan::CardsIssued; ++i)
                cards << record(0, db::misc::CARD,
                                {{db::card::NUMBER, QString::number(faultplan::cardNumber(family, i))}});
            answer = client.data(*admin, QStringLiteral("updateWorkerCards"), worker, cards, QList<ObjectInfo>(), true);
            break;
        }
        case faultplan::Raise:
            answer = client.data(*admin, QStringLiteral("addObject"),
                                 record(0, db::misc::PASS_REQUEST,
                                        {{db::pass_request::PASSID, faultplan::tag(family)},
                                         {db::pass_request::STATE, QStringLiteral("0")},
                                         {db::pass_request::CONFIRM_LIST, listUid},
                                         {QStringLiteral("PT_SUBJECT_ID"), QString::number(worker)}}));
            made = request = TYPE_ID(firstValue(answer));
            break;
        case faultplan::Confirm:
            answer = decide(*petrov, 10);
            break;
        case faultplan::Finish:
            answer = faultplan::removesWorker(family)
                ? client.data(*admin, QStringLiteral("removeObject"), record(worker, db::orgstructure::WORKER))
                : decide(*sidorova, 20);
            break;
        }
        if (answer.status != Command::StatusOk) {
            QString text;
            VDDataStream in(answer.data);
            in >> text;
            say(QStringLiteral("refused %1 %2").arg(seq).arg(text));
            return 3;
        }
        say(QStringLiteral("ack %1 %2").arg(seq).arg(made));
    }
}
