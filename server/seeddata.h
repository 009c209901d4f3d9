#pragma once

#include "accounts.h"
#include "objectinfo.h"
#include "requestworkflow.h"

#include <QDate>
#include <QHash>
#include <QList>
#include <QRandomGenerator>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

namespace vdserver {

class ObjectStore;

struct SeedOptions
{
    int requests = 48;
    quint32 randomSeed = 20261122;
};

// Told now and then how far a seeding has come: steps done of all, a step a worker or a request.
using SeedProgress = std::function<void(int done, int total)>;

// The demo data set: an organisation with its departments (most of them with the access groups
// that their workers get), access groups, console users, confirm
// lists, devices, jobs, schedules and settings, and then visitors (workers) with cards, templates
// and portraits, and their pass requests in every state, with chains walked as far as the state
// says. The same options on the same day give the same set.
//
// Sizes follow the number of requests N: N/2 workers; 200 users and 100 access groups from
// N = 10,000 on, proportionally fewer below. Photos are promised, not drawn; only a small set
// (up to 500 workers) draws the previews that workers carry as text. Repeated texts are shared.
//
// The users who can log in: "admin" with every right; "petrov", "sidorova" and "kozlov", who may
// confirm and stand at different places of the same confirm lists; "operator" of the pass office,
// who may do everything but confirm; "viewer", who may only look. Each has the demo password
// "demo-" and his login.
class SeedData
{
public:
    struct DemoUser
    {
        QString login;
        QString surname;
        QString name;
        QString patronymic;
        QStringList roles;

        QString displayName() const;
    };

    SeedData(ObjectStore& store, const SeedOptions& options, SeedProgress progress = {});

    // Fills an empty store and returns the users who can log in.
    QList<Account> populate();

    static const QString AdministratorLogin;
    // The users who can log in, whatever the size of the set.
    static const QVector<DemoUser>& demoUsers();
    static QString demoPassword(const QString& login);
    // The hashes of the demo passwords by login.
    static const QHash<QString, QByteArray>& demoPasswordHashes();

private:
    struct Person
    {
        QString surname;
        QString name;
        QString patronymic;
    };
    struct Worker
    {
        QString uid;
        Person person;
    };
    struct ConfirmList
    {
        QString uid;
        QVector<vorandel::INHERIT_DATA> members;  // in the order of their priorities
    };
    // What a request is to look like: its state, its confirm list (-1 for none) and how many
    // of the list have confirmed it before a final decision.
    struct Plan
    {
        int state = 0;
        int list = -1;
        int confirmed = 0;
    };

    void addOrganisation(int workshops);
    void addJobs();
    void addAccessGroups(int count);
    void addDepartmentAccess();
    QList<Account> addUsers(int count);
    void addConfirmLists(const QList<Account>& accounts);
    void addDevices();
    void addWorkers(int count);
    void addRequests(int count);
    void addSettings();
    void reportProgress();

    vorandel::ObjectInfo worker(const Person& person, int number);
    void addCards(vorandel::ObjectInfo& worker, int count);
    void addTemplates(vorandel::TYPE_ID worker);
    vorandel::ObjectInfo request(int index, const Plan& plan);
    void decide(vorandel::ObjectInfo& request, const Plan& plan) const;
    Plan plan(int index);

    vorandel::TYPE_ID add(const QString& type, vorandel::TYPE_ID parent, const QHash<QString, QString>& parameters,
                          const vorandel::INHERIT_MAP& inherits = {});
    Person person(bool female);
    // A moment `day` days from today at `halfHour` half-hours past midnight, as date text.
    QString dateText(int day, int halfHour);
    int pick(int count) { return int(m_random.bounded(quint32(count))); }
    bool chance(int percent) { return pick(100) < percent; }
    template <typename T>
    const T& any(const QVector<T>& pool) { return pool.at(pick(pool.size())); }

    ObjectStore& m_store;
    RequestWorkflow m_workflow;
    const SeedOptions m_options;
    QRandomGenerator m_random;
    const QDate m_today;
    QHash<int, QString> m_dates;

    vorandel::TYPE_ID m_visitors = 0;
    QVector<vorandel::TYPE_ID> m_departments;
    QVector<vorandel::TYPE_ID> m_guestDepartments;
    QVector<QString> m_departmentUids;
    QVector<QString> m_openGroups;
    QVector<ConfirmList> m_lists;
    QVector<QString> m_creators;
    vorandel::TYPE_ID m_terminal = 0;
    QVector<Worker> m_workers;
    vorandel::CARD_ID m_lastCard = 0;
    int m_lastTemplate = 0;
    QVector<QByteArray> m_templateData;
    SeedProgress m_progress;
    int m_steps = 0;
    int m_done = 0;
};

}  // namespace vdserver
