#include "requestfixture.h"

#include "constants.h"
#include "deleteobjectwizard.h"
#include "localstorage.h"
#include "newrequestwizard.h"
#include "requestitemdelegate.h"
#include "requestview.h"
#include "requestviewdelegate.h"
#include "vdtableview.h"

#include <QAbstractButton>
#include <QApplication>
#include <QListView>
#include <QMessageBox>
#include <QPainter>
#include <QStandardItemModel>
#include <QStyleOptionViewItem>
#include <QtTest>

using namespace vorandel;

namespace {

const QString RemoveObject = QStringLiteral("data.removeObject");
const QString DismissWorker = QStringLiteral("data.dismissWorker");

ObjectInfo linkedRequest(TYPE_ID uid, int state, TYPE_ID worker)
{
    ObjectInfo request = make::request(uid, state, worker);
    request.parameters.insert(QStringLiteral("PT_DISMISS_LINKED"), QStringLiteral("true"));
    return request;
}

// What the removal wizard's list says of each request, in its order.
QStringList listedNames(DeleteObjectWizard* wizard)
{
    QStringList names;
    const QAbstractItemModel* model = wizard->listModel();
    auto* delegate = qobject_cast<StyledItemDelegate*>(wizard->listView()->itemDelegate());
    for (int row = 0; row < model->rowCount(); ++row)
        names << delegate->name(model->index(row, 0));
    return names;
}

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

// The two entries of the tab that open the wizards: adding and removing requests.
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
            QCOMPARE(wizard->windowTitle(), QStringLiteral("Мастер удаления заявок"));
            QVERIFY(wizard->isModal());
            QVERIFY(wizard->testAttribute(Qt::WA_DeleteOnClose));
            QVERIFY(qobject_cast<RequestItemDelegate*>(wizard->listView()->itemDelegate()));
        } else if (!states.isEmpty()) {
            QCOMPARE(said, (QStringList{"Удаление", "Нет заявок для удаления", "Нельзя удалить активные заявки"}));
        } else {
            QVERIFY(said.isEmpty());
        }
    }

    // Confirmed in the wizard, each request goes through the queue, and its worker is dismissed
    // where the request asks for it.
    void removalRunsThroughTheQueue()
    {
        RequestFixture fixture;
        fixture.set(SUBJECT_DATANAME, {make::worker(11, QStringLiteral("Иванов"), QStringLiteral("Иван"))});
        fixture.set(PASS_REQUEST_DATANAME, {linkedRequest(1, 0, 11), make::request(2, 1, 11)});
        RequestView* view = fixture.build();
        fixture.select({1, 2});
        view->removeRequests();
        auto* wizard = view->findChild<DeleteObjectWizard*>();
        QVERIFY(wizard);
        wizard->button(QWizard::CommitButton)->click();
        QCOMPARE(fixture.transport().count(RemoveObject), 0);  // handed over by a queued call
        // One at a time; the worker goes as his request is sent, before its answer.
        for (int sent = 1; sent <= 2; ++sent) {
            QTRY_COMPARE(fixture.transport().count(RemoveObject), sent);
            QByteArray session;
            ObjectInfo request;
            readPayload(fixture.transport().sent(RemoveObject).last(), session, request);
            if (request.uid == 1)
                QCOMPARE(fixture.transport().count(DismissWorker), 1);
            fixture.transport().answer(RemoveObject, Command::StatusOk);
        }
        QCOMPARE(fixture.transport().count(DismissWorker), 1);
        QTRY_VERIFY(wizard->button(QWizard::FinishButton)->isEnabled());
    }

    // The keys open the wizards whatever the rights say.
    void keysIgnoreTheRights()
    {
        RequestFixture fixture(1, {QStringLiteral("RL_PASS_REQUESTS_SHOW"), QStringLiteral("RL_PASS_REQUESTS_SHOW_ALL")});
        fixture.set(PASS_REQUEST_DATANAME, {make::request(1, 0)});
        RequestView* view = fixture.build();
        QTest::keyClick(fixture.table(), Qt::Key_Delete);  // nothing selected
        QVERIFY(!view->findChild<DeleteObjectWizard*>());
        fixture.select({1});
        QTest::keyClick(fixture.table(), Qt::Key_Delete);
        QVERIFY(view->findChild<DeleteObjectWizard*>());
        QTest::keyClick(fixture.table(), Qt::Key_Insert);
        QVERIFY(view->findChild<NewRequestWizard*>());
    }

    // The line of a request says when its removal will dismiss a worker still in service.
    void dismissalNote_data()
    {
        QTest::addColumn<QVariant>("dismiss");  // "PT_DISMISS_LINKED"; invalid when missing
        QTest::addColumn<QVariant>("subject");  // "PT_SUBJECT_ID"; likewise
        QTest::addColumn<QString>("expected");

        const QString plain = QStringLiteral("Петров Пётр");
        const QString noted = plain + QStringLiteral(" Будет уволен сотрудник Иванов Иван");
        QTest::newRow("to be dismissed") << QVariant("true") << QVariant("11") << noted;
        QTest::newRow("flag as any other text") << QVariant("True") << QVariant("11") << plain;
        QTest::newRow("no flag") << QVariant() << QVariant("11") << plain;
        QTest::newRow("no worker named") << QVariant("true") << QVariant() << plain;
        QTest::newRow("already dismissed") << QVariant("true") << QVariant("12") << plain;
        QTest::newRow("worker not in the store") << QVariant("true") << QVariant("99") << plain;
    }

    void dismissalNote()
    {
        QFETCH(QVariant, dismiss);
        QFETCH(QVariant, subject);
        QFETCH(QString, expected);

        LocalStorage::instance()->clear();
        ObjectInfo gone = make::worker(12, QStringLiteral("Сидоров"));
        gone.parameters.insert(QStringLiteral("PT_OBJECTSTATE"), QStringLiteral("d"));
        LocalStorage::instance()->setObjects(SUBJECT_DATANAME,
                                             {make::worker(11, QStringLiteral("Иванов"), QStringLiteral("Иван")), gone});
        QVariantHash parameters{{"PT_SURNAME", "Петров"}, {"PT_NAME", "Пётр"}};
        if (dismiss.isValid())
            parameters.insert("PT_DISMISS_LINKED", dismiss);
        if (subject.isValid())
            parameters.insert("PT_SUBJECT_ID", subject);
        QStandardItemModel model(1, 2);
        model.setData(model.index(0, 0), parameters, Qt::UserRole + 1);
        model.setData(model.index(0, 1), QStringLiteral("OT_PASS_REQUEST"));
        const RequestItemDelegate delegate;
        QCOMPARE(delegate.name(model.index(0, 0)), expected);
        QCOMPARE(delegate.name(QModelIndex()), QString());
        LocalStorage::instance()->clear();
    }

    // In the removal wizard of the tab, as the operator reads it.
    void dismissalNoteInTheWizard()
    {
        RequestFixture fixture;
        fixture.set(SUBJECT_DATANAME, {make::worker(11, QStringLiteral("Иванов"), QStringLiteral("Иван"))});
        ObjectInfo first = linkedRequest(1, 0, 11);
        first.parameters.insert(QStringLiteral("PT_SURNAME"), QStringLiteral("Иванов"));
        first.parameters.insert(QStringLiteral("PT_NAME"), QStringLiteral("Иван"));
        fixture.set(PASS_REQUEST_DATANAME, {first, make::request(2, 0)});
        RequestView* view = fixture.build();
        fixture.select({1, 2});
        view->removeRequests();
        const QStringList names = listedNames(view->findChild<DeleteObjectWizard*>());
        QVERIFY2(names.contains(QStringLiteral("Иванов Иван Будет уволен сотрудник Иванов Иван")), qPrintable(names.join('|')));
        QVERIFY2(names.contains(QStringLiteral("Заявка № П-0002")), qPrintable(names.join('|')));
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
