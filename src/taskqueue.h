#pragma once

#include "taskinfo.h"

#include <QHash>
#include <QList>
#include <QString>

#include <optional>

// One strict queue of asynchronous tasks. The front task runs until its handler calls
// processed(); a task with subtasks runs them first, in order, and itself last.
template <typename Owner>
class TaskQueue
{
public:
    using Process = bool (Owner::*)(const vorandel::TaskInfo&);

    explicit TaskQueue(Owner* owner) : owner(owner) {}

    // What is running: the first subtask of the front task, else the front task; a fresh
    // default task when the queue is empty.
    vorandel::TaskInfo current() const
    {
        if (tasks.isEmpty())
            return {};
        const vorandel::TaskInfo& front = tasks.first();
        return front.subtasks.isEmpty() ? front : front.subtasks.first();
    }

    // The running task is done: takes it out of the queue and gives it; nothing when the queue is
    // idle, as when an answer belongs to no task.
    std::optional<vorandel::TaskInfo> finishCurrent()
    {
        if (tasks.isEmpty())
            return std::nullopt;
        vorandel::TaskInfo task = current();
        processed();
        return task;
    }

    // The running task is done.
    void processed()
    {
        if (tasks.isEmpty())
            return;
        vorandel::TaskInfo front = tasks.takeFirst();
        if (!front.subtasks.isEmpty()) {
            front.subtasks.removeFirst();
            tasks.prepend(front);
        }
    }

    // Drops what can't go on after `task` failed: every waiting task about the same object
    // (uid 0 included), and every task that depends on it. Subtasks are not searched.
    void removeTasks(const vorandel::TaskInfo& task)
    {
        for (auto it = tasks.begin(); it != tasks.end();) {
            if (it->uid == task.uid || it->depends.contains(task.id))
                it = tasks.erase(it);
            else
                ++it;
        }
    }

    // Starts the next task that can start and returns it; a default task when none can. A task
    // whose type is unknown or whose process function refuses is dropped with its followers.
    vorandel::TaskInfo processNext()
    {
        while (!tasks.isEmpty()) {
            const vorandel::TaskInfo& front = tasks.first();
            const vorandel::TaskInfo next = front.subtasks.isEmpty() ? front : front.subtasks.first();
            const auto process = handlers.constFind(next.type);
            if (process != handlers.cend() && (owner->*process.value())(next))
                return next;
            const vorandel::TaskInfo failed = tasks.takeFirst();
            removeTasks(failed);
        }
        return {};
    }

    Owner* owner;
    QList<vorandel::TaskInfo> tasks;
    QHash<QString, Process> handlers;
    bool suspended = false;  // nothing sets it; addTask honours it all the same
};
