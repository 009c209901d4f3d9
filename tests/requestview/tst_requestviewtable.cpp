#include "requestfixture.h"

#include "constants.h"
#include "localstorage.h"
#include "requestview.h"
#include "searchwidget.h"
#include "vdtableview.h"

#include <QAbstractButton>
#include <QAbstractProxyModel>
#include <QAction>
#include <QSignalSpy>
#include <QtTest>

using namespace vorandel;

namespace {
const QString Admin = QStringLiteral("RL_PASS_REQUESTS_SHOW_ALL");

QStringList rolesWithout(const QString& role)
{
    QStringList roles = TestEnvironment::allRoles();
    roles.removeAll(role);
    return roles;
}

// Three workers, five requests: 1 and 2 of Иванов, 3 of Ивлева (dismissed), 4 of Петров
// (active), 5 without a worker. User 7 approves 1 and 4; user 8 approves 2.
void fill(RequestFixture& fixture)
{
    ObjectInfo dismissed = make::worker(12, QStringLiteral("Ивлева"), QStringLiteral("Анна"), QString(), QStringLiteral("T-12"));
    dismissed.parameters.insert(QStringLiteral("PT_OBJECTSTATE"), QStringLiteral("d"));
    fixture.set(SUBJECT_DATANAME, {make::worker(11, QStringLiteral("Иванов"), QStringLiteral("Пётр"),
                                                QStringLiteral("Ильич"), QStringLiteral("T-11")),
                                   dismissed,
                                   make::worker(13, QStringLiteral("Петров"), QStringLiteral("Иван"), QString(),
                                                QStringLiteral("T-13"))});
    ObjectInfo r1 = make::request(1, 0, 11);
    make::chain(r1, {{7, 1}, {9, 2}});
    ObjectInfo r2 = make::request(2, 2, 11);
    make::chain(r2, {{8, 1}});
    ObjectInfo r4 = make::request(4, 4, 13);
    make::chain(r4, {{9, 1}, {7, 2}});
    make::decided(r4, 9, INHERIT_CONFIRMED_LIST_PASS_REQUEST);
    fixture.set(PASS_REQUEST_DATANAME, {r1, r2, make::request(3, 0, 12), r4, make::request(5, 1)});
}

QList<TYPE_ID> sorted(QList<TYPE_ID> uids)
{
    std::sort(uids.begin(), uids.end());
    return uids;
}
}  // namespace

