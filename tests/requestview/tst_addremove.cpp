#include "requestfixture.h"

#include "constants.h"
#include "deleteobjectwizard.h"
#include "localstorage.h"
#include "newrequestwizard.h"
#include "requestitemdelegate.h"
#include "requestview.h"
#include "requestviewdelegate.h"
#include "vdtableview.h"

#include <QApplication>
#include <QListView>
#include <QMessageBox>
#include <QPainter>
#include <QStandardItemModel>
#include <QStyleOptionViewItem>
#include <QtTest>

using namespace vorandel;

namespace {

// Answers the message box that the next step opens, with what it said.
void readNextMessageBox(QStringList* said)
{
    QTimer::singleShot(0, [said] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            *said << box->windowTitle() << box->text() << box->informativeText();
            box->accept();
        }
    });
}

QImage checkbox(int status)
{
    QImage image(40, 24, QImage::Format_ARGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    QStyleOptionViewItem option;
    option.rect = image.rect();
    option.state = QStyle::State_Enabled;
    RequestViewDelegate().drawCheckbox(&painter, option, status);
    return image;
}

}  // namespace

// The two entries of the tab that open the wizards, adding and removing requests, and the worker
// that goes with a request.
class TestAddRemove : public QObject
{
    Q_OBJECT

private slots:
    // Active requests stay out of the removal without a word, unless nothing else is left.
    void removalLeavesActiveRequestsOut_data()
    {
        QTest::addColumn<QList<int>>("states");  // of the selected requests 1, 2, 3...
        QTest::addColumn<QList<TYPE_ID>>("listed");
        QTest::newRow("one of three active") << QList<int>{0, 4, 1} << QList<TYPE_ID>{1, 3};
        QTest::newRow("finished and rejected") << QList<int>{5, 1} << QList<TYPE_ID>{1, 2};
        QTest::newRow("all active") << QList<int>{4, 4} << QList<TYPE_ID>();
        QTest::newRow("nothing selected") << QList<int>() << QList<TYPE_ID>();
    }

    void removalLeavesActiveRequestsOut()
    {
        QFETCH(QList<int>, states);
        QFETCH(QList<TYPE_ID>, listed);

        RequestFixture fixture;
        QList<ObjectInfo> requests{make::request(9, 0)};
        QList<TYPE_ID> selected;
        for (int i = 0; i < states.size(); ++i) {
            requests << make::request(TYPE_ID(i + 1), states.at(i));
            selected << TYPE_ID(i + 1);
        }
        fixture.set(PASS_REQUEST_DATANAME, requests);
        RequestView* view = fixture.build();
        fixture.select(selected);

        QStringList said;
        readNextMessageBox(&said);
        view->removeRequests();
        QCoreApplication::processEvents();
        auto* wizard = view->findChild<DeleteObjectWizard*>();
        QCOMPARE(bool(wizard), !listed.isEmpty());
        if (wizard) {
            QVERIFY(said.isEmpty());
            QList<TYPE_ID> uids = wizard->uids();
            std::sort(uids.begin(), uids.end());
            QCOMPARE(uids, listed);
            // Its lines say which worker goes with his request.
            QVERIFY(qobject_cast<RequestItemDelegate*>(wizard->listView()->itemDelegate()));
        } else if (!states.isEmpty()) {
            QCOMPARE(said, (QStringList{"Удаление", "Нет заявок для удаления", "Нельзя удалить активные заявки"}));
        } else {
            QVERIFY(said.isEmpty());
        }
    }

    // The keys open the wizards whatever the rights say, and the others still move in the table.
    void keysIgnoreTheRights()
    {
        RequestFixture fixture(1, {QStringLiteral("RL_PASS_REQUESTS_SHOW"), QStringLiteral("RL_PASS_REQUESTS_SHOW_ALL")});
        fixture.set(PASS_REQUEST_DATANAME, {make::request(1, 0), make::request(2, 0)});
        RequestView* view = fixture.build();
        VDTableView* table = fixture.table();
        table->setCurrentIndex(table->model()->index(0, 1));
        QTest::keyClick(table, Qt::Key_Down);
        QCOMPARE(table->currentIndex().row(), 1);
        fixture.select({});
        QTest::keyClick(table, Qt::Key_Delete);  // nothing selected
        QVERIFY(!view->findChild<DeleteObjectWizard*>());
        fixture.select({1});
        QTest::keyClick(table, Qt::Key_Delete);
        QVERIFY(view->findChild<DeleteObjectWizard*>());
        QTest::keyClick(table, Qt::Key_Insert);
        QVERIFY(view->findChild<NewRequestWizard*>());
    }

