#include "requestmodeltest.h"

#include "constants.h"
#include "localstorage.h"
#include "objecttreeproxy.h"
#include "requestmodel.h"
#include "requestrecords.h"
#include "vdguiglobals.h"

#include <QIcon>
#include <QSignalSpy>
#include <QTest>

using vorandel::ObjectInfo;
using Chain = QList<QPair<uint, uint>>;  // user, priority
using Users = QList<uint>;

namespace {

const QString State = QStringLiteral("PT_STATE");

// A model with one row for the request, which the store holds as well.
struct Table
{
    explicit Table(const ObjectInfo& request) : row(model.add(request))
    {
        records::publish(vorandel::PASS_REQUEST_DATANAME, {request});
    }

    QVariant cell(int column, int role = Qt::DisplayRole) const { return model.index(0, column).data(role); }
    QString iconName(int column) const { return cell(column, Qt::DecorationRole).value<QIcon>().name(); }

    RequestModel model{nullptr};
    QModelIndex row;
};

void publishUsers(const QList<uint>& uids)
{
    QList<ObjectInfo> users;
    for (uint uid : uids)
        users.append(records::user(uid, QStringLiteral("u%1").arg(uid)));
    records::publish(vorandel::USER_DATANAME, users);
}

}  // namespace

void RequestModelTest::init()
{
    vorandel::LocalStorage::instance()->clear();
}

void RequestModelTest::state_data()
{
    QTest::addColumn<QVariant>("stored");  // invalid: no "PT_STATE" at all
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("icon");
    QTest::addColumn<QColor>("background");

    const QColor none;
    QTest::newRow("not confirmed") << QVariant("0") << 0 << "common-pause1" << none;
    QTest::newRow("rejected") << QVariant("1") << 1 << "common-cancel" << VDGuiGlobals::eventCategoryColor(4);
    QTest::newRow("confirmed") << QVariant("2") << 2 << "common-pause" << none;
    QTest::newRow("confirmed by the server") << QVariant("3") << 3 << "common-pause" << none;
    QTest::newRow("active") << QVariant("4") << 4 << "common-play" << VDGuiGlobals::eventCategoryColor(1);
    QTest::newRow("finished") << QVariant("5") << 5 << "common-online" << none;
    QTest::newRow("unknown") << QVariant("7") << 7 << QString() << none;
    QTest::newRow("negative") << QVariant("-1") << -1 << QString() << none;
    QTest::newRow("missing") << QVariant() << 0 << "common-pause1" << none;
    QTest::newRow("empty") << QVariant("") << 0 << "common-pause1" << none;
}

void RequestModelTest::state()
{
    QFETCH(QVariant, stored);
    QFETCH(int, state);
    QFETCH(QString, icon);
    QFETCH(QColor, background);

    records::Parameters parameters;
    if (stored.isValid())
        parameters.insert(State, stored.toString());
    const Table table(records::request(1, parameters));

    const QString name = VDGuiGlobals::passRequestStateName(vorandel::PassRequestState(state));
    QCOMPARE(table.cell(RequestModel::StateColumn).toString(), name);
    QCOMPARE(table.cell(RequestModel::StateColumn, Qt::ToolTipRole).toString(), name);
    QCOMPARE(table.iconName(RequestModel::StateColumn), icon);
    // The state filter compares the stored text: a missing state is an empty text, not "0".
    QCOMPARE(table.cell(RequestModel::StateColumn, Qt::UserRole).toString(), stored.toString());
    for (int column : {0, 5, 18}) {
        QCOMPARE(table.cell(column, Qt::BackgroundRole).value<QColor>(), background);
    }
}

