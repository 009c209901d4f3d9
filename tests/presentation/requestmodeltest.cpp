#include "requestmodeltest.h"

#include "constants.h"
#include "localstorage.h"
#include "requestfilterwidget.h"
#include "requestmodel.h"
#include "requestrecords.h"
#include "vdguiglobals.h"

#include <QIcon>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

using vorandel::ObjectInfo;

namespace {

const QString State = QStringLiteral("PT_STATE");

// A model with one row, holding its own copy of the request.
struct Table
{
    explicit Table(const ObjectInfo& request) : row(model.add(request)) {}

    QVariant cell(int column, int role = Qt::DisplayRole) const { return model.index(0, column).data(role); }
    QString iconName(int column) const { return cell(column, Qt::DecorationRole).value<QIcon>().name(); }

    RequestModel model{nullptr};
    QModelIndex row;
};

}  // namespace

void RequestModelTest::init()
{
    vorandel::LocalStorage::instance()->clear();
    records::publish(vorandel::USER_DATANAME, {records::user(11, "u11", "Петров", "Пётр", "Петрович"),
                                               records::user(12, "u12", "Петров"), records::user(13, "u13")});
    records::publish(vorandel::POLICY_DATANAME,
                     {records::policy(1, "Въезд"), records::policy(2, "Офис"), records::policy(3, "Склад")});
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
    QTest::newRow("confirmed by the server") << QVariant("3") << 3 << "common-pause" << none;
    QTest::newRow("active") << QVariant("4") << 4 << "common-play" << VDGuiGlobals::eventCategoryColor(1);
    QTest::newRow("unknown") << QVariant("7") << 7 << QString() << none;
    QTest::newRow("missing") << QVariant() << 0 << "common-pause1" << none;
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
    for (int column : {0, 5, 18})
        QCOMPARE(table.cell(column, Qt::BackgroundRole).value<QColor>(), background);
}

void RequestModelTest::cellsFromTheStore_data()
{
    QTest::addColumn<ObjectInfo>("stored");  // invalid: the store holds no requests at all
    QTest::addColumn<int>("column");
    QTest::addColumn<QVariant>("shown");
    QTest::addColumn<QString>("icon");

    using Chain = QList<QPair<uint, uint>>;  // user, priority
    using Users = QList<uint>;
    const auto chained = [](const Chain& chain, const Users& confirmed, const Users& rejected) {
        ObjectInfo request = records::request(1);
        for (const auto& link : chain)
            records::link(request, link.first, vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST, link.second);
        for (uint user : confirmed)
            records::link(request, user, vorandel::INHERIT_CONFIRMED_LIST_PASS_REQUEST);
        for (uint user : rejected)
            records::link(request, user, vorandel::INHERIT_REJECTED_LIST_PASS_REQUEST);
        return request;
    };
    // By priority the chain is 12, 13, 11.
    const Chain chain{{11, 3}, {12, 1}, {13, 2}};
    const int confirmer = RequestModel::ConfirmerColumn;
    QTest::newRow("nobody has confirmed") << chained(chain, {}, {}) << confirmer << QVariant("u12") << "";
    QTest::newRow("turns are counted, not matched") << chained(chain, {11}, {}) << confirmer << QVariant("u13") << "";
    QTest::newRow("all have confirmed") << chained(chain, {12, 13, 11}, {}) << confirmer << QVariant("") << "";
    QTest::newRow("rejected after the others") << chained(chain, {12, 13}, {11}) << confirmer << QVariant("u11") << "";
    QTest::newRow("confirmed without a chain") << chained({}, {12}, {}) << confirmer << QVariant("") << "";
    QTest::newRow("next one removed") << chained({{11, 1}, {99, 2}}, {11}, {}) << confirmer << QVariant("") << "";
    QTest::newRow("request gone: no confirmer") << ObjectInfo() << confirmer << QVariant("") << "";

    const auto created = [](const char* creator) {
        return records::request(1, {{db::pass_request::CREATOR, QString::fromLatin1(creator)}});
    };
    const int creator = RequestModel::CreatorColumn;
    QTest::newRow("creator with full name") << created("11") << creator << QVariant("u11 (Петров Пётр Петрович)")
                                            << "object-OT_USER";
    QTest::newRow("creator without name") << created("13") << creator << QVariant("u13") << "object-OT_USER";
    QTest::newRow("creator not in the store") << created("99") << creator << QVariant() << "";

    const auto way = [](const char* groups) {
        return records::request(1, {{QStringLiteral("PT_WAY"), QString::fromLatin1(groups)}});
    };
    const int groups = RequestModel::AccessGroupsColumn;
    QTest::newRow("groups sorted by name") << way("3;1;2") << groups << QVariant("Въезд, Офис, Склад") << "";
    QTest::newRow("a removed group keeps its place") << way("1;99;2") << groups << QVariant(", Въезд, Офис") << "";
    QTest::newRow("empty parts are skipped") << way(";1;;2;") << groups << QVariant("Въезд, Офис") << "";
}

