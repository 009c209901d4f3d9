#include "requestfixture.h"

#include "constants.h"
#include "localstorage.h"
#include "requestview.h"
#include "vdserverinterface.h"
#include "vdtableview.h"

#include <QAction>
#include <QItemSelectionModel>
#include <QtTest>

using namespace vorandel;

namespace make {

ObjectInfo request(TYPE_ID uid, int state, TYPE_ID worker)
{
    ObjectInfo info;
    info.uid = uid;
    info.type = QStringLiteral("OT_PASS_REQUEST");
    info.parameters.insert(QStringLiteral("PT_STATE"), QString::number(state));
    info.parameters.insert(QStringLiteral("PT_PASSID"), QStringLiteral("П-%1").arg(uid, 4, 10, QLatin1Char('0')));
    info.parameters.insert(QStringLiteral("PT_DATE_BEGIN"),
                           QDateTime(QDate(2026, 11, 1).addDays(int(uid)), QTime(9, 30)).toString(Qt::ISODate));
    info.parameters.insert(QStringLiteral("PT_DATE_END"),
                           QDateTime(QDate(2026, 12, 1).addDays(int(uid)), QTime(18, 0)).toString(Qt::ISODate));
    if (worker)
        info.parameters.insert(QStringLiteral("PT_SUBJECT_ID"), QString::number(worker));
    return info;
}

ObjectInfo worker(TYPE_ID uid, const QString& surname, const QString& name, const QString& patronymic,
                  const QString& number)
{
    ObjectInfo info;
    info.uid = uid;
    info.type = QStringLiteral("OT_WORKER");
    info.parameters.insert(QStringLiteral("PT_SURNAME"), surname);
    info.parameters.insert(QStringLiteral("PT_NAME"), name);
    info.parameters.insert(QStringLiteral("PT_PATRONYMIC"), patronymic);
    info.parameters.insert(QStringLiteral("PT_WORKERNUM"), number);
    return info;
}

ObjectInfo policy(TYPE_ID uid, const QString& name)
{
    ObjectInfo info;
    info.uid = uid;
    info.type = QStringLiteral("OT_ACCESS_POLICY");
    info.parameters.insert(QStringLiteral("PT_NAME"), name);
    return info;
}

void chain(ObjectInfo& request, const QList<QPair<TYPE_ID, unsigned int>>& approvers)
{
    for (const auto& approver : approvers)
        request.inherits.insert(INHERIT_CONFIRM_LIST_PASS_REQUEST,
                                INHERIT_DATA(request.uid, approver.first, INHERIT_CONFIRM_LIST_PASS_REQUEST, approver.second));
}

void decided(ObjectInfo& request, TYPE_ID user, unsigned int type)
{
    request.inherits.insert(type, INHERIT_DATA(request.uid, user, type));
}

}  // namespace make

RequestFixture::RequestFixture(unsigned int userId, const QStringList& roles)
{
    LocalStorage::instance()->clear();
    TestEnvironment::login(userId, roles);
}

RequestFixture::~RequestFixture()
{
    m_view.reset();
    LocalStorage::instance()->clear();
}

void RequestFixture::set(const QString& dataname, const QList<ObjectInfo>& objects)
{
    LocalStorage::instance()->setObjects(dataname, objects);
}

RequestView* RequestFixture::build()
{
    m_view = std::make_unique<RequestView>();
    m_view->init(VDServerInterface::instance(), QStringLiteral("requestview"));
    m_view->insertedToInterface();
    return m_view.get();
}

VDTableView* RequestFixture::table() const
{
    return m_view->findChild<VDTableView*>(QStringLiteral("tblRequests"));
}

QAbstractItemModel* RequestFixture::rows() const
{
    return table()->model();
}

QAction* RequestFixture::action(const char* name) const
{
    return m_view->findChild<QAction*>(QLatin1String(name));
}

QList<TYPE_ID> RequestFixture::shownUids() const
{
    QList<TYPE_ID> uids;
    const QAbstractItemModel* model = rows();
    for (int row = 0; row < model->rowCount(); ++row)
        uids.append(model->index(row, 0).data().toUInt());
    return uids;
}

void RequestFixture::select(const QList<TYPE_ID>& uids)
{
    QItemSelectionModel* selection = table()->selectionModel();
    selection->clearSelection();
    const QAbstractItemModel* model = rows();
    for (const TYPE_ID uid : uids) {
        for (int row = 0; row < model->rowCount(); ++row) {
            if (model->index(row, 0).data().toUInt() == uid)
                selection->select(model->index(row, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
    }
}
