#include "constants.h"
#include "deleteobjectwizard.h"
#include "localstorage.h"
#include "pagelistwizard.h"
#include "styleditemdelegate.h"
#include "vdglobals.h"
#include "vdwizardpage.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QListView>
#include <QListWidget>
#include <QPointer>
#include <QProgressBar>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>
#include <QApplication>
#include <QPushButton>
#include <QStandardItemModel>
#include <QtTest>

using namespace vorandel;

namespace {
class Wizard : public PageListWizard
{
public:
    QList<int> shown;

protected:
    void showButtons(int id) override
    {
        shown << id;
        PageListWizard::showButtons(id);
    }
};

class NamedPage : public VDWizardPage
{
public:
    using VDWizardPage::VDWizardPage;
    QString pageListText() const override { return QStringLiteral("Итог"); }
};

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

// Names a row as the tab's removal list does: from the type in column 1 and the parameters.
class ContractDelegate : public StyledItemDelegate
{
public:
    QString name(const QModelIndex& index) const override
    {
        const QString type = index.sibling(index.row(), 1).data(Qt::DisplayRole).toString();
        const QHash<QString, QVariant> parameters = index.data(Qt::UserRole + 1).toHash();
        return VDGlobals::objectName(type, parameters) + QStringLiteral(" [%1]").arg(type);
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
    // Every change of page calls showButtons, and the list marks the page shown.
    void pageListFollowsThePages()
    {
        Wizard wizard;
        auto* first = new VDWizardPage(&wizard);
        first->setTitle(QStringLiteral("Посетитель"));
        auto* second = new VDWizardPage(&wizard);
        second->setTitle(QStringLiteral("Параметры"));
        auto* plain = new QWizardPage(&wizard);
        plain->setTitle(QStringLiteral("Сохранение"));
        wizard.setPage(0, first);
        wizard.setPage(1, second);
        wizard.setPage(2, plain);
        wizard.setPage(3, new NamedPage(&wizard));
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        QListWidget* list = wizard.pageList();
        QVERIFY(list->isVisible());
        QStringList texts;
        for (int row = 0; row < list->count(); ++row)
            texts << list->item(row)->text();
        QCOMPARE(texts, (QStringList{"Посетитель", "Параметры", "Сохранение", "Итог"}));
        QCOMPARE(wizard.markedPage(), 0);
        wizard.next();
        wizard.next();
        QCOMPARE(wizard.markedPage(), 2);
        QVERIFY(list->item(0)->foreground() != list->item(3)->foreground());  // done and to come look apart
        wizard.back();
        QCOMPARE(wizard.markedPage(), 1);
        QCOMPARE(wizard.shown, (QList<int>{0, 1, 2, 1}));
    }

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
        Wizard wizard;
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

    // Listed through the given delegate, removed by one task per object, outcomes shown as they
    // come; the wizard can be finished once all are in.
    void removalEndToEnd_data()
    {
        QTest::addColumn<QList<TYPE_ID>>("failing");
        QTest::addColumn<QStringList>("outcomes");
        QTest::newRow("all removed") << QList<TYPE_ID>() << QStringList{"Удалено: Иванов", "Удалено: Петров", "Удалено: Объект 99"};
        QTest::newRow("one fails") << QList<TYPE_ID>{12} << QStringList{"Удалено: Иванов", "Ошибка удаления: Петров", "Удалено: Объект 99"};
    }
    void removalEndToEnd()
    {
        QFETCH(QList<TYPE_ID>, failing);
        QFETCH(QStringList, outcomes);
        LocalStorage::instance()->clear();
        LocalStorage::instance()->setObjects(PASS_REQUEST_DATANAME, {request(11, QStringLiteral("Иванов")), request(12, QStringLiteral("Петров"))});
        TaskRunner runner;
        runner.failing = QSet<TYPE_ID>(failing.cbegin(), failing.cend());
        DeleteObjectWizard wizard;
        QObject::connect(&wizard, &DeleteObjectWizard::appendTask, &runner, &TaskRunner::addTask, Qt::QueuedConnection);
        wizard.setUids({11, 12, 99});
        wizard.setNeedVerify(false);
        wizard.setItemDelegate(new ContractDelegate, nullptr);
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));

        auto* delegate = static_cast<StyledItemDelegate*>(wizard.listView()->itemDelegate());
        QCOMPARE(delegate->parent(), &wizard);
        QCOMPARE(delegate->name(wizard.listModel()->index(0, 0)), QStringLiteral("Иванов [OT_PASS_REQUEST]"));
        QCOMPARE(delegate->name(wizard.listModel()->index(2, 0)), QStringLiteral(" []"));  // gone from the store
        QAbstractButton* commit = wizard.button(QWizard::CommitButton);
        QVERIFY(commit->isVisible() && commit->isEnabled());
        commit->click();
        QCOMPARE(wizard.currentId(), 1);
        QVERIFY(!wizard.button(QWizard::FinishButton)->isEnabled());
        QTRY_COMPARE(wizard.resultList()->count(), 3);
        QStringList shown;
        for (int row = 0; row < 3; ++row)
            shown << wizard.resultList()->item(row)->text();
        QCOMPARE(shown, outcomes);
        QCOMPARE(runner.tasks.size(), 3);
        for (int i = 0; i < 3; ++i) {
            const TaskInfo& task = runner.tasks.at(i);
            QCOMPARE(task.type, QStringLiteral("delete_object"));
            QCOMPARE(task.uid, (QList<TYPE_ID>{11, 12, 99}).at(i));
            QCOMPARE(task.receiver.data(), &wizard);
            QCOMPARE(task.slot, QStringLiteral("objectRemoved"));
        }
        QCOMPARE(wizard.findChild<QProgressBar*>()->value(), 3);
        QVERIFY(wizard.button(QWizard::FinishButton)->isEnabled());
        wizard.objectRemoved(11);  // a stray answer changes nothing
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