void RequestModelTest::cellsFromTheStore()
{
    QFETCH(ObjectInfo, stored);
    QFETCH(int, column);
    QFETCH(QVariant, shown);
    QFETCH(QString, icon);

    // The row's own copy knows nothing: these cells are worked out from the store.
    const Table table(records::request(1));
    if (stored.isValid())
        records::publish(vorandel::PASS_REQUEST_DATANAME, {stored});

    QCOMPARE(table.cell(column), shown);
    QCOMPARE(table.iconName(column), icon);
}

void RequestModelTest::worker_data()
{
    QTest::addColumn<QString>("subject");
    QTest::addColumn<QString>("objectState");
    QTest::addColumn<bool>("absent");

    QTest::newRow("in service") << "7" << "" << false;
    QTest::newRow("dismissed") << "7" << "d" << true;
    QTest::newRow("removed from the store") << "8" << "" << true;
}

void RequestModelTest::worker()
{
    QFETCH(QString, subject);
    QFETCH(QString, objectState);
    QFETCH(bool, absent);

    records::publish(vorandel::SUBJECT_DATANAME,
                     {records::object(7, db::orgstructure::WORKER, {{"PT_OBJECTSTATE", objectState}})});
    const ObjectInfo request = records::request(1, {{QStringLiteral("PT_SUBJECT_ID"), subject}});
    records::publish(vorandel::PASS_REQUEST_DATANAME, {request});
    Table table(request);
    // What the row's owner last wrote stays, whatever became of the worker.
    table.model.setData(table.row.siblingAtColumn(RequestModel::NameColumn), "Иванов Иван", Qt::DisplayRole);

    QCOMPARE(table.cell(RequestModel::NameColumn).toString(), QStringLiteral("Иванов Иван"));
    QCOMPARE(table.iconName(RequestModel::NameColumn),
             absent ? QStringLiteral("object-OT_WORKER-d") : QStringLiteral("object-OT_WORKER"));
    QCOMPARE(table.cell(RequestModel::NameColumn, Qt::ForegroundRole),
             absent ? QVariant(QColor(Qt::darkGray)) : QVariant());
    QCOMPARE(table.cell(RequestModel::NumberColumn, Qt::ForegroundRole), QVariant());
}

void RequestModelTest::dates_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("stored form") << "2023-02-10T09:05:07";
    QTest::newRow("no such day") << "2023-02-29T10:00:00";
    QTest::newRow("year 0") << "0000-01-01T00:00:00";
    QTest::newRow("end of day") << "2023-02-10T24:00:00";
    QTest::newRow("letter in the year") << "2x23-02-10T09:05:07";
    QTest::newRow("blank for T") << "2023-02-10 09:05:07";
    QTest::newRow("UTC") << "2023-02-10T09:05:07Z";
}

void RequestModelTest::dates()
{
    QFETCH(QString, text);

    const Table table(records::request(1, {{db::pass_request::CREATE_DATE, text},
                                           {QStringLiteral("PT_DATE_BEGIN"), text},
                                           {QStringLiteral("PT_DATE_END"), text}}));

    // A date, not its text, so that the proxy sorts by time; and always the date Qt would read.
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

void RequestModelTest::stateFilter_data()
{
    QTest::addColumn<QStringList>("clicks");
    QTest::addColumn<QStringList>("values");

    QTest::newRow("confirmed takes both confirmed states") << QStringList{"tbConfirmed"} << QStringList{"2", "3"};
    QTest::newRow("not confirmed takes requests without a state")
        << QStringList{"tbNotConfirmed"} << QStringList{"0", ""};
    QTest::newRow("group order, not click order")
        << QStringList{"tbRejected", "tbActive", "tbConfirmed"} << QStringList{"2", "3", "4", "1"};
    QTest::newRow("on and off again") << QStringList{"tbFinished", "tbRejected", "tbFinished"} << QStringList{"1"};
    QTest::newRow("all clears") << QStringList{"tbConfirmed", "tbRejected", "tbAll"} << QStringList{};
}

// The state buttons send the stored state texts that the table's filter compares.
void RequestModelTest::stateFilter()
{
    QFETCH(QStringList, clicks);
    QFETCH(QStringList, values);

    RequestFilterWidget bar;
    QSignalSpy sent(&bar, &RequestFilterWidget::filterChanged);
    for (const QString& name : qAsConst(clicks)) {
        auto* button = bar.findChild<QToolButton*>(name);
        QVERIFY2(button, qPrintable(name));
        button->click();
    }

    // One list per click, and the buttons left on are the list's.
    QCOMPARE(sent.count(), clicks.size());
    QCOMPARE(sent.last().at(0).toStringList(), values);
    QCOMPARE(bar.currentFilter(), values);
}
