#pragma once

#include "command.h"
#include "objectinfo.h"
#include "requestvisibility.h"
#include "taskqueue.h"

#include <QMetaObject>
#include <QPointer>
#include <QString>

#include <trie>

class ObjectTreeProxy;
class QTimer;
class QWidget;
class RequestInfoPanel;
class RequestModel;
class RequestView;
class SearchWidget;
class TabbedDialog;
class VDStackedToolBars;
namespace vd5sdk {
class Data;
class Devices;
}  // namespace vd5sdk

// What the parts of RequestView share: the rights, the keys it reads, the columns it writes, and
// the way a task's receiver is told. One unit per concern includes this header.
namespace requestview::detail {

inline const QString RoleShow = QStringLiteral("RL_PASS_REQUESTS_SHOW");
inline const QString RoleShowAll = QStringLiteral("RL_PASS_REQUESTS_SHOW_ALL");
inline const QString RoleCreate = QStringLiteral("RL_PASS_REQUESTS_CREATE");
inline const QString RoleUpdate = QStringLiteral("RL_PASS_REQUESTS_UPDATE");
inline const QString RoleDelete = QStringLiteral("RL_PASS_REQUESTS_DELETE");
inline const QString RoleConfirm = QStringLiteral("RL_PASS_REQUESTS_CONFIRM");

inline const QString KeySubject = QStringLiteral("PT_SUBJECT_ID");
inline const QString KeyObjectState = QStringLiteral("PT_OBJECTSTATE");
inline const QString KeyWay = QStringLiteral("PT_WAY");
inline const QString KeyPhoto = QStringLiteral("PT_PHOTO");

// Columns of the request table that the tab reads or writes by number.
constexpr int ColumnUid = 0;
constexpr int ColumnState = 1;
constexpr int ColumnWorkerNumber = 4;
constexpr int ColumnFullName = 5;
constexpr int ColumnStart = 8;
constexpr int ColumnConfirmer = 10;

constexpr int FilterRole = Qt::UserRole;

inline bool receiverSet(const vorandel::TaskInfo& task)
{
    return task.receiver && !task.slot.isEmpty();
}

// Tells the receiver of a task by its slot's name, in a later turn of the event loop.
template <typename... Args>
bool report(const vorandel::TaskInfo& task, Args... args)
{
    return QMetaObject::invokeMethod(task.receiver.data(), task.slot.toLatin1().constData(), Qt::QueuedConnection,
                                     args...);
}

// The failure text that an answer carries first in its payload.
QString firstText(const Command& command);

// The first address of this machine that isn't a loopback, or else its host name: the middle of
// the names under which the tab and its pages are known at the exchange.
QString hostAddress();

}  // namespace requestview::detail

class RequestViewPrivate
{
public:
    explicit RequestViewPrivate(RequestView* owner);

    QString clientId;
    RequestInfoPanel* infoPanel = nullptr;
    vd5sdk::Data* dataService = nullptr;      // owned by the tab's object tree, never deleted here
    vd5sdk::Devices* deviceService = nullptr;  // likewise
    TrieStatic<unsigned int> searchIndex;
    RequestModel* model = nullptr;
    ObjectTreeProxy* proxy = nullptr;
    const vorandel::OBJECT_HASH* requests = nullptr;
    vorandel::TYPE_ID currentWorker = 0;
    vorandel::TYPE_ID currentRequest = 0;
    QPointer<TabbedDialog> propertiesDialog;
    TaskQueue<RequestView> taskQueue;
    QPointer<QWidget> toolHost;
    QPointer<VDStackedToolBars> stackedToolBars;
    QPointer<SearchWidget> searchWidget;
    QPointer<QTimer> infoTimer;

    // What defaultFilter() answers, kept up to date by the store's signals.
    mutable RequestVisibility visibility;
};