void RequestModelTest::stateSetByHand()
{
    Table table(records::request(1, {{State, QStringLiteral("0")}, {db::pass_request::PASSID, "A-1"}}));
    QSignalSpy changes(&table.model, &QAbstractItemModel::dataChanged);

    // A state that isn't text for the view refuses, and nothing moves.
    QVERIFY(!table.model.setData(table.row.siblingAtColumn(RequestModel::StateColumn), "1", Qt::ToolTipRole));
    QCOMPARE(changes.count(), 0);
    QCOMPARE(table.cell(RequestModel::StateColumn).toString(), VDGuiGlobals::passRequestStateName(
                                                                   vorandel::PASS_REQUEST_STATE_NOT_CONFIRMED));

    // A new state repaints the whole row: its colour follows the state.
    QVERIFY(table.model.setData(table.row.siblingAtColumn(RequestModel::StateColumn), "1", Qt::EditRole));
    const auto wholeRow = [&changes] {
        for (const QList<QVariant>& change : qAsConst(changes)) {
            const auto from = change.at(0).toModelIndex();
            const auto to = change.at(1).toModelIndex();
            if (from.column() == 0 && to.column() == RequestModel::ColumnCount - 1
                && change.at(2).value<QVector<int>>().isEmpty())
                return true;
        }
        return false;
    };
    QVERIFY(wholeRow());
    QCOMPARE(table.cell(RequestModel::StateColumn).toString(),
             VDGuiGlobals::passRequestStateName(vorandel::PASS_REQUEST_STATE_REJECTED));
    QCOMPARE(table.cell(RequestModel::NameColumn, Qt::BackgroundRole).value<QColor>(),
             VDGuiGlobals::eventCategoryColor(4));
    QCOMPARE(table.cell(RequestModel::StateColumn, Qt::UserRole).toString(), QStringLiteral("1"));
    QCOMPARE(table.cell(RequestModel::NumberColumn, Qt::UserRole).toString(), QStringLiteral("A-1"));

    // Any other cell changes alone.
    changes.clear();
    QVERIFY(table.model.setData(table.row.siblingAtColumn(RequestModel::NameColumn), "Иванов", Qt::DisplayRole));
    QVERIFY(!wholeRow());
    QCOMPARE(table.cell(RequestModel::NameColumn).toString(), QStringLiteral("Иванов"));
}

void RequestModelTest::confirmer_data()
{
    QTest::addColumn<Chain>("chain");
    QTest::addColumn<Users>("confirmed");
    QTest::addColumn<Users>("rejected");
    QTest::addColumn<QString>("shown");

    // By priority the chain is 12, 13, 11.
    const Chain chain{{11, 3}, {12, 1}, {13, 2}};
    QTest::newRow("nobody has confirmed") << chain << Users{} << Users{} << "u12";
    QTest::newRow("one has confirmed") << chain << Users{12} << Users{} << "u13";
    QTest::newRow("turns are counted, not matched") << chain << Users{11} << Users{} << "u13";
    QTest::newRow("all have confirmed") << chain << Users{12, 13, 11} << Users{} << "";
    QTest::newRow("rejected after the others confirmed") << chain << Users{12, 13} << Users{11} << "u11";
    QTest::newRow("rejected at once") << chain << Users{} << Users{13} << "u13";
    QTest::newRow("confirmed without a chain") << Chain{} << Users{12} << Users{} << "";
    QTest::newRow("no chain") << Chain{} << Users{} << Users{} << "";
    QTest::newRow("next one removed") << Chain{{11, 1}, {99, 2}} << Users{11} << Users{} << "";
}

void RequestModelTest::confirmer()
{
    QFETCH(Chain, chain);
    QFETCH(Users, confirmed);
    QFETCH(Users, rejected);
    QFETCH(QString, shown);

    publishUsers({11, 12, 13});
    ObjectInfo request = records::request(1);
    for (const auto& link : qAsConst(chain))
        records::link(request, link.first, vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST, link.second);
    for (uint user : qAsConst(confirmed))
        records::link(request, user, vorandel::INHERIT_CONFIRMED_LIST_PASS_REQUEST);
    for (uint user : qAsConst(rejected))
        records::link(request, user, vorandel::INHERIT_REJECTED_LIST_PASS_REQUEST);
    Table table(request);
    // What the row's owner writes into the cell doesn't hide the confirmer.
    table.model.setData(table.row.siblingAtColumn(RequestModel::ConfirmerColumn), QString(), Qt::DisplayRole);

    QCOMPARE(table.cell(RequestModel::ConfirmerColumn).toString(), shown);
}