// The table follows the store and the operator's rights, searches and state buttons.
class TestRequestViewTable : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qRegisterMetaType<QList<TYPE_ID>>(); }

    void defaultFilterFollowsTheRights_data()
    {
        QTest::addColumn<unsigned int>("user");
        QTest::addColumn<bool>("showAll");
        QTest::addColumn<QList<TYPE_ID>>("visible");
        QTest::newRow("everything") << 7u << true << QList<TYPE_ID>{1, 2, 3, 4, 5};
        QTest::newRow("approver of 1 and 4") << 7u << false << QList<TYPE_ID>{1, 4};
        QTest::newRow("approver of 2") << 8u << false << QList<TYPE_ID>{2};
        QTest::newRow("on no chain") << 99u << false << QList<TYPE_ID>{};
    }

    void defaultFilterFollowsTheRights()
    {
        QFETCH(unsigned int, user);
        QFETCH(bool, showAll);
        QFETCH(QList<TYPE_ID>, visible);
        RequestFixture fixture(user, showAll ? TestEnvironment::allRoles() : rolesWithout(Admin));
        fill(fixture);
        RequestView* view = fixture.build();
        const QSet<TYPE_ID> expected(visible.cbegin(), visible.cend());
        QCOMPARE(view->defaultFilter(), expected);
        QCOMPARE(sorted(fixture.shownUids()), visible);
        if (visible.isEmpty())  // the empty table says why
            QVERIFY(fixture.table()->placeholderText().contains(QStringLiteral("вам доступны")));
        // A search never brings in what the operator may not see: "ив" finds all but 5.
        emit view->findChild<SearchWidget*>()->startSearch(QStringLiteral("ив"));
        visible.removeAll(5);
        QCOMPARE(sorted(fixture.shownUids()), visible);

        // A change of the chain moves a request in or out of sight.
        ObjectInfo r2 = make::request(2, 2, 11);
        make::chain(r2, {{8, 1}, {user, 2}});
        fixture.set(PASS_REQUEST_DATANAME, {r2});
        QVERIFY(fixture.shownUids().contains(2));
    }

    void theVisibleSetSurvivesAStoreCleared()
    {
        RequestFixture fixture;
        fill(fixture);
        RequestView* view = fixture.build();
        LocalStorage::instance()->clear();  // says nothing
        fixture.set(PASS_REQUEST_DATANAME, {make::request(2, 0), make::request(6, 0)});
        QCOMPARE(view->defaultFilter(), (QSet<TYPE_ID>{2, 6}));
        QCOMPARE(sorted(fixture.shownUids()), (QList<TYPE_ID>{2, 6}));
    }

    void searchAndStateButtonsTogether()
    {
        RequestFixture fixture;
        fill(fixture);
        RequestView* view = fixture.build();
        SearchWidget* search = view->findChild<SearchWidget*>();
        const auto find = [&](const QString& text) {
            emit search->startSearch(text);
            return sorted(fixture.shownUids());
        };
        QCOMPARE(find(QStringLiteral("Ив")), (QList<TYPE_ID>{1, 2, 3, 4}));  // surnames, and Петров's name
        QCOMPARE(find(QStringLiteral("ивл")), QList<TYPE_ID>{3});
        QCOMPARE(find(QStringLiteral("ильич")), (QList<TYPE_ID>{1, 2}));
        QCOMPARE(find(QStringLiteral("иванов пётр")), QList<TYPE_ID>{});  // one key at a time
        QCOMPARE(find(QStringLiteral("t-1")), (QList<TYPE_ID>{1, 2, 3, 4}));
        QCOMPARE(find(QStringLiteral("п-0005")), QList<TYPE_ID>{5});
        QCOMPARE(find(QStringLiteral("05.11.2026 0")), QList<TYPE_ID>{4});  // starts on the 5th at 09:30
        QCOMPARE(find(QStringLiteral("05.11.2026 1")), QList<TYPE_ID>{});

        // The state buttons narrow what the search found.
        find(QStringLiteral("ив"));
        auto* confirmed = view->findChild<QAbstractButton*>(QStringLiteral("tbConfirmed"));
        auto* active = view->findChild<QAbstractButton*>(QStringLiteral("tbActive"));
        QVERIFY(confirmed && active);
        confirmed->click();
        QCOMPARE(sorted(fixture.shownUids()), QList<TYPE_ID>{2});
        active->click();
        QCOMPARE(sorted(fixture.shownUids()), (QList<TYPE_ID>{2, 4}));
        view->findChild<QAbstractButton*>(QStringLiteral("tbAll"))->click();
        QCOMPARE(sorted(fixture.shownUids()), (QList<TYPE_ID>{1, 2, 3, 4}));
        QCOMPARE(find(QString()), (QList<TYPE_ID>{1, 2, 3, 4, 5}));
        QCOMPARE(fixture.shownUids().first(), 5u);  // the newest start first
    }

    void followsTheStore()
    {
        RequestFixture fixture;
        fill(fixture);
        RequestView* view = fixture.build();
        const QAbstractItemModel* rows = fixture.rows();
        const auto cell = [&](TYPE_ID uid, int column) {
            for (int row = 0; row < rows->rowCount(); ++row) {
                if (rows->index(row, 0).data().toUInt() == uid)
                    return rows->index(row, column).data().toString();
            }
            return QStringLiteral("<no row>");
        };

        // A request changes, a new one comes.
        fixture.set(PASS_REQUEST_DATANAME, {make::request(1, 2, 11), make::request(6, 0, 13)});
        QCOMPARE(cell(6, 5), QStringLiteral("Петров Иван "));
        emit view->findChild<SearchWidget*>()->startSearch(QStringLiteral("п-0006"));
        QCOMPARE(fixture.shownUids(), QList<TYPE_ID>{6});
        emit view->findChild<SearchWidget*>()->startSearch(QString());

        // A worker renamed: requests in sight follow, hidden ones keep the old name.
        auto* state = view->findChild<QAbstractButton*>(QStringLiteral("tbNotConfirmed"));
        state->click();  // 1 and 2 leave the screen, but the uid filter still lets them through
        fixture.set(SUBJECT_DATANAME, {make::worker(11, QStringLiteral("Иванова"), QStringLiteral("Пётр"),
                                                    QStringLiteral("Ильич"), QStringLiteral("T-11"))});
        view->findChild<QAbstractButton*>(QStringLiteral("tbAll"))->click();
        QCOMPARE(cell(1, 5), QStringLiteral("Иванова Пётр Ильич"));
        emit view->findChild<SearchWidget*>()->startSearch(QStringLiteral("п-0002"));
        fixture.set(SUBJECT_DATANAME, {make::worker(13, QStringLiteral("Петренко"), QStringLiteral("Иван"), QString(),
                                                    QStringLiteral("T-13"))});
        emit view->findChild<SearchWidget*>()->startSearch(QString());
        QCOMPARE(cell(4, 5), QStringLiteral("Петров Иван "));  // was hidden by the search: unchanged
        QCOMPARE(cell(2, 5), QStringLiteral("Иванова Пётр Ильич"));

        // A request removed leaves the table and the index, and its row stays in the model.
        const int shown = fixture.rows()->rowCount();
        const QAbstractItemModel* model = qobject_cast<QAbstractProxyModel*>(fixture.rows())->sourceModel();
        const int kept = model->rowCount();
        LocalStorage::instance()->removeObjects(PASS_REQUEST_DATANAME, {1});
        QVERIFY(!fixture.shownUids().contains(1));
        QCOMPARE(fixture.rows()->rowCount(), shown - 1);
        QCOMPARE(model->rowCount(), kept);
        emit view->findChild<SearchWidget*>()->startSearch(QStringLiteral("п-0001"));
        QCOMPARE(fixture.shownUids(), QList<TYPE_ID>{});

        // Other datanames change nothing.
        QSignalSpy layout(fixture.rows(), &QAbstractItemModel::layoutChanged);
        fixture.set(CARD_DATANAME, {});
        QCOMPARE(layout.count(), 0);
    }

    void aRequestGoneFromTheStoreTakesItsSearchKeys()
    {
        RequestFixture fixture;
        fill(fixture);
        RequestView* view = fixture.build();
        // The store drops the request, and the tab hears of some change to it before the removal
        // itself: the record comes empty, and its keys must go all the same.
        LocalStorage* store = LocalStorage::instance();
        store->blockSignals(true);
        store->removeObjects(PASS_REQUEST_DATANAME, {1});
        store->blockSignals(false);
        view->readPassRequestData({1});
        emit view->findChild<SearchWidget*>()->startSearch(QStringLiteral("п-0001"));
        QCOMPARE(fixture.shownUids(), QList<TYPE_ID>{});
        emit view->findChild<SearchWidget*>()->startSearch(QStringLiteral("п-0002"));
        QCOMPARE(fixture.shownUids(), QList<TYPE_ID>{2});
    }

    void selectRequestSelectsOnlyARowInSight()
    {
        RequestFixture fixture;
        fill(fixture);
        RequestView* view = fixture.build();
        QItemSelectionModel* selection = fixture.table()->selectionModel();
        fixture.select({2, 4});
        const QModelIndex current = selection->currentIndex();

        view->selectRequest(1);
        QCOMPARE(selection->selectedRows().size(), 1);
        QCOMPARE(selection->selectedRows().first().data().toUInt(), 1u);
        QCOMPARE(selection->currentIndex(), current);  // the selection moves, the cursor doesn't

        // A request that the state buttons hide isn't selected, and nothing else changes.
        view->findChild<QAbstractButton*>(QStringLiteral("tbRejected"))->click();
        fixture.select({5});
        view->selectRequest(1);
        QCOMPARE(selection->selectedRows().size(), 1);
        QCOMPARE(selection->selectedRows().first().data().toUInt(), 5u);
        view->selectRequest(999);
        QCOMPARE(selection->selectedRows().first().data().toUInt(), 5u);
    }

    void anEmptyTableSaysWhy()
    {
        {
            RequestFixture fixture;
            fixture.set(PASS_REQUEST_DATANAME, {});
            fixture.build();
            QVERIFY(fixture.table()->placeholderText().startsWith(QStringLiteral("Заявок пока нет")));
        }
        RequestFixture fixture;
        fill(fixture);
        RequestView* view = fixture.build();
        QVERIFY(fixture.table()->placeholderText().isEmpty());
        view->findChild<QAbstractButton*>(QStringLiteral("tbFinished"))->click();
        QVERIFY(fixture.table()->placeholderText().contains(QStringLiteral("условия поиска и выбранные состояния")));
        view->findChild<QAbstractButton*>(QStringLiteral("tbAll"))->click();
        QVERIFY(fixture.table()->placeholderText().isEmpty());
    }

    void actionsFollowSelectionAndRights_data()
    {
        QTest::addColumn<QStringList>("roles");
        QTest::addColumn<QList<TYPE_ID>>("selection");
        QTest::addColumn<QString>("enabled");  // c confirm, r reject, s settings, d delete, a add
        const QStringList all = TestEnvironment::allRoles();
        QTest::newRow("nothing selected") << all << QList<TYPE_ID>{} << QStringLiteral("a");
        QTest::newRow("one") << all << QList<TYPE_ID>{1} << QStringLiteral("crsda");
        QTest::newRow("two") << all << QList<TYPE_ID>{1, 2} << QStringLiteral("crda");
        QTest::newRow("dismissed worker first") << all << QList<TYPE_ID>{3} << QStringLiteral("rsda");
        QTest::newRow("active, then dismissed") << all << QList<TYPE_ID>{4, 3} << QStringLiteral("rda");
        QTest::newRow("not active, then dismissed") << all << QList<TYPE_ID>{1, 3} << QStringLiteral("da");
        QTest::newRow("no confirm right") << rolesWithout(QStringLiteral("RL_PASS_REQUESTS_CONFIRM")) << QList<TYPE_ID>{1}
                                          << QStringLiteral("sda");
        QTest::newRow("no update, delete, create") << QStringList{QStringLiteral("RL_PASS_REQUESTS_SHOW"), Admin,
                                                                  QStringLiteral("RL_PASS_REQUESTS_CONFIRM")}
                                                   << QList<TYPE_ID>{1} << QStringLiteral("cr");
    }

    void actionsFollowSelectionAndRights()
    {
        QFETCH(QStringList, roles);
        QFETCH(QList<TYPE_ID>, selection);
        QFETCH(QString, enabled);
        RequestFixture fixture(7, roles);
        fill(fixture);
        fixture.build();
        fixture.select(selection);  // in the given order, which decides
        QString state;
        const QList<QPair<const char*, char>> actions{{"actionConfirmRequest", 'c'}, {"actionRejectRequest", 'r'},
                                                      {"actionSettings", 's'}, {"actionRemove", 'd'},
                                                      {"actionAddRequest", 'a'}};
        for (const auto& action : actions) {
            if (fixture.action(action.first)->isEnabled())
                state += QLatin1Char(action.second);
        }
        QCOMPARE(state, enabled);
    }

    void photoCycleEndsOnAnEmptyAnswer()
    {
        RequestFixture fixture;
        fill(fixture);
        fixture.build();
        FakeTransport& transport = fixture.transport();
        const QString blobs = QStringLiteral("data.getBlobDataChange");
        fixture.select({1});
        QTRY_COMPARE(transport.count(blobs), 1);
        QByteArray session;
        QList<BLOB_DATA_RESQUEST> asked;
        readPayload(transport.sent(blobs).first(), session, asked);
        QCOMPARE(asked.size(), 1);
        QCOMPARE(asked.first().uid, 11u);
        QCOMPARE(asked.first().name, QStringLiteral("PT_PHOTO"));
        QVERIFY(asked.first().md5.isEmpty());

        const QByteArray photo("photo of 11");
        transport.answer(blobs, Command::StatusOk, [&](VDDataStream& out) {
            out << QHash<TYPE_ID, QHash<QString, QByteArray>>{{11, {{QStringLiteral("PT_PHOTO"), photo},
                                                                   {QStringLiteral("PT_OTHER"), QByteArray("x")}}}};
        });
        QCOMPARE(LocalStorage::instance()->blob(11, QStringLiteral("PT_PHOTO")), photo);
        QVERIFY(LocalStorage::instance()->blob(11, QStringLiteral("PT_OTHER")).isEmpty());
        QTRY_COMPARE(transport.count(blobs), 2);  // the card redraws and asks again, with the new sum
        readPayload(transport.sent(blobs).last(), session, asked);
        QCOMPARE(asked.first().md5, LocalStorage::md5Of(photo));
        transport.answer(blobs, Command::StatusOk,
                         [](VDDataStream& out) { out << QHash<TYPE_ID, QHash<QString, QByteArray>>(); });
        QTest::qWait(400);
        QCOMPARE(transport.count(blobs), 2);

        // A truncated answer stores nothing and ends the cycle too.
        fixture.select({2});
        QTRY_COMPARE(transport.count(blobs), 3);
        transport.answer(blobs, Command::StatusOk, [](VDDataStream& out) { out << quint32(1) << quint32(13); });
        QTest::qWait(400);
        QCOMPARE(transport.count(blobs), 3);
        QVERIFY(LocalStorage::instance()->blob(13, QStringLiteral("PT_PHOTO")).isEmpty());

        // No worker, no photo.
        fixture.select({5});
        QTest::qWait(400);
        QCOMPARE(transport.count(blobs), 3);
    }
};

QTEST_MAIN(TestRequestViewTable)
#include "tst_requestviewtable.moc"
