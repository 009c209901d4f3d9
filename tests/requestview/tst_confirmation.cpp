#include "requestfixture.h"

#include "constants.h"
#include "localstorage.h"
#include "requestview.h"

#include <QtTest>

using namespace vorandel;

namespace {
const QString AddInherits = QStringLiteral("data.addObjectInherits");
const QString UpdateEx = QStringLiteral("data.updateObjectEx");
const QString Dismiss = QStringLiteral("data.dismissWorker");

QList<INHERIT_DATA> sentInherits(FakeTransport& transport)
{
    QByteArray session;
    QList<INHERIT_DATA> inherits;
    readPayload(transport.sent(AddInherits).last(), session, inherits);
    return inherits;
}

QList<ObjectInfo> sentUpdates(FakeTransport& transport)
{
    QList<ObjectInfo> objects;
    for (const Command& command : transport.sent(UpdateEx)) {
        QByteArray session;
        ObjectInfo object;
        readPayload(command, session, object);
        objects.append(object);
    }
    return objects;
}

QStringList popups(const RequestView* view)
{
    QStringList texts;
    for (const PluginWidget::Popup& popup : view->popups())
        texts << popup.text;
    return texts;
}
}  // namespace

// Decisions through the approver chain: whose turn it is, what goes to the server, what the
// operator reads, and who is dismissed.
class TestConfirmation : public QObject
{
    Q_OBJECT

private slots:
    void theTurnIsCountedByPosition_data()
    {
        QTest::addColumn<unsigned int>("operatorUid");
        QTest::addColumn<bool>("sends");
        // Priorities 5, 1, 3 with one confirmation: the head is the approver of priority 3.
        QTest::newRow("approver of priority 3") << 30u << true;
        QTest::newRow("approver of priority 1, who confirmed") << 10u << false;
        QTest::newRow("not on the chain") << 99u << false;
    }

    void theTurnIsCountedByPosition()
    {
        QFETCH(unsigned int, operatorUid);
        QFETCH(bool, sends);
        RequestFixture fixture(operatorUid);
        ObjectInfo request = make::request(1, 0);
        make::chain(request, {{50, 5}, {10, 1}, {30, 3}});
        // Counted, not matched: whoever confirmed, the head moves one place on.
        make::decided(request, 777, INHERIT_CONFIRMED_LIST_PASS_REQUEST);
        fixture.set(PASS_REQUEST_DATANAME, {request});
        RequestView* view = fixture.build();
        view->confirmRequest(1);
        QCOMPARE(fixture.transport().count(AddInherits), sends ? 1 : 0);
        if (sends) {
            const QList<INHERIT_DATA> inherits = sentInherits(fixture.transport());
            QCOMPARE(inherits.size(), 1);
            QCOMPARE(inherits.first(), INHERIT_DATA(1, 30, INHERIT_CONFIRMED_LIST_PASS_REQUEST, 3));
            QVERIFY(!inherits.first().dateFrom.isValid() && !inherits.first().dateTo.isValid());
            fixture.transport().answer(AddInherits, Command::StatusOk);
            QCOMPARE(popups(view), QStringList{QStringLiteral("Заявки подтверждены успешно")});
        } else {
            QCOMPARE(popups(view), QStringList{QStringLiteral("Нет заявок для согласования")});
        }
    }

    void confirmingASelection()
    {
        RequestFixture fixture(10);
        ObjectInfo mine = make::request(1, 0);
        make::chain(mine, {{10, 1}, {20, 2}});
        ObjectInfo theirs = make::request(2, 0);
        make::chain(theirs, {{20, 1}, {10, 2}});
        ObjectInfo walked = make::request(3, 2);
        make::chain(walked, {{10, 1}});
        make::decided(walked, 10, INHERIT_CONFIRMED_LIST_PASS_REQUEST);
        ObjectInfo withoutChain = make::request(4, 0);
        ObjectInfo noChainConfirmed = make::request(5, 2);
        ObjectInfo noState = make::request(6, 0);
        noState.parameters.remove(QStringLiteral("PT_STATE"));
        fixture.set(PASS_REQUEST_DATANAME, {mine, theirs, walked, withoutChain, noChainConfirmed, noState});
        RequestView* view = fixture.build();
        fixture.select({1, 2, 3, 4, 5, 6});
        view->confirmRequest();
        QCOMPARE(sentInherits(fixture.transport()), QList<INHERIT_DATA>{INHERIT_DATA(1, 10, 24, 1)});
        const QList<ObjectInfo> updates = sentUpdates(fixture.transport());
        QCOMPARE(updates.size(), 2);
        for (const ObjectInfo& object : updates) {
            QVERIFY(object.uid == 4 || object.uid == 6);
            QCOMPARE(object.type, QStringLiteral("OT_PASS_REQUEST"));
            QCOMPARE(object.parameters, (QHash<QString, QString>{{QStringLiteral("PT_STATE"), QStringLiteral("2")}}));
        }
        fixture.transport().answer(AddInherits, Command::StatusOk);
        fixture.transport().answer(UpdateEx, Command::StatusOk);
        fixture.transport().answer(UpdateEx, Command::StatusFailed);
        QCOMPARE(popups(view), (QStringList{QStringLiteral("Заявки подтверждены успешно"),
                                            QStringLiteral("Заявки подтверждены успешно"),
                                            QStringLiteral("Ошибка подтверждения заявок")}));
    }