void RequestModelTest::creator_data()
{
    QTest::addColumn<ObjectInfo>("creator");
    QTest::addColumn<QString>("creatorId");
    QTest::addColumn<QVariant>("shown");
    QTest::addColumn<bool>("icon");

    QTest::newRow("full name") << records::user(5, "petrov", "Петров", "Пётр", "Петрович") << "5"
                               << QVariant("petrov (Петров Пётр Петрович)") << true;
    QTest::newRow("surname only") << records::user(5, "petrov", "Петров") << "5" << QVariant("petrov (Петров)")
                                  << true;
    QTest::newRow("no name") << records::user(5, "petrov") << "5" << QVariant("petrov") << true;
    QTest::newRow("not in the store") << records::user(5, "petrov") << "6" << QVariant() << false;
    QTest::newRow("none") << records::user(5, "petrov") << "" << QVariant() << false;
}

void RequestModelTest::creator()
{
    QFETCH(ObjectInfo, creator);
    QFETCH(QString, creatorId);
    QFETCH(QVariant, shown);
    QFETCH(bool, icon);

    records::publish(vorandel::USER_DATANAME, {creator});
    const Table table(records::request(1, {{db::pass_request::CREATOR, creatorId}}));

    QCOMPARE(table.cell(RequestModel::CreatorColumn), shown);
    QCOMPARE(table.iconName(RequestModel::CreatorColumn), icon ? QStringLiteral("object-OT_USER") : QString());
}

void RequestModelTest::accessGroups_data()
{
    QTest::addColumn<QString>("way");
    QTest::addColumn<QString>("shown");

    QTest::newRow("sorted by name") << "3;1;2" << "Въезд, Офис, Склад";
    QTest::newRow("a removed group keeps its place") << "1;99;2" << ", Въезд, Офис";
    QTest::newRow("empty parts are skipped") << ";1;;2;" << "Въезд, Офис";
    QTest::newRow("a lone semicolon") << ";" << "";
    QTest::newRow("none") << "" << "";
}

void RequestModelTest::accessGroups()
{
    QFETCH(QString, way);
    QFETCH(QString, shown);

    records::publish(vorandel::POLICY_DATANAME, {records::named(1, db::access::POLICY, "Въезд"),
                                                 records::named(2, db::access::POLICY, "Офис"),
                                                 records::named(3, db::access::POLICY, "Склад")});
    const Table table(records::request(1, {{QStringLiteral("PT_WAY"), way}}));

    QCOMPARE(table.cell(RequestModel::AccessGroupsColumn).toString(), shown);
}

void RequestModelTest::worker_data()
{
    QTest::addColumn<QString>("subject");
    QTest::addColumn<QString>("objectState");
    QTest::addColumn<bool>("absent");

    QTest::newRow("in service") << "7" << "" << false;
    QTest::newRow("dismissed") << "7" << "d" << true;
    QTest::newRow("not dismissed: exact letter only") << "7" << "D" << false;
    QTest::newRow("removed from the store") << "8" << "" << true;
    QTest::newRow("none yet") << "" << "" << true;
}

