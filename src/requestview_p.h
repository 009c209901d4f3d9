#pragma once

#include "objectinfo.h"
#include "requestvisibility.h"
#include "taskqueue.h"

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