    void rejecting()
    {
        RequestFixture fixture(10);
        fixture.set(SUBJECT_DATANAME, {make::worker(11, QStringLiteral("Иванов"))});
        ObjectInfo myTurn = make::request(1, 0);
        make::chain(myTurn, {{10, 1}, {20, 2}});
        ObjectInfo rejectedAlready = make::request(2, 0);
        make::chain(rejectedAlready, {{10, 1}});
        make::decided(rejectedAlready, 10, INHERIT_REJECTED_LIST_PASS_REQUEST);
        ObjectInfo walked = make::request(3, 4, 11);  // active, chain walked to its end
        make::chain(walked, {{20, 1}});
        make::decided(walked, 20, INHERIT_CONFIRMED_LIST_PASS_REQUEST);
        walked.parameters.insert(QStringLiteral("PT_DISMISS_LINKED"), QStringLiteral("true"));
        ObjectInfo theirTurn = make::request(4, 0);
        make::chain(theirTurn, {{20, 1}, {10, 2}});
        fixture.set(PASS_REQUEST_DATANAME, {myTurn, rejectedAlready, walked, theirTurn});
        RequestView* view = fixture.build();
        fixture.select({1, 2, 3, 4});
        view->rejectRequest();
        QCOMPARE(sentInherits(fixture.transport()), QList<INHERIT_DATA>{INHERIT_DATA(1, 10, 25, 1)});
        const QList<ObjectInfo> updates = sentUpdates(fixture.transport());
        QCOMPARE(updates.size(), 1);
        QCOMPARE(updates.first().uid, 3u);
        QCOMPARE(updates.first().parameters.value(QStringLiteral("PT_STATE")), QStringLiteral("1"));
        QCOMPARE(fixture.transport().count(Dismiss), 1);
    }

    void rejectingWithoutChainsGivesAPopUpPerAnswer()
    {
        RequestFixture fixture;
        fixture.set(PASS_REQUEST_DATANAME, {make::request(1, 0), make::request(2, 2), make::request(3, 4)});
        RequestView* view = fixture.build();
        fixture.select({1, 2, 3});
        view->rejectRequest();
        QCOMPARE(fixture.transport().count(AddInherits), 1);
        QVERIFY(sentInherits(fixture.transport()).isEmpty());  // it goes out all the same
        QCOMPARE(fixture.transport().count(UpdateEx), 3);
        fixture.transport().answerAll(Command::StatusOk);
        QCOMPARE(popups(view), QVector<QString>(4, QStringLiteral("Заявки отклонены успешно")).toList());

        view->clearPopups();
        view->rejectRequest(99);  // not in the store: a default record, rejected as it stands
        QCOMPARE(fixture.transport().count(UpdateEx), 4);

        ObjectInfo rejected = make::request(5, 1);
        make::decided(rejected, 1, INHERIT_REJECTED_LIST_PASS_REQUEST);
        fixture.set(PASS_REQUEST_DATANAME, {rejected});
        view->rejectRequest(5);
        QCOMPARE(popups(view), QStringList{QStringLiteral("Нет заявок для отклонения")});
    }

    // A card made for a worker is added to his cards, and replaces none of them.
    void aGeneratedCardIsAdded()
    {
        RequestFixture fixture;
        RequestView* view = fixture.build();
        ObjectInfo card;
        card.type = QStringLiteral("OT_CARD");
        card.parameters.insert(db::card::OWNER, QStringLiteral("11"));
        card.parameters.insert(db::card::NUMBER, QStringLiteral("4242"));
        view->generateCard(card);
        QByteArray session;
        TYPE_ID worker = 0;
        QList<ObjectInfo> toAdd, toRemove;
        bool flag = true;
        readPayload(fixture.transport().sent(QStringLiteral("data.updateWorkerCards")).first(), session, worker, toAdd,
                    toRemove, flag);
        QCOMPARE(worker, 11u);
        QCOMPARE(toAdd, QList<ObjectInfo>{card});
        QVERIFY(toRemove.isEmpty());
        QVERIFY(!flag);
    }
};

QTEST_MAIN(TestConfirmation)
#include "tst_confirmation.moc"