void RequestModelTest::worker()
{
    QFETCH(QString, subject);
    QFETCH(QString, objectState);
    QFETCH(bool, absent);

    records::publish(vorandel::SUBJECT_DATANAME,
                     {records::worker(7, {{QStringLiteral("PT_OBJECTSTATE"), objectState}})});
    Table table(records::request(1, {{QStringLiteral("PT_SUBJECT_ID"), subject}}));
    // What the row's owner last wrote stays, whatever became of the worker.
    table.model.setData(table.row.siblingAtColumn(RequestModel::NameColumn), "Иванов Иван", Qt::DisplayRole);

    QCOMPARE(table.cell(RequestModel::NameColumn).toString(), QStringLiteral("Иванов Иван"));
    QCOMPARE(table.iconName(RequestModel::NameColumn),
             absent ? QStringLiteral("object-OT_WORKER-d") : QStringLiteral("object-OT_WORKER"));
    QCOMPARE(table.cell(RequestModel::NameColumn, Qt::ForegroundRole),
             absent ? QVariant(QColor(Qt::darkGray)) : QVariant());
    QCOMPARE(table.cell(RequestModel::NumberColumn, Qt::ForegroundRole), QVariant());
}

void RequestModelTest::convoy_data()
{
    QTest::addColumn<QString>("subject");
    QTest::addColumn<QString>("convoyType");
    QTest::addColumn<QVariant>("shown");

    QTest::newRow("accompanied") << "7" << "1" << QVariant("Сопровождаемый");
    QTest::newRow("accompanying") << "7" << "2" << QVariant("Сопровождающий");
    QTest::newRow("other") << "7" << "3" << QVariant("Не назначен");
    QTest::newRow("unset") << "7" << "" << QVariant("Не назначен");
    QTest::newRow("no worker") << "8" << "1" << QVariant();
}

void RequestModelTest::convoy()
{
    QFETCH(QString, subject);
    QFETCH(QString, convoyType);
    QFETCH(QVariant, shown);

    records::publish(vorandel::SUBJECT_DATANAME,
                     {records::worker(7, {{QStringLiteral("PT_CONVOY_TYPE"), convoyType}})});
    // The role is the worker's: the request's own key is no matter.
    const Table table(records::request(
        1, {{QStringLiteral("PT_SUBJECT_ID"), subject}, {QStringLiteral("PT_CONVOY_TYPE"), QStringLiteral("2")}}));

    QCOMPARE(table.cell(RequestModel::ConvoyColumn), shown);
}

void RequestModelTest::storeOverRowCopy()
{
    publishUsers({11, 12});
    records::publish(vorandel::POLICY_DATANAME, {records::named(1, db::access::POLICY, "Въезд"),
                                                 records::named(2, db::access::POLICY, "Офис")});
    ObjectInfo copy = records::request(1, {{db::pass_request::CREATOR, "11"},
                                           {QStringLiteral("PT_WAY"), "1"},
                                           {db::pass_request::PASSID, "A-1"}});
    records::link(copy, 11, vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST);
    Table table(copy);

    // The store has moved on since the row was written; the computed cells follow the store.
    ObjectInfo now = records::request(1, {{db::pass_request::CREATOR, "12"},
                                          {QStringLiteral("PT_WAY"), "2"},
                                          {db::pass_request::PASSID, "A-2"}});
    records::link(now, 12, vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST);
    records::publish(vorandel::PASS_REQUEST_DATANAME, {now});
    QCOMPARE(table.cell(RequestModel::CreatorColumn).toString(), QStringLiteral("u12"));
    QCOMPARE(table.cell(RequestModel::AccessGroupsColumn).toString(), QStringLiteral("Офис"));
    QCOMPARE(table.cell(RequestModel::ConfirmerColumn).toString(), QStringLiteral("u12"));
    QCOMPARE(table.cell(RequestModel::NumberColumn).toString(), QStringLiteral("A-1"));

    // Gone from the store, and then the store without its table: empty cells, no failure.
    vorandel::LocalStorage::instance()->removeObjects(vorandel::PASS_REQUEST_DATANAME, {1});
    for (int pass = 0; pass < 2; ++pass) {
        QCOMPARE(table.cell(RequestModel::CreatorColumn), QVariant());
        QCOMPARE(table.cell(RequestModel::AccessGroupsColumn).toString(), QString());
        QCOMPARE(table.cell(RequestModel::ConfirmerColumn).toString(), QString());
        QCOMPARE(table.iconName(RequestModel::NameColumn), QStringLiteral("object-OT_WORKER-d"));
        QCOMPARE(table.cell(RequestModel::NumberColumn).toString(), QStringLiteral("A-1"));
        vorandel::LocalStorage::instance()->clear();
        QVERIFY(!vorandel::LocalStorage::instance()->constObjects(vorandel::PASS_REQUEST_DATANAME));
    }
}