    // A rejection, like a removal, dismisses the request's worker where it asks for it, and the
    // line of the request in the removal wizard says so by the very same rule.
    void dismissalOfTheLinkedWorker_data()
    {
        QTest::addColumn<QString>("flag");         // "PT_DISMISS_LINKED"; none when empty
        QTest::addColumn<QString>("subject");      // "PT_SUBJECT_ID"; none when empty
        QTest::addColumn<QString>("workerState");  // of worker 11, the only one in the store
        QTest::addColumn<bool>("dismisses");
        QTest::newRow("asked, in service") << "true" << "11" << "" << true;
        QTest::newRow("flag as any other text") << "True" << "11" << "" << false;
        QTest::newRow("not asked") << "" << "11" << "" << false;
        QTest::newRow("no worker named") << "true" << "" << "" << false;
        QTest::newRow("dismissed already") << "true" << "11" << "d" << false;
        QTest::newRow("dismissed, other case") << "true" << "11" << "D" << true;
        QTest::newRow("worker not in the store") << "true" << "99" << "" << false;
    }

    void dismissalOfTheLinkedWorker()
    {
        QFETCH(QString, flag);
        QFETCH(QString, subject);
        QFETCH(QString, workerState);
        QFETCH(bool, dismisses);
        RequestFixture fixture;
        ObjectInfo worker = make::worker(11, QStringLiteral("Иванов"), QStringLiteral("Иван"));
        if (!workerState.isEmpty())
            worker.parameters.insert(QStringLiteral("PT_OBJECTSTATE"), workerState);
        fixture.set(SUBJECT_DATANAME, {worker});
        ObjectInfo request = make::request(1, 0);
        request.parameters.insert(QStringLiteral("PT_SURNAME"), QStringLiteral("Петров"));
        if (!flag.isEmpty())
            request.parameters.insert(QStringLiteral("PT_DISMISS_LINKED"), flag);
        if (!subject.isEmpty())
            request.parameters.insert(QStringLiteral("PT_SUBJECT_ID"), subject);
        fixture.set(PASS_REQUEST_DATANAME, {request});

        QVariantHash parameters;
        for (auto it = request.parameters.cbegin(); it != request.parameters.cend(); ++it)
            parameters.insert(it.key(), it.value());
        QStandardItemModel model(1, 2);
        model.setData(model.index(0, 0), parameters, Qt::UserRole + 1);
        model.setData(model.index(0, 1), QStringLiteral("OT_PASS_REQUEST"));
        const QString name = RequestItemDelegate().name(model.index(0, 0));
        QCOMPARE(name.endsWith(QStringLiteral(" Будет уволен сотрудник Иванов Иван")), dismisses);
        QCOMPARE(RequestItemDelegate().name(QModelIndex()), QString());

        RequestView* view = fixture.build();
        view->rejectRequest(1);
        const QString dismiss = QStringLiteral("data.dismissWorker");
        QCOMPARE(fixture.transport().count(dismiss), dismisses ? 1 : 0);
        if (dismisses) {
            QByteArray session;
            TYPE_ID uid = 0;
            QDate date;
            readPayload(fixture.transport().sent(dismiss).first(), session, uid, date);
            QCOMPARE(uid, 11u);
            QCOMPARE(date, QDate::currentDate());
            fixture.transport().answer(dismiss, Command::StatusFailed);  // only logged
            QCOMPARE(view->popups().size(), 0);
        }
    }

    void checkboxIsTickedForConfirmedRequests()
    {
        const QImage ticked = checkbox(2);
        const QImage empty = checkbox(0);
        QVERIFY(ticked != empty);
        QCOMPARE(checkbox(3), ticked);
        for (int status : {1, 4, 5, -1})
            QCOMPARE(checkbox(status), empty);
    }
};

QTEST_MAIN(TestAddRemove)
#include "tst_addremove.moc"
