#include "taskqueue.h"

#include <QtTest>

using vorandel::TaskInfo;

namespace {
// Runs tasks by writing them down; refuses the types it is told to.
struct Probe
{
    QStringList ran;
    QStringList refused;

    bool run(const TaskInfo& task)
    {
        ran << QStringLiteral("%1:%2").arg(task.type).arg(task.uid);
        return !refused.contains(task.type);
    }
};

TaskInfo task(const QString& type, vorandel::TYPE_ID uid, const QList<TaskInfo>& subtasks = {})
{
    TaskInfo t;
    t.type = type;
    t.uid = uid;
    t.subtasks = subtasks;
    return t;
}

class Queue : public TaskQueue<Probe>
{
public:
    explicit Queue(Probe* probe) : TaskQueue<Probe>(probe)
    {
        for (const char* type : {"a", "b", "c", "parent", "refused"})
            handlers.insert(QLatin1String(type), &Probe::run);
    }
    // Runs the queue to its end as handlers would: each running task finishes at once.
    void drain()
    {
        while (!processNext().type.isEmpty())
            processed();
    }
    QStringList waiting() const
    {
        QStringList types;
        for (const TaskInfo& t : tasks)
            types << t.type;
        return types;
    }
};
}  // namespace

class TestTaskQueue : public QObject
{
    Q_OBJECT

private slots:
    void subtasksRunFirstAndTheParentLast()
    {
        Probe probe;
        Queue queue(&probe);
        queue.tasks << task(QStringLiteral("parent"), 1, {task(QStringLiteral("a"), 2), task(QStringLiteral("b"), 3)})
                    << task(QStringLiteral("c"), 4);
        const unsigned long long parentId = queue.tasks.first().id;
        QCOMPARE(queue.processNext().type, QStringLiteral("a"));
        QCOMPARE(queue.current().type, QStringLiteral("a"));
        queue.processed();
        QCOMPARE(queue.tasks.first().id, parentId);  // the parent keeps its number
        queue.drain();
        QCOMPARE(probe.ran, (QStringList{"a:2", "b:3", "parent:1", "c:4"}));
        QVERIFY(queue.tasks.isEmpty());
    }

    void aTaskThatCannotStartTakesItsFollowersAlong()
    {
        Probe probe;
        probe.refused << QStringLiteral("refused");
        Queue queue(&probe);
        const TaskInfo bad = task(QStringLiteral("refused"), 0);
        TaskInfo dependent = task(QStringLiteral("a"), 9);
        dependent.depends << bad.id;
        queue.tasks << bad << task(QStringLiteral("b"), 0) << dependent << task(QStringLiteral("unknown"), 5)
                    << task(QStringLiteral("c"), 5) << task(QStringLiteral("c"), 6);
        // "refused" fails: uid 0 and its dependant go; the unknown type goes with uid 5.
        QCOMPARE(queue.processNext().type, QStringLiteral("c"));
        QCOMPARE(queue.current().uid, 6u);
        QCOMPARE(probe.ran, (QStringList{"refused:0", "c:6"}));
    }

    void removeTasksLooksAtTheQueueNotAtSubtasks()
    {
        Probe probe;
        Queue queue(&probe);
        const TaskInfo failed = task(QStringLiteral("a"), 7);
        TaskInfo dependant = task(QStringLiteral("b"), 8);
        dependant.depends << failed.id;
        queue.tasks << task(QStringLiteral("c"), 7) << dependant
                    << task(QStringLiteral("parent"), 9, {task(QStringLiteral("a"), 7)}) << task(QStringLiteral("c"), 10);
        queue.removeTasks(failed);
        QCOMPARE(queue.waiting(), (QStringList{"parent", "c"}));
        QCOMPARE(queue.tasks.first().subtasks.size(), 1);
    }

    void aFailedSubtaskLeavesItsParentUnlessItIsAboutTheSameObject()
    {
        Probe probe;
        Queue queue(&probe);
        queue.tasks << task(QStringLiteral("parent"), 1, {task(QStringLiteral("a"), 2)});
        const TaskInfo running = queue.processNext();
        queue.processed();
        queue.removeTasks(running);
        QCOMPARE(queue.waiting(), QStringList{"parent"});
        QCOMPARE(queue.processNext().type, QStringLiteral("parent"));

        queue.tasks.clear();
        queue.tasks << task(QStringLiteral("parent"), 2, {task(QStringLiteral("a"), 2)});
        const TaskInfo same = queue.processNext();
        queue.processed();
        queue.removeTasks(same);
        QVERIFY(queue.tasks.isEmpty());
    }

    void idsAreUsedUpByEveryDefaultTask()
    {
        Probe probe;
        Queue queue(&probe);
        const unsigned long long first = TaskInfo().id;
        const TaskInfo idle = queue.processNext();
        QVERIFY(idle.type.isEmpty());
        QVERIFY(idle.id > first);
        QVERIFY(queue.current().id > idle.id);
        const TaskInfo copy = idle;
        QCOMPARE(copy.id, idle.id);
    }
};

QTEST_GUILESS_MAIN(TestTaskQueue)
#include "tst_taskqueue.moc"
