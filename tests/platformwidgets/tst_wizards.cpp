#include "constants.h"
#include "deleteobjectwizard.h"
#include "localstorage.h"
#include "pagelistwizard.h"
#include "vdwizardpage.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QListWidget>
#include <QPointer>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>
#include <QApplication>
#include <QPushButton>
#include <QtTest>

using namespace vorandel;

namespace {
// Runs the tasks it is handed the way the tab's queue does: later, and with the outcome sent to
// the slot that the task names.
class TaskRunner : public QObject
{
    Q_OBJECT
public:
    QList<TaskInfo> tasks;
    QSet<TYPE_ID> failing;

public slots:
    void addTask(const vorandel::TaskInfo& task)
    {
        tasks << task;
        const TYPE_ID outcome = failing.contains(task.uid) ? 0 : task.uid;
        QTimer::singleShot(0, this, [task, outcome] {
            if (task.receiver)
                QMetaObject::invokeMethod(task.receiver.data(), task.slot.toLatin1().constData(), Qt::QueuedConnection,
                                          Q_ARG(vorandel::TYPE_ID, outcome));
        });
    }
};

ObjectInfo request(TYPE_ID uid, const QString& surname)
{
    ObjectInfo info;
    info.uid = uid;
    info.type = db::misc::PASS_REQUEST;
    info.parameters.insert(QStringLiteral("PT_SURNAME"), surname);
    return info;
}
}  // namespace

class TestWizards : public QObject
{
    Q_OBJECT

private slots:
    // Escape before the last page asks before it throws away what was typed; untouched, or on
    // the last page, the wizard just closes.
    void closingAsksOnlyWhenSomethingWouldBeLost()
    {
        const auto answerNextQuestion = [](QMessageBox::StandardButton answer, bool* asked) {
            QTimer::singleShot(0, [answer, asked] {
                auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                *asked = box != nullptr;
                if (box)
                    box->button(answer)->click();
            });
        };
        PageListWizard wizard;
        auto* first = new VDWizardPage(&wizard);
        auto* field = new QLineEdit(first);
        wizard.setPage(0, first);
        wizard.setPage(1, new VDWizardPage(&wizard));

        wizard.show();
        QVERIFY(QTest::qWaitForWindowActive(&wizard));
        QTest::keyClick(&wizard, Qt::Key_Escape);
        QVERIFY(!wizard.isVisible());  // nothing typed: no question

        wizard.restart();
        wizard.show();
        QVERIFY(QTest::qWaitForWindowActive(&wizard));
        QTest::keyClicks(field, QStringLiteral("Petrov"));
        bool asked = false;
        answerNextQuestion(QMessageBox::No, &asked);
        QTest::keyClick(field, Qt::Key_Escape);
        QVERIFY(asked);
        QVERIFY(wizard.isVisible());
        QCOMPARE(field->text(), QStringLiteral("Petrov"));

        wizard.next();  // the last page: its work is done or under way, nothing to lose
        asked = false;
        wizard.reject();
        QVERIFY(!asked);
        QVERIFY(!wizard.isVisible());
    }

    // One task per object; the outcomes show in the order of the tasks as they come, and as a
    // failure names no object, it is told by its place. The wizard can be finished once all are
    // in, and a stray answer after that changes nothing.
    void removalShowsEachOutcome()
    {
        LocalStorage::instance()->clear();
        LocalStorage::instance()->setObjects(PASS_REQUEST_DATANAME, {request(11, QStringLiteral("Иванов")), request(12, QStringLiteral("Петров"))});
        TaskRunner runner;
        runner.failing = {12};
        DeleteObjectWizard wizard;
        QObject::connect(&wizard, &DeleteObjectWizard::appendTask, &runner, &TaskRunner::addTask, Qt::QueuedConnection);
        wizard.setUids({11, 12, 99});
        wizard.setNeedVerify(false);
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        wizard.button(QWizard::CommitButton)->click();
        QVERIFY(!wizard.button(QWizard::FinishButton)->isEnabled());
        QTRY_COMPARE(wizard.resultList()->count(), 3);
        QStringList shown;
        for (int row = 0; row < 3; ++row)
            shown << wizard.resultList()->item(row)->text();
        QCOMPARE(shown, (QStringList{"Удалено: Иванов", "Ошибка удаления: Петров", "Удалено: Объект 99"}));
        QList<TYPE_ID> sent;
        for (const TaskInfo& task : runner.tasks) {
            QCOMPARE(task.type, QStringLiteral("delete_object"));  // what the tab's queue carries out
            sent << task.uid;
        }
        QCOMPARE(sent, (QList<TYPE_ID>{11, 12, 99}));
        QVERIFY(wizard.button(QWizard::FinishButton)->isEnabled());
        wizard.objectRemoved(11);
        QCOMPARE(wizard.resultList()->count(), 3);
    }

    // With confirmation asked for, nothing goes before the box is ticked; a wizard closed while
    // its tasks run takes no answers and breaks nothing.
    void verificationAndEarlyClose()
    {
        LocalStorage::instance()->clear();
        LocalStorage::instance()->setObjects(PASS_REQUEST_DATANAME, {request(11, QStringLiteral("Иванов"))});
        TaskRunner runner;
        QPointer<DeleteObjectWizard> wizard = new DeleteObjectWizard;
        wizard->setAttribute(Qt::WA_DeleteOnClose);
        QObject::connect(wizard, &DeleteObjectWizard::appendTask, &runner, &TaskRunner::addTask, Qt::QueuedConnection);
        wizard->setUids({11});
        wizard->setNeedVerify(true);
        wizard->show();
        QVERIFY(!wizard->button(QWizard::CommitButton)->isEnabled());
        wizard->findChild<QCheckBox*>(QStringLiteral("verifyBox"))->setChecked(true);
        QVERIFY(wizard->button(QWizard::CommitButton)->isEnabled());
        wizard->button(QWizard::CommitButton)->click();
        wizard->close();
        QTRY_VERIFY(wizard.isNull());
        QTRY_COMPARE(runner.tasks.size(), 1);
        QTest::qWait(10);  // the answer finds no receiver
    }
};

QTEST_MAIN(TestWizards)
#include "tst_wizards.moc"