void RequestModelTest::dates_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("stored form") << "2023-02-10T09:05:07";
    QTest::newRow("leap day") << "2024-02-29T23:59:59";
    QTest::newRow("no such day") << "2023-02-29T10:00:00";
    QTest::newRow("month 13") << "2023-13-01T00:00:00";
    QTest::newRow("year 0") << "0000-01-01T00:00:00";
    QTest::newRow("minute 60") << "2023-02-10T09:60:00";
    QTest::newRow("end of day") << "2023-02-10T24:00:00";
    QTest::newRow("letter in the year") << "2x23-02-10T09:05:07";
    QTest::newRow("sign in the year") << "-023-02-10T09:05:07";
    QTest::newRow("lower-case t") << "2023-02-10t09:05:07";
    QTest::newRow("blank for T") << "2023-02-10 09:05:07";
    QTest::newRow("no seconds") << "2023-02-10T09:05";
    QTest::newRow("milliseconds") << "2023-02-10T09:05:07.250";
    QTest::newRow("UTC") << "2023-02-10T09:05:07Z";
    QTest::newRow("offset") << "2023-02-10T09:05:07+03:00";
    QTest::newRow("date only") << "2023-02-10";
    QTest::newRow("empty") << "";
    QTest::newRow("text") << "вчера";
}

void RequestModelTest::dates()
{
    QFETCH(QString, text);

    const Table table(records::request(1, {{db::pass_request::CREATE_DATE, text},
                                           {QStringLiteral("PT_DATE_BEGIN"), text},
                                           {QStringLiteral("PT_DATE_END"), text}}));

    const QDateTime expected = QDateTime::fromString(text, Qt::ISODate);
    for (int column : {RequestModel::CreatedColumn, RequestModel::BeginColumn, RequestModel::EndColumn}) {
        const QVariant shown = table.cell(column);
        QCOMPARE(shown.userType(), int(QMetaType::QDateTime));
        QCOMPARE(shown.toDateTime(), expected);
        QCOMPARE(shown.toDateTime().timeSpec(), expected.timeSpec());
        QCOMPARE(shown.toDateTime().isValid(), expected.isValid());
        QCOMPARE(table.cell(column, Qt::EditRole).toString(), text);
    }
}

void RequestModelTest::sortsByDate()
{
    RequestModel model(nullptr);
    // In text order the blank sorts first; in time, nine o'clock comes before ten.
    model.add(records::request(1, {{QStringLiteral("PT_DATE_BEGIN"), "2023-02-10 10:00:00"}}));
    model.add(records::request(2, {{QStringLiteral("PT_DATE_BEGIN"), "2023-02-10T09:00:00"}}));
    model.add(records::request(3, {{QStringLiteral("PT_DATE_BEGIN"), "2023-02-09T23:00:00"}}));
    ObjectTreeProxy proxy;
    proxy.setSourceModel(&model);
    proxy.sort(RequestModel::BeginColumn, Qt::AscendingOrder);

    QList<uint> order;
    for (int row = 0; row < proxy.rowCount(); ++row)
        order.append(proxy.index(row, RequestModel::UidColumn).data(Qt::EditRole).toUInt());
    QCOMPARE(order, (QList<uint>{3, 2, 1}));
}
